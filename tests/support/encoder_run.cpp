#include "support/encoder_run.h"

#include <algorithm>

#include "container/streams.h"
#include "platform/guards.h"

namespace vellim::test {
namespace {

std::vector<uint32_t> TableOf(GlobalHandle block) {
    const LockedBlock table(block);
    return {table.As<uint32_t>(), table.As<uint32_t>() + table.Size() / sizeof(uint32_t)};
}

uint32_t StripsOf(const EngineRun& run) {
    return (run.height + run.rowsPerStrip - 1) / run.rowsPerStrip;
}

}  // namespace

Encoded RunEncoder(Engine engine, const EngineRun& run, const Answer& source) {
    Encoded encoded;
    EngineRun shape = run;
    shape.offsets.assign(StripsOf(run), 0);
    WithState(shape, [&](CodecState& state) {
        state.StripByteCounts = BlockOf(Bytes(shape.offsets.size() * sizeof(uint32_t)));
        state.Callback = CallAnswer;
        state.CallbackData = reinterpret_cast<uintptr_t>(&source);
        encoded.code = engine(state);
        if (encoded.code == 0) encoded.code = FlushCodeBuffer(&state);
        const LockedBlock stream(mBlock(state.Stream));
        encoded.stream.assign(stream.As<uint8_t>(), stream.As<uint8_t>() + mSize(state.Stream));
        encoded.offsets = TableOf(state.StripOffsets);
        encoded.counts = TableOf(state.StripByteCounts);
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
    encoded.offsets.resize(StripsOf(run));
    encoded.counts.resize(StripsOf(run));
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
