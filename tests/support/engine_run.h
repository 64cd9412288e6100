// One engine by itself on a stream in memory; and the plainest of buffers for reference codecs.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "support/tiff_builder.h"
#include "vellim/codec.h"

namespace vellim::test {

struct EngineRun {
    uint32_t width = 0, height = 0, rowsPerStrip = 0;
    uint16_t bits = 8;
    CompressionKey key = TIFF_KEY_NONE;
    std::vector<uint32_t> offsets = {};
    Bytes stream = {};

    [[nodiscard]] uint32_t RowBytes() const { return (width * bits + 7) / 8; }
    [[nodiscard]] uint32_t Strips() const { return (height + rowsPerStrip - 1) / rowsPerStrip; }
};

// What came of a run: the result, and the lines as they came, before the callback changed them.
struct Outcome {
    uint32_t code = 0;
    std::vector<Bytes> lines = {};
    bool operator==(const Outcome&) const = default;
};

// What a callback does with a line, and what it gives.
using Answer = std::function<uint32_t(uint8_t* line, uint32_t number)>;
uint32_t CallAnswer(uint8_t* line, uint32_t number, uintptr_t answer);  // a callback for it

using Engine = uint32_t (*)(CodecState&);
Outcome RunEngine(Engine engine, const EngineRun& run, const Answer& answer = {});

// Sets a state up for `run` and calls `use` with it; everything is given back behind it.
void WithState(const EngineRun& run, const std::function<void(CodecState&)>& use);

// The buffers of a decoding run as a plain model: one byte at a time, strips by their offsets. What
// is buffered doesn't show in it, so strips must begin inside the stream.
struct PlainBuffers {
    const EngineRun& run;
    Answer answer;
    Bytes line = Bytes(run.RowBytes());
    uint32_t lineLeft = run.RowBytes();
    bool stripEnded = false;
    Outcome outcome = {};
    size_t cursor = 0, strip = 0;

    Outcome Run(const std::function<uint32_t()>& step);  // takes steps until one fails
    uint32_t EnterStrip();                               // 0 or 6
    uint32_t TakeByte(uint8_t& byte);                    // 0 or 5
    uint32_t Flush();                                    // 0, 3 or a failure code
};

// What an encoder leaves: its result, all that went to the stream, and the two strip tables.
struct Encoded {
    uint32_t code = 0;
    Bytes stream = {};
    std::vector<uint32_t> offsets = {};
    std::vector<uint32_t> counts = {};
    bool operator==(const Encoded&) const = default;
};

// Writes behind the run's stream; its offsets don't count. `source` fills lines. The code buffer is
// flushed behind a success.
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
    size_t stripStart = run.stream.size();
    Encoded encoded = {.stream = run.stream};

    static constexpr size_t kBufferSize = 32767;

    [[nodiscard]] size_t Room() const { return kBufferSize - buffer.size(); }
    uint32_t NextLine();  // 0, 3 or the source's code
    void Put(uint8_t byte);
    void Flush();
};

}  // namespace vellim::test
