#include "codec/fax_row_encoder.h"

#include <algorithm>

#include "codec/run_code_table.h"

namespace vellim {
namespace {

// Behind a Spill and the code of a mode. Both runs are in the table.
inline void PutTwoRuns(BitWriter& out, RunColor color, uint32_t first, uint32_t second) {
    out.Put(RunCodesOf(color)[first]);
    out.Put(RunCodesOf(OtherColor(color))[second]);
}

// The same with runs of any length. Gives the writer back, so that the caller's own can stay in
// registers.
BitWriter PutTwoLongRuns(BitWriter out, RunColor color, uint32_t first, uint32_t second) {
    PutRun(out, color, first);
    PutRun(out, OtherColor(color), second);
    return out;
}

template <bool kMayBeLong>
void PutAllRuns(BitWriter& sharedOut, RunColor color, int32_t from, const Change* ends,
                uint32_t count) {
    BitWriter out = sharedOut;
    for (const Change* const pairsEnd = ends + (count & ~1U); ends != pairsEnd; ends += 2) {
        const auto first = static_cast<uint32_t>(ends[0] - from);
        const auto second = static_cast<uint32_t>(ends[1] - ends[0]);
        from = ends[1];
        if (kMayBeLong && std::max(first, second) > kLongestMakeUp) {
            out = PutTwoLongRuns(out, color, first, second);
        } else {
            out.Spill();
            PutTwoRuns(out, color, first, second);
        }
    }
    sharedOut = out;
    if (count % 2 != 0) PutRun(sharedOut, color, static_cast<uint32_t>(*ends - from));
}

// A walk along both lists.
struct RowWalk {
    const Change* current;
    const Change* a;  // a1 of the standards
    const Change* b;  // b1, with b2 behind it
    uint32_t a0 = 0;

    // As many changes as came before a1 have turned the colour.
    [[nodiscard]] RunColor Color() const { return static_cast<RunColor>((a - current) & 1); }

    void Pass() {
        a0 = b[1];
        b += 2;
    }

    // The next b1 is nearly always the next change of the line above. Left to itself a compiler
    // would compute which it is, and every mode would wait for the one before it.
    void Vertical() {
        a0 = *a;
        a += 1;
        b += 1;
        if (b[-2] > a0) [[unlikely]] {
            b -= 2;
        } else if (*b <= a0) [[unlikely]] {
            b += 2;
        }
    }

    // Needs a0 before the line's end, where the closing entries end the search.
    void Horizontal() {
        a += 2;
        while (*b <= a0)
            b += 2;
    }
};

}  // namespace

void PutRuns(BitWriter& out, RunColor color, int32_t from, const Change* ends, uint32_t count) {
    if (count == 0) return;
    if (ends[count - 1] - from <= int32_t{kLongestMakeUp}) {
        PutAllRuns<false>(out, color, from, ends, count);
    } else {
        PutAllRuns<true>(out, color, from, ends, count);
    }
}

void PutRow2D(BitWriter& sharedOut, const Change* current, const Change* reference,
              uint32_t width) {
    BitWriter out = sharedOut;
    RowWalk walk{current, current, reference};
    for (;;) {
        const uint32_t a1 = *walk.a;
        if (walk.b[1] < a1) {
            out.MakeRoom(kLongestModeCode);
            out.Put(kPassCode);
            walk.Pass();
            continue;
        }
        const uint32_t offset = a1 - *walk.b + kMaxVertical;
        if (offset <= 2 * kMaxVertical) {
            out.MakeRoom(kLongestModeCode);
            out.Put(kVerticalCodes[offset]);
            if (a1 == width) break;
            walk.Vertical();
            continue;
        }
        const RunColor color = walk.Color();
        const uint32_t first = a1 - walk.a0;
        const uint32_t second = walk.a[1] - a1;
        out.Spill();
        out.Put(kHorizontalCode);
        if (std::max(first, second) > kLongestMakeUp) {
            out = PutTwoLongRuns(out, color, first, second);
        } else {
            PutTwoRuns(out, color, first, second);
        }
        walk.a0 = walk.a[1];
        if (walk.a0 == width) break;
        walk.Horizontal();
    }
    sharedOut = out;
}

}  // namespace vellim
