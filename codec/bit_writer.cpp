#include "codec/bit_writer.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace vellim {

// Whole bytes beyond the buffer's size, which stand in the slack, begin the next buffer. After a
// failure nothing more is written: it would stand in the wrong place.
BitWriter::Written BitWriter::FlushFullBuffer(const CodeSink& sink, const uint8_t* cursor,
                                              uint32_t failure) {
    CodecState& state = *sink.state;
    uint8_t* const base = state.CodeBufferBase;
    uint8_t* const end = base + state.CodeBufferSize;
    state.CodeCursor = end;
    state.CodeLeft = 0;
    if (failure == 0) failure = sink.flush(&state);
    const auto beyond = static_cast<size_t>(cursor - end);
    std::memcpy(base, end, beyond);
    return {base + beyond, failure};
}

void BitWriter::PutOnes(uint32_t count) {
    constexpr uint32_t kAtOnce = 48;
    while (count != 0) {
        const uint32_t part = std::min(count, kAtOnce);
        Spill();
        Put((uint64_t{1} << part) - 1, part);
        count -= part;
    }
}

}  // namespace vellim
