// The encoder of one-dimensional coding (ITU-T T.4 section 4.1; TIFF 6.0 section 10): runs of white
// and black by turns, starting with white.
//
// Without end-of-line codes, lines begin on byte boundaries. With them, the fill variant begins
// each one on a byte boundary, at least one zero bit behind the line. The return to control of
// T.4 4.1.4 has five of them here, and what they leave of a byte that isn't full is dropped; all of
// that stands behind the last strip's byte count.

#include <algorithm>

#include "codec/change_finder.h"
#include "codec/end_of_run.h"
#include "codec/engines.h"
#include "codec/fax_row_encoder.h"
#include "codec/run_code_table.h"
#include "platform/guards.h"
#include "vellim/failures.h"

namespace vellim {
namespace {

// A line is taken in stretches of whole words, so that the list doesn't grow with the width.
constexpr int32_t kStretchPixels = 16384;
static_assert(kStretchPixels <= kMaxSearch && kStretchPixels % 64 == 0);

constexpr int kClosingEndsOfLine = 5;

constexpr uint32_t kCompressionMask = 0xFFFF;
constexpr uint32_t kFillFlag = 0x40000;

// Codes a line of `width` pixels. `changes` has room for a stretch.
void PutLine(BitWriter& out, const uint8_t* line, int32_t width, Change* changes) {
    RunColor color = RunColor::White;
    int32_t from = 0;  // where the run begins, counted from the stretch's first pixel
    int32_t left = width;
    for (; left > kStretchPixels; left -= kStretchPixels) {
        const Change* end =
            FindChanges(line, kStretchPixels, static_cast<uint32_t>(color), changes);
        const auto count = static_cast<uint32_t>(end - changes);
        PutRuns(out, color, from, changes, count);
        if (count != 0) from = *(end - 1);
        if (count % 2 != 0) color = OtherColor(color);
        from -= kStretchPixels;
        line += kStretchPixels / 8;
    }
    Change* end = FindChanges(line, left, static_cast<uint32_t>(color), changes);
    *end++ = static_cast<Change>(left);
    PutRuns(out, color, from, changes, static_cast<uint32_t>(end - changes));
}

void PutEndOfLine(BitWriter& out, bool fill) {
    if (fill) out.StepToNextByte();
    out.PutCode(kEndOfLine);
}

}  // namespace

uint32_t Encode1D(CodecState& state) {
    if (const uint32_t code = InitEncodeBuffers(&state); code != 0) return EndOfRun(code);
    const auto width =
        static_cast<int32_t>(std::clamp<int64_t>(state.LinePixels, 0, int64_t{state.RowBytes} * 8));
    const auto room = static_cast<uint32_t>(std::min(width, kStretchPixels)) + kSpareChanges;
    const OwnedBlock block(GlobalAlloc(GHND, room * uint32_t{sizeof(Change)}));
    const LockedBlock changes(block.Get());
    if (!changes) return TIFF_NO_MEMORY;

    const bool withEndOfLine = (state.Key & kCompressionMask) == TIFF_KEY_GROUP3_1D;
    const bool fill = (state.Key & kFillFlag) != 0;
    const CodeSink sink(state);
    BitWriter out(sink);
    uint32_t code = 0;
    while (code == 0) {
        if (withEndOfLine) PutEndOfLine(out, fill);
        PutLine(out, state.LineCursor, width, changes.As<Change>());
        if (!withEndOfLine) out.AlignToByte();
        if (const uint32_t failure = out.HandOver(); failure != 0) return failure;
        code = FillDataBuffer(&state);
    }
    if (EndOfRun(code) != 0) return code;

    for (int i = 0; withEndOfLine && i < kClosingEndsOfLine; ++i)
        PutEndOfLine(out, fill);
    if (const uint32_t failure = out.HandOver(); failure != 0) return failure;
    return FlushCodeBuffer(&state);
}

}  // namespace vellim
