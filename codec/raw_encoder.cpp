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

// Asks for a line where the code buffer goes on. A callback may find as many spare bytes behind it
// as behind the line buffer.
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

// As many lines as there is room for, up to the strip's last: FillDataBuffer's part of a line that
// ends no strip, without a look at the record for each.
uint32_t NextLinesOfStrip(CodecState& state) {
    const LineCallback callback = state.Callback;
    const uintptr_t callbackData = state.CallbackData;
    const uint32_t rowBytes = state.RowBytes, lineArea = state.LineAreaSize;
    const uint32_t last = state.StripLastLine;
    uint8_t* cursor = state.CodeCursor;
    uint32_t left = state.CodeLeft, line = state.LineNumber;
    bool ended = state.StripEnded != 0;
    uint32_t result = TIFF_SUCCESS;
    while (!ended && left >= lineArea) {
        ended = line == last;
        result = callback(cursor, line++, callbackData);
        if (result != TIFF_SUCCESS) break;
        cursor += rowBytes;
        left -= rowBytes;
    }
    state.CodeCursor = cursor;
    state.CodeLeft = left;
    state.LineNumber = line;
    state.StripEnded = ended ? 1 : 0;
    return result;
}

}  // namespace

uint32_t EncodeRaw(CodecState& state) {
    uint32_t result = InitEncodeBuffers(&state);
    while (result == TIFF_SUCCESS) {
        MoveBytes(state);
        result = state.LineBytesLeft > 0 ? FlushCodeBuffer(&state) : NextLine(state);
        if (result == TIFF_SUCCESS && state.LineBytesLeft == 0) result = NextLinesOfStrip(state);
    }
    return EndOfRun(result);
}

}  // namespace vellim
