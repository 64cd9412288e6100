#include "support/engine_run.h"

#include <algorithm>

#include "codec/buffers.h"
#include "container/streams.h"
#include "platform/guards.h"

namespace vellim::test {

uint32_t CallAnswer(uint8_t* line, uint32_t number, uintptr_t answer) {
    return (*reinterpret_cast<const Answer*>(answer))(line, number);
}

void WithState(const EngineRun& run, const std::function<void(CodecState&)>& use) {
    const OwnedBlock block(BlockOf(run.stream));
    const OpenStream stream(mOpen(block.Get(), static_cast<int32_t>(run.stream.size())));
    CodecState state{};
    state.Dimensions.biWidth = static_cast<int32_t>(run.width);
    state.Dimensions.biHeight = static_cast<int32_t>(run.height);
    state.Dimensions.biBitCount = run.bits;
    state.RowBytes = run.RowBytes();
    state.Key = run.key;
    state.FillOrder = TIFF_FILL_MSB_FIRST;
    state.Stream = stream.Get();
    state.StreamLimit = static_cast<uint32_t>(run.stream.size());
    state.RowsPerStrip = run.rowsPerStrip;
    const auto* table = reinterpret_cast<const uint8_t*>(run.offsets.data());
    state.StripOffsets = BlockOf({table, table + run.offsets.size() * sizeof(uint32_t)});
    state.StripOffsetType = TIFF_TYPE_LONG;
    state.StripCount = static_cast<uint32_t>(run.offsets.size());
    use(state);
    ReleaseCodecState(state);
}

Outcome RunEngine(Engine engine, const EngineRun& run, const Answer& answer) {
    Outcome outcome;
    const Answer keep = [&](uint8_t* line, uint32_t number) {
        outcome.lines.emplace_back(line, line + run.RowBytes());
        return answer ? answer(line, number) : 0;
    };
    WithState(run, [&](CodecState& state) {
        state.Callback = CallAnswer;
        state.CallbackData = reinterpret_cast<uintptr_t>(&keep);
        outcome.code = engine(state);
    });
    return outcome;
}

Outcome PlainBuffers::Run(const std::function<uint32_t()>& step) {
    uint32_t code = EnterStrip();
    while (code == 0)
        code = step();
    outcome.code = code == 3 ? 0 : code;
    return outcome;
}

uint32_t PlainBuffers::EnterStrip() {
    if (strip >= run.offsets.size() || run.offsets[strip] > run.stream.size()) return 6;
    cursor = run.offsets[strip++];
    return 0;
}

uint32_t PlainBuffers::TakeByte(uint8_t& byte) {
    if (cursor >= run.stream.size()) return 5;
    byte = run.stream[cursor++];
    return 0;
}

uint32_t PlainBuffers::Flush() {
    outcome.lines.push_back(line);
    const auto number = static_cast<uint32_t>(outcome.lines.size());
    const uint32_t code = answer ? answer(line.data(), number - 1) : 0;
    if (code != 0) return code;
    lineLeft = run.RowBytes();
    stripEnded = number % run.rowsPerStrip == 0 || number == run.height;
    if (!stripEnded) return 0;
    return number >= run.height ? 3 : EnterStrip();
}

Encoded RunEncoder(Engine engine, const EngineRun& run, const Answer& source) {
    Encoded encoded;
    EngineRun shape = run;
    shape.offsets.assign(run.Strips(), 0);
    const auto table = [](GlobalHandle block) {
        const LockedBlock locked(block);
        const auto* entries = locked.As<uint32_t>();
        return std::vector(entries, entries + locked.Size() / sizeof(uint32_t));
    };
    WithState(shape, [&](CodecState& state) {
        state.StripByteCounts = BlockOf(Bytes(shape.offsets.size() * sizeof(uint32_t)));
        state.Callback = CallAnswer;
        state.CallbackData = reinterpret_cast<uintptr_t>(&source);
        mSeek(state.Stream, 0, 2);
        encoded.code = engine(state);
        if (encoded.code == 0) encoded.code = FlushCodeBuffer(&state);
        const LockedBlock stream(mBlock(state.Stream));
        encoded.stream.assign(stream.As<uint8_t>(), stream.As<uint8_t>() + mSize(state.Stream));
        encoded.offsets = table(state.StripOffsets);
        encoded.counts = table(state.StripByteCounts);
    });
    return encoded;
}

Answer LinesOf(const Bytes& pixels, uint32_t rowBytes, uint32_t stopAt, uint32_t stop) {
    return [&pixels, rowBytes, stopAt, stop](uint8_t* line, uint32_t number) {
        std::copy_n(&pixels.at(size_t{number} * rowBytes), rowBytes, line);
        return number == stopAt ? stop : 0U;
    };
}

uint32_t PlainSink::NextLine() {
    encoded.offsets.resize(run.Strips());
    encoded.counts.resize(run.Strips());
    if (stripEnded) {
        const size_t strip = (lineNumber - 1) / run.rowsPerStrip;
        const size_t end = encoded.stream.size() + buffer.size();
        encoded.offsets[strip] = static_cast<uint32_t>(stripStart);
        encoded.counts[strip] = static_cast<uint32_t>(end - stripStart);
        stripStart = end;
        if (lineNumber >= run.height) return 3;
    }
    const uint32_t number = lineNumber++;
    stripEnded = lineNumber % run.rowsPerStrip == 0 || lineNumber == run.height;
    return source(line.data(), number);
}

void PlainSink::Put(uint8_t byte) {
    if (Room() == 0) Flush();
    buffer.push_back(byte);
}

void PlainSink::Flush() {
    encoded.stream.insert(encoded.stream.end(), buffer.begin(), buffer.end());
    buffer.clear();
}

}  // namespace vellim::test
