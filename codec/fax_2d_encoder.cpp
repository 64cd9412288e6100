// The encoders of two-dimensional coding: ITU-T T.4 section 4.2, with an end-of-line code and a tag
// bit before each line, and T.6, which has neither and closes each strip with two end-of-line codes
// (EOFB). A strip ends with a byte's step even where that adds a zero byte, and the line above the
// next one's first is white.
//
// In Group 3 the code before the first line is the run's first; the one behind a line belongs to
// its strip, and six more, which are the return to control, stand behind the last strip's byte
// count. Of a last byte that isn't full nothing is written. Fill bits make an end-of-line code end
// with a byte. Which lines are one-dimensional is counted through the strips.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>

#include "codec/change_finder.h"
#include "codec/end_of_run.h"
#include "codec/engines.h"
#include "codec/fax_row_encoder.h"
#include "codec/k_factor.h"
#include "codec/run_code_table.h"
#include "platform/guards.h"
#include "vellim/failures.h"

namespace vellim {
namespace {

constexpr uint32_t kMaxLineBytes = 4160;
static_assert(kMaxLineBytes * 8 <= kMaxSearch);

constexpr int kClosingEndsOfLine = 6;
constexpr uint32_t kFillFlag = 0x40000;

// The changes of the line to be coded and of the line above it.
class LinePair {
  public:
    explicit LinePair(const CodecState& state)
        : width_(std::min(static_cast<uint32_t>(state.LinePixels), state.RowBytes * 8)),
          lineBytes_(state.RowBytes),
          block_(GlobalAlloc(GHND, (2 * EntriesOfAList()) * uint32_t{sizeof(Change)} + lineBytes_)),
          lock_(block_.Get()) {
        if (!lock_) return;
        for (uint32_t i = 0; i < lists_.size(); ++i) {
            Change* const first = lock_.As<Change>() + size_t{i} * EntriesOfAList() + 1;
            *(first - 1) = kLeftOfLine;
            lists_[i] = {first, first};
        }
        line_ = reinterpret_cast<uint8_t*>(lock_.As<Change>() + size_t{2} * EntriesOfAList());
        Close();
    }

    explicit operator bool() const { return static_cast<bool>(lock_); }

    // The line above the next is white.
    void BeginStrip() {
        std::memset(line_, 0, lineBytes_);
        lists_[current_].end = lists_[current_].first;
        Close();
    }

    // Makes `line` the line to be coded, and the one before it the line above. False, and nothing
    // changed, when the two are the same.
    bool Take(const uint8_t* line) {
        if (std::memcmp(line_, line, lineBytes_) == 0) return false;
        std::memcpy(line_, line, lineBytes_);
        current_ ^= 1U;
        List& list = lists_[current_];
        list.end = FindChanges(line, static_cast<int32_t>(width_), 0, list.first);
        Close();
        return true;
    }

    void Put1D(BitWriter& out, const uint8_t* line) {
        Take(line);
        PutRuns(out, RunColor::White, 0, lists_[current_].first, Count() + 1);
    }

    void Put2D(BitWriter& out, const uint8_t* line) {
        if (Take(line)) {
            PutRow2D(out, lists_[current_].first, lists_[current_ ^ 1U].first, width_);
        } else {
            out.PutOnes(Count() + 1);  // vertical modes of no offset, whose code is a 1
        }
    }

  private:
    struct List {
        Change* first;
        Change* end;
    };

    [[nodiscard]] uint32_t EntriesOfAList() const {
        static_assert(kSpareChanges >= kClosingChanges);
        return 1 + width_ + kSpareChanges;
    }
    [[nodiscard]] uint32_t Count() const {
        return static_cast<uint32_t>(lists_[current_].end - lists_[current_].first);
    }
    void Close() {
        std::fill_n(lists_[current_].end, kClosingChanges, static_cast<Change>(width_));
    }

    uint32_t width_;
    uint32_t lineBytes_;
    OwnedBlock block_;
    LockedBlock lock_;
    std::array<List, 2> lists_{};
    uint32_t current_ = 0;
    uint8_t* line_ = nullptr;  // a copy of the line taken last
};

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

    BitWriter out(state);
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
    BitWriter out(state);
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
