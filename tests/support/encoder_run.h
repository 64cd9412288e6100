// One encoding engine by itself, with a stream in memory behind it.
#pragma once

#include <cstdint>
#include <vector>

#include "support/engine_run.h"

namespace vellim::test {

// What an encoder leaves: its result, all that went to the stream, and the two strip tables.
struct Encoded {
    uint32_t code = 0;
    Bytes stream = {};
    std::vector<uint32_t> offsets = {};
    std::vector<uint32_t> counts = {};
    bool operator==(const Encoded&) const = default;
};

// Of `run` the shape and the key count. `source` fills lines. The code buffer is flushed behind a
// success.
Encoded RunEncoder(Engine engine, const EngineRun& run, const Answer& source);

// Fills lines from `pixels` in turn, and gives `stop` at line `stopAt`.
Answer LinesOf(const Bytes& pixels, uint32_t rowBytes, uint32_t stopAt = ~0U, uint32_t stop = 0);

// The buffers of an encoding run as a plain model, one byte at a time.
struct PlainSink {
    const EngineRun& run;
    Answer source;
    Bytes line = Bytes(run.RowBytes());
    Bytes buffer = {};  // what isn't in the stream yet
    uint32_t lineNumber = 0;
    bool stripEnded = false;
    size_t stripStart = 0;
    Encoded encoded = {};

    static constexpr size_t kBufferSize = 32767;

    [[nodiscard]] size_t Room() const { return kBufferSize - buffer.size(); }
    uint32_t NextLine();  // 0, 3 or the source's code
    void Put(uint8_t byte);
    void Flush();
};

}  // namespace vellim::test
