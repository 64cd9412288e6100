// The encoder of MMR streams (IOCA image data): an end-of-line code with tag 1, the first line as
// runs, one with tag 0, all other lines two-dimensional with nothing between them, and six with tag
// 1 at the end, in blocks that the code runs through. Of a last byte that isn't full nothing is
// written.
#include "codec/end_of_run.h"
#include "codec/engines.h"
#include "codec/line_pair.h"
#include "codec/mmr_buffers.h"
#include "codec/run_code_table.h"
#include "vellim/failures.h"

namespace vellim {
namespace {

constexpr int kClosingEndsOfLine = 6;

}  // namespace

uint32_t EncodeMmr(CodecState& state) {
    if (const uint32_t code = InitEncodeBuffers(&state); code != 0) return EndOfRun(code);
    if (state.LineBytesLeft > kMaxLineBytes) return TIFF_BAD_CODE;
    LinePair lines(state);
    if (!lines) return TIFF_NO_MEMORY;

    const CodeSink sink(state, FlushMmrCodeBuffer);
    BitWriter out(sink);
    out.PutCode(kEndOfLineBefore1D);
    if (state.LinePixels > 0) lines.Put1D(out, state.LineCursor);  // no pixels are no run here
    out.PutCode(kEndOfLineBefore2D);
    uint32_t failure = out.HandOver();
    uint32_t code = failure != 0 ? failure : FillDataBuffer(&state);
    while (code == 0) {
        lines.Put2D(out, state.LineCursor);
        if (failure = out.HandOver(); failure != 0) return failure;
        code = FillDataBuffer(&state);
    }
    if (EndOfRun(code) != 0) return code;

    for (int i = 0; i < kClosingEndsOfLine; ++i)
        out.PutCode(kEndOfLineBefore1D);
    failure = out.HandOver();
    return failure != 0 ? failure : FlushMmrCodeBuffer(&state);
}

}  // namespace vellim
