// One engine by itself on a stream in memory; and the same run on buffers so plain that they can be
// checked by eye, for the reference decoders.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "support/tiff_builder.h"
#include "vellim/codec.h"

namespace vellim::test {

struct EngineRun {
    uint32_t width = 0;
    uint32_t height = 0;
    uint16_t bits = 8;
    CompressionKey key = TIFF_KEY_NONE;
    uint32_t rowsPerStrip = 0;
    std::vector<uint32_t> offsets = {};
    Bytes stream = {};
    uint32_t fillOrder = 1;

    [[nodiscard]] uint32_t RowBytes() const { return (width * bits + 7) / 8; }
};

// What came of a run: the engine's result, and the lines in the order of their delivery, each as it
// was before the callback changed it.
struct Outcome {
    uint32_t code = 0;
    std::vector<Bytes> lines;
    bool operator==(const Outcome&) const = default;
};

// What the callback does with a line of RowBytes bytes, and what it gives.
using Answer = std::function<uint32_t(uint8_t* line, uint32_t number)>;
using Engine = uint32_t (*)(CodecState&);

Outcome RunEngine(Engine engine, const EngineRun& run, const Answer& answer = {});

// Sets a state up for `run` and calls `use` with it; everything is given back behind it.
void WithState(const EngineRun& run, const std::function<void(CodecState&)>& use);

// The two buffers of a decoding run as a plain model: bytes one at a time, strips by their offsets.
class PlainBuffers {
  public:
    PlainBuffers(const EngineRun& run, Answer answer);

    uint32_t Begin();                                // 0 or 6
    uint32_t TakeByte(uint8_t& byte);                // 0 or 5
    uint32_t Flush();                                // 0, 3 or a failure code
    [[nodiscard]] Outcome End(uint32_t code) const;  // 3 becomes 0

    Bytes line;
    uint32_t lineLeft = 0;
    bool stripEnded = false;

  private:
    bool SeekStrip();
    uint32_t Fill();

    const EngineRun& run_;
    Answer answer_;
    std::vector<Bytes> delivered_;
    bool filled_ = false;
    uint64_t mark_ = 0, cursor_ = 0, limit_ = 0, next_ = 0;  // stream offsets
    uint64_t bufferSize_ = 0;
    uint32_t lineNumber_ = 0, strip_ = 0;
};

}  // namespace vellim::test
