// Lines handed from one thread to another, in order, through a few blocks of fixed size: one thread
// pushes what it decodes while the other one pulls what it encodes. A block changes hands whole, so
// that short lines don't cost a wake-up each.
#pragma once

#include <array>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <vector>

namespace vellim::tool {

struct LineQueue {
    struct Block {
        std::vector<uint8_t> bytes;
        size_t lines = 0;
    };
    static constexpr size_t kBlocks = 4;

    size_t lineBytes = 0;
    size_t blockLines = 0;
    std::array<Block, kBlocks> blocks;

    // Each is the one thread's own.
    size_t writing = 0;  // number of the block being filled, and lines in it
    size_t filled = 0;
    size_t reading = 0;  // number of the block being emptied, and lines taken from it
    size_t taken = 0;

    // Both threads'.
    std::mutex mutex;
    std::condition_variable changed;
    size_t given = 0;        // blocks that were filled
    size_t returned = 0;     // blocks that were emptied
    bool complete = false;   // there won't be more
    bool abandoned = false;  // one of the two has given up
};

void PrepareQueue(LineQueue& queue, size_t lineBytes);

// The pushing side. Waits for room. False if the other side has given up.
bool PushLine(LineQueue& queue, const uint8_t* line);
void CompleteLines(LineQueue& queue);

// The pulling side. Waits for a line. False if there won't be one.
bool PullLine(LineQueue& queue, uint8_t* line);

// Either side gives up: the other one waits no longer.
void AbandonLines(LineQueue& queue);

}  // namespace vellim::tool
