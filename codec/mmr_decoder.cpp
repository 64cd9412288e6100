// The decoder of MMR streams: lines of T.4 and T.6 coding in blocks (IOCA image data). How a line
// is coded is told by the tag bit of the last end-of-line code before it; such codes are read only
// where a line meets one, and lines without one follow each other in the very next bit.
#include "codec/bit_reader.h"
#include "codec/change_lists.h"
#include "codec/end_of_run.h"
#include "codec/engines.h"
#include "codec/fax_2d_line.h"
#include "codec/fax_2d_row.h"
#include "codec/mmr_buffers.h"
#include "codec/run_painter.h"
#include "vellim/failures.h"

namespace vellim {

// An end-of-line code where a one-dimensional line is due delivers nothing, and leaves the line
// before as the reference of the next; where a two-dimensional line is due, it is a white line.
uint32_t DecodeMmr(CodecState& state) {
    if (const uint32_t code = InitMmrDecodeBuffers(state); code != 0) return code;
    const int32_t width = state.Dimensions.biWidth;
    ChangeLists lists(width);
    if (!lists) return TIFF_NO_MEMORY;
    lists.MakeReference(0, width, width);

    const CodeSource source(state, FillMmrCodeBuffer);
    BitReader reader(source);
    LookAhead lookAhead;
    bool oneDimensional = true;
    for (;;) {
        FaxRow row{.width = width};
        bool lineSeen = !oneDimensional;
        uint32_t failure = oneDimensional
                               ? DecodeRowOfRuns(row, lists, reader, lineSeen)
                               : DecodeFaxRow<FaxDialect::Mmr>(row, lists, reader, lookAhead);
        if (failure == 0 && row.hasEndOfLine)
            failure = ReadEndOfLine(reader, lookAhead, oneDimensional);
        if (failure != 0) return failure;
        if (!lineSeen) continue;

        PaintRuns(lists.Current(), state.LineBuffer, row.count, state.RowBytes);
        EndLine(row, lists);
        if (const uint32_t code = FlushDataBuffer(&state); code != 0) return EndOfRun(code);
    }
}

}  // namespace vellim
