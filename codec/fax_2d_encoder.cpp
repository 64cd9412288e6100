// The encoders of two-dimensional coding: ITU-T T.4 section 4.2, with an end-of-line code and a tag
// bit before each line, and T.6, which has neither and closes each strip with two end-of-line codes
// (EOFB). A strip ends with a byte's step even where that adds a zero byte, and the line above the
// next one's first is white.
//
// In Group 3 the code before the first line is the run's first; the one behind a line belongs to
// its strip, and six more, which are the return to control, stand behind the last strip's byte
// count. Of a last byte that isn't full nothing is written. Fill bits make an end-of-line code end
// with a byte. Which lines are one-dimensional is counted through the strips.

#include "codec/end_of_run.h"
#include "codec/engines.h"
#include "codec/k_factor.h"
#include "codec/line_pair.h"
#include "codec/run_code_table.h"
#include "vellim/failures.h"

namespace vellim {
namespace {

constexpr int kClosingEndsOfLine = 6;
constexpr uint32_t kFillFlag = 0x40000;

void PutEndOfLine(BitWriter& out, BitCode code, bool fill) {
    if (fill) out.AlignEndOf(code.length);
    out.PutCode(code);
}

}  // namespace

uint32_t EncodeGroup4(CodecState& state) {
    if (const uint32_t code = InitEncodeBuffers(&state); code != 0) return EndOfRun(code);
    if (state.LineBytesLeft > kMaxLineBytes) return TIFF_BAD_CODE;
    LinePair lines(state);
    if (!lines) return TIFF_NO_MEMORY;

    const CodeSink sink(state);
    BitWriter out(sink);
    uint32_t code = 0;
    while (code == 0) {
        lines.Put2D(out, state.LineCursor);
        if (state.StripEnded != 0) {
            out.PutCode(kEndOfLine);
            out.PutCode(kEndOfLine);
            out.StepToNextByte();
            lines.BeginStrip();
        }
        if (const uint32_t failure = out.HandOver(); failure != 0) return failure;
        code = FillDataBuffer(&state);
    }
    return EndOfRun(code) != 0 ? code : FlushCodeBuffer(&state);
}

uint32_t EncodeGroup3TwoD(CodecState& state) {
    if (const uint32_t code = InitEncodeBuffers(&state); code != 0) return EndOfRun(code);
    if (state.LineBytesLeft > kMaxLineBytes) return TIFF_BAD_CODE;
    LinePair lines(state);
    if (!lines) return TIFF_NO_MEMORY;

    const uint32_t factor = KFactor();
    const bool fill = (state.Key & kFillFlag) != 0;
    const CodeSink sink(state);
    BitWriter out(sink);
    PutEndOfLine(out, kEndOfLineBefore1D, fill);
    uint32_t sinceLast1D = factor;
    uint32_t code = 0;
    while (code == 0) {
        if (sinceLast1D == factor) {
            lines.Put1D(out, state.LineCursor);
            sinceLast1D = 1;
        } else {
            lines.Put2D(out, state.LineCursor);
            sinceLast1D += 1;
        }
        const bool nextIs1D = sinceLast1D == factor;
        PutEndOfLine(out, nextIs1D ? kEndOfLineBefore1D : kEndOfLineBefore2D, fill);
        if (state.StripEnded != 0) {
            out.StepToNextByte();
            lines.BeginStrip();
        }
        if (const uint32_t failure = out.HandOver(); failure != 0) return failure;
        code = FillDataBuffer(&state);
    }
    if (EndOfRun(code) != 0) return code;

    for (int i = 0; i < kClosingEndsOfLine; ++i)
        PutEndOfLine(out, kEndOfLineBefore1D, fill);
    if (const uint32_t failure = out.HandOver(); failure != 0) return failure;
    return FlushCodeBuffer(&state);
}

}  // namespace vellim
