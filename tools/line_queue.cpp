#include "line_queue.h"

#include <algorithm>
#include <cstring>

namespace vellim::tool {
namespace {

constexpr size_t kBlockBytes = 64UL << 10U;

void GiveBlock(LineQueue& queue) {
    {
        const std::scoped_lock lock(queue.mutex);
        queue.blocks[queue.writing % LineQueue::kBlocks].lines = queue.filled;
        ++queue.given;
    }
    queue.changed.notify_one();
    ++queue.writing;
    queue.filled = 0;
}

void ReturnBlock(LineQueue& queue) {
    {
        const std::scoped_lock lock(queue.mutex);
        ++queue.returned;
    }
    queue.changed.notify_one();
    ++queue.reading;
    queue.taken = 0;
}

bool WaitForRoom(LineQueue& queue) {
    std::unique_lock lock(queue.mutex);
    queue.changed.wait(
        lock, [&] { return queue.abandoned || queue.given - queue.returned < LineQueue::kBlocks; });
    return !queue.abandoned;
}

bool WaitForLines(LineQueue& queue) {
    std::unique_lock lock(queue.mutex);
    queue.changed.wait(
        lock, [&] { return queue.abandoned || queue.complete || queue.given > queue.returned; });
    return !queue.abandoned && queue.given > queue.returned;
}

}  // namespace

void PrepareQueue(LineQueue& queue, size_t lineBytes) {
    queue.lineBytes = lineBytes;
    queue.blockLines = std::max<size_t>(1, kBlockBytes / lineBytes);
    for (LineQueue::Block& block : queue.blocks)
        block.bytes.resize(queue.blockLines * lineBytes);
}

bool PushLine(LineQueue& queue, const uint8_t* line) {
    if (queue.filled == 0 && !WaitForRoom(queue)) return false;
    LineQueue::Block& block = queue.blocks[queue.writing % LineQueue::kBlocks];
    std::memcpy(block.bytes.data() + queue.filled * queue.lineBytes, line, queue.lineBytes);
    ++queue.filled;
    if (queue.filled == queue.blockLines) GiveBlock(queue);
    return true;
}

void CompleteLines(LineQueue& queue) {
    if (queue.filled > 0) GiveBlock(queue);
    {
        const std::scoped_lock lock(queue.mutex);
        queue.complete = true;
    }
    queue.changed.notify_one();
}

bool PullLine(LineQueue& queue, uint8_t* line) {
    if (queue.taken == 0 && !WaitForLines(queue)) return false;
    const LineQueue::Block& block = queue.blocks[queue.reading % LineQueue::kBlocks];
    std::memcpy(line, block.bytes.data() + queue.taken * queue.lineBytes, queue.lineBytes);
    ++queue.taken;
    if (queue.taken == block.lines) ReturnBlock(queue);
    return true;
}

void AbandonLines(LineQueue& queue) {
    {
        const std::scoped_lock lock(queue.mutex);
        queue.abandoned = true;
    }
    queue.changed.notify_one();
}

}  // namespace vellim::tool
