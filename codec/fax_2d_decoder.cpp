// The decoders of two-dimensional coding: T.4 with an end-of-line code and a tag bit before each
// line, and T.6, which has neither. Both keep a line as a list of changing elements; only the
// painter makes pixels of it.
#include "codec/bit_reader.h"
#include "codec/change_lists.h"
#include "codec/end_of_run.h"
#include "codec/engines.h"
#include "codec/fax_2d_line.h"
#include "codec/fax_2d_row.h"
#include "codec/run_painter.h"
#include "vellim/failures.h"

namespace vellim {
namespace {

// Puts the reader on the strip's first byte; the line above the strip's first is white.
void BeginStrip(CodecState& state, ChangeLists& lists, BitReader& reader, LookAhead& lookAhead) {
    const int32_t width = state.Dimensions.biWidth;
    state.StripEnded = 0;
    reader.Reload();
    lookAhead = {reader.Position(), 0};
    lists.MakeReference(0, width, width);
}

}  // namespace

uint32_t DecodeGroup4(CodecState& state) {
    if (const uint32_t code = InitDecodeBuffers(&state); code != 0) return EndOfRun(code);
    const int32_t width = state.Dimensions.biWidth;
    ChangeLists lists(width);
    if (!lists) return TIFF_NO_MEMORY;

    const CodeSource source(state);
    BitReader reader(source);
    LookAhead lookAhead;
    BeginStrip(state, lists, reader, lookAhead);
    for (;;) {
        FaxRow row{.width = width};
        const uint32_t failure = DecodeFaxRow<FaxDialect::Group4>(row, lists, reader, lookAhead);
        if (failure != 0) return failure;
        PaintRuns(lists.Current(), state.LineBuffer, row.count, state.RowBytes);
        EndLine(row, lists);
        if (const uint32_t code = FlushDataBuffer(&state); code != 0) return EndOfRun(code);
        if (state.StripEnded != 0) BeginStrip(state, lists, reader, lookAhead);
    }
}

// The end-of-line code behind a line is read before the line is delivered, so the last line too
// needs one behind it. The code at the head of the stream is read as a line with nothing in it,
// which delivers nothing as long as no real line has come; its tag bit decides the first real line.
uint32_t Decode2DEol(CodecState& state) {
    if (const uint32_t code = InitDecodeBuffers(&state); code != 0) return EndOfRun(code);
    const int32_t width = state.Dimensions.biWidth;
    ChangeLists lists(width);
    if (!lists) return TIFF_NO_MEMORY;

    const CodeSource source(state);
    BitReader reader(source);
    LookAhead lookAhead;
    BeginStrip(state, lists, reader, lookAhead);
    bool oneDimensional = true;
    bool lineSeen = false;
    for (;;) {
        FaxRow row{.width = width};
        uint32_t failure = 0;
        if (oneDimensional) {
            failure = DecodeRowOfRuns(row, lists, reader, lineSeen);
        } else {
            lineSeen = true;
            failure = DecodeFaxRow<FaxDialect::Group3>(row, lists, reader, lookAhead);
        }
        if (failure == 0) failure = ReadEndOfLine(reader, lookAhead, oneDimensional);
        if (failure != 0) return failure;

        if (lineSeen) PaintRuns(lists.Current(), state.LineBuffer, row.count, state.RowBytes);
        EndLine(row, lists);
        if (!lineSeen) continue;
        if (const uint32_t code = FlushDataBuffer(&state); code != 0) return EndOfRun(code);
        if (state.StripEnded != 0) BeginStrip(state, lists, reader, lookAhead);
    }
}

}  // namespace vellim
