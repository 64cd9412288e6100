// Uncompressed lines (TIFF 6.0 section 3), one behind the other through the code buffer.
//
// A line that the code buffer has room for is asked for right where it belongs: the callback gets
// an address in the code buffer in place of the line buffer's. Only lines that cross the buffer's
// end are copied.

#include <algorithm>
#include <cstring>

#include "codec/end_of_run.h"
#include "codec/engines.h"
#include "vellim/failures.h"

namespace vellim {
namespace {

// Moves as much of the line as the code buffer has room for.
void MoveBytes(CodecState& state) {
    const uint32_t count = std::min<uint32_t>(state.CodeLeft, state.LineBytesLeft);
    std::memcpy(state.CodeCursor, state.LineCursor, count);
    state.CodeCursor += count;
    state.CodeLeft -= count;
    state.LineCursor += count;
    state.LineBytesLeft -= count;
}

// Asks for the next line. A callback may find as many spare bytes behind it as behind the line
// buffer.
uint32_t NextLine(CodecState& state) {
    if (state.CodeLeft < state.LineAreaSize) return FillDataBuffer(&state);
    uint8_t* const lineBuffer = state.LineBuffer;
    state.LineBuffer = state.CodeCursor;
    const uint32_t result = FillDataBuffer(&state);
    state.LineBuffer = lineBuffer;
    state.LineCursor = lineBuffer;
    if (result != TIFF_SUCCESS) return result;
    state.CodeCursor += state.LineBytesLeft;
    state.CodeLeft -= state.LineBytesLeft;
    state.LineBytesLeft = 0;
    return TIFF_SUCCESS;
}

}  // namespace

uint32_t EncodeRaw(CodecState& state) {
    uint32_t result = InitEncodeBuffers(&state);
    while (result == TIFF_SUCCESS) {
        MoveBytes(state);
        result = state.LineBytesLeft > 0 ? FlushCodeBuffer(&state) : NextLine(state);
    }
    return EndOfRun(result);
}

}  // namespace vellim
