#include "support/engine_run.h"

#include <algorithm>
#include <cstring>

#include "codec/buffers.h"
#include "container/streams.h"
#include "platform/guards.h"

namespace vellim::test {
namespace {

struct Collector {
    const EngineRun& run;
    const Answer& answer;
    Outcome outcome;
};

uint32_t Collect(uint8_t* line, uint32_t number, uintptr_t data) {
    auto& collector = *reinterpret_cast<Collector*>(data);
    collector.outcome.lines.emplace_back(line, line + collector.run.RowBytes());
    return collector.answer ? collector.answer(line, number) : 0;
}

GlobalHandle BlockOfLongs(const std::vector<uint32_t>& values) {
    Bytes bytes(values.size() * sizeof(uint32_t));
    if (!bytes.empty()) std::memcpy(bytes.data(), values.data(), bytes.size());
    return BlockOf(bytes);
}

uint8_t Mirror(uint8_t byte) {
    unsigned mirrored = 0;
    for (unsigned bit = 0; bit < 8; ++bit)
        mirrored |= ((byte >> bit) & 1U) << (7 - bit);
    return static_cast<uint8_t>(mirrored);
}

}  // namespace

void WithState(const EngineRun& run, const std::function<void(CodecState&)>& use) {
    const OwnedBlock block(BlockOf(run.stream));
    const OpenStream stream(mOpen(block.Get(), static_cast<int32_t>(run.stream.size())));
    CodecState state{};
    state.Dimensions.biWidth = static_cast<int32_t>(run.width);
    state.Dimensions.biHeight = static_cast<int32_t>(run.height);
    state.Dimensions.biBitCount = run.bits;
    state.RowBytes = run.RowBytes();
    state.Key = run.key;
    state.FillOrder = run.fillOrder;
    state.Stream = stream.Get();
    state.StreamLimit = static_cast<uint32_t>(run.stream.size());
    state.RowsPerStrip = run.rowsPerStrip;
    state.StripOffsets = BlockOfLongs(run.offsets);
    state.StripOffsetType = 4;
    state.StripCount = static_cast<uint32_t>(run.offsets.size());
    use(state);
    ReleaseCodecState(state);
}

Outcome RunEngine(Engine engine, const EngineRun& run, const Answer& answer) {
    Collector collector{run, answer, {}};
    WithState(run, [&](CodecState& state) {
        state.Callback = Collect;
        state.CallbackData = reinterpret_cast<uintptr_t>(&collector);
        collector.outcome.code = engine(state);
    });
    return collector.outcome;
}

PlainBuffers::PlainBuffers(const EngineRun& run, Answer answer)
    : line(run.RowBytes() + 256),
      lineLeft(run.RowBytes()),
      run_(run),
      answer_(std::move(answer)),
      limit_(run.stream.size()),
      bufferSize_(std::min<uint64_t>(limit_, 32767)) {}

uint32_t PlainBuffers::Begin() {
    return SeekStrip() ? 0 : 6;
}

bool PlainBuffers::SeekStrip() {
    if (strip_ >= run_.offsets.size()) return false;
    const uint64_t offset = run_.offsets[strip_];
    if (filled_ && offset >= mark_ && offset <= mark_ + bufferSize_) {
        cursor_ = offset;
        return true;
    }
    next_ = offset;
    return offset <= limit_ && Fill() == 0;
}

uint32_t PlainBuffers::Fill() {
    filled_ = true;
    mark_ = cursor_ = next_;
    next_ += std::min(limit_ - std::min(limit_, mark_), bufferSize_);
    return next_ == mark_ ? 5 : 0;
}

uint32_t PlainBuffers::TakeByte(uint8_t& byte) {
    if (cursor_ >= next_) {
        if (const uint32_t code = Fill(); code != 0) return code;
    }
    byte = run_.stream[cursor_++];
    if (run_.fillOrder == 2) byte = Mirror(byte);
    return 0;
}

uint32_t PlainBuffers::Flush() {
    delivered_.emplace_back(line.begin(), line.begin() + run_.RowBytes());
    const uint32_t code = answer_ ? answer_(line.data(), lineNumber_) : 0;
    if (code != 0) return code;
    lineLeft = run_.RowBytes();
    ++lineNumber_;
    stripEnded = lineNumber_ % run_.rowsPerStrip == 0 || lineNumber_ == run_.height;
    if (!stripEnded) return 0;
    if (lineNumber_ >= run_.height) return 3;
    ++strip_;
    return SeekStrip() ? 0 : 6;
}

Outcome PlainBuffers::End(uint32_t code) const {
    return {code == 3 ? 0 : code, delivered_};
}

}  // namespace vellim::test
