// Uncompressed lines (TIFF 6.0 section 3).
//
// A line that lies in the code buffer as a whole is delivered from there, without a copy: the
// callback gets its address in place of the line buffer's. A callback may change its line, and with
// it bytes that a later strip shares, for strips may overlap. So a strip that begins in front of
// what has been delivered is read from the stream anew.

#include <algorithm>
#include <cstring>

#include "codec/end_of_run.h"
#include "codec/engines.h"
#include "vellim/failures.h"
#include "vellim/streams.h"

namespace vellim {
namespace {

constexpr uint32_t kPreferredFill = 8192;  // stays in the nearest cache while lines are taken

// Cuts the code buffer to whole lines, so that with strips that lie side by side no line crosses
// its end. What the first fill has read beyond that is given back. 0 or 6.
uint32_t FitBufferToLines(CodecState& state) {
    if (state.RowBytes == 0 || state.RowBytes > state.CodeBufferSize) return TIFF_SUCCESS;
    const uint32_t lines = std::max(1U, kPreferredFill / state.RowBytes);
    state.CodeBufferSize = std::min(state.CodeBufferSize, lines * state.RowBytes);
    if (state.CodeLeft <= state.CodeBufferSize) return TIFF_SUCCESS;
    const uint32_t surplus = state.CodeLeft - state.CodeBufferSize;
    state.CodeLeft -= surplus;
    state.StreamCursor -= surplus;
    return mSeek(state.Stream, -static_cast<int32_t>(surplus), 1) < 0 ? TIFF_IO_ERROR
                                                                      : TIFF_SUCCESS;
}

// Moves `count` bytes to the line buffer.
void CopyToLine(CodecState& state, uint32_t count) {
    if (count != 0) std::memcpy(state.LineCursor, state.CodeCursor, count);
    state.LineCursor += count;
    state.LineBytesLeft -= count;
    state.CodeCursor += count;
    state.CodeLeft -= count;
}

// Reads the code buffer from its cursor's place in the stream.
uint32_t ReadAnew(CodecState& state) {
    const auto inBuffer = static_cast<uint32_t>(state.CodeCursor - state.CodeBufferBase);
    const uint32_t offset = state.BufferMark + inBuffer;
    state.StreamCursor = offset;
    if (mSeek(state.Stream, static_cast<int32_t>(offset), 0) < 0) return TIFF_IO_ERROR;
    return FillCodeBuffer(&state) == TIFF_SUCCESS ? TIFF_SUCCESS : TIFF_IO_ERROR;
}

// Delivers the line at the code cursor. Only the start of a strip moves the cursor back.
uint32_t DeliverInPlace(CodecState& state) {
    uint8_t* const lineBuffer = state.LineBuffer;
    uint8_t* const line = state.CodeCursor;
    uint8_t* const behind = line + state.RowBytes;
    const uint32_t mark = state.BufferMark;
    state.CodeCursor = behind;
    state.CodeLeft -= state.RowBytes;
    state.LineBuffer = line;
    const uint32_t result = FlushDataBuffer(&state);
    state.LineBuffer = lineBuffer;
    state.LineCursor = lineBuffer;
    const bool movedBack = state.BufferMark == mark && state.CodeCursor < behind;
    return result == TIFF_SUCCESS && movedBack ? ReadAnew(state) : result;
}

}  // namespace

uint32_t DecodeRaw(CodecState& state) {
    uint32_t result = InitDecodeBuffers(&state);
    if (result == TIFF_SUCCESS) result = FitBufferToLines(state);
    while (result == TIFF_SUCCESS) {
        const bool isWhole = state.LineBytesLeft == state.RowBytes && state.RowBytes != 0;
        if (isWhole && state.CodeLeft >= state.RowBytes) {
            result = DeliverInPlace(state);
            continue;
        }
        CopyToLine(state, std::min(state.CodeLeft, state.LineBytesLeft));
        result = state.LineBytesLeft == 0 ? FlushDataBuffer(&state) : FillCodeBuffer(&state);
    }
    return EndOfRun(result);
}

}  // namespace vellim
