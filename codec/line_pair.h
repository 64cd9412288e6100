// The line that a two-dimensional encoder is at and the line above it, as the changes of either.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "codec/bit_writer.h"
#include "codec/change_finder.h"
#include "codec/fax_row_encoder.h"
#include "platform/guards.h"
#include "vellim/codec.h"

namespace vellim {

// The longest line that two-dimensional coding takes: 33,280 pixels.
inline constexpr uint32_t kMaxLineBytes = 4160;
static_assert(kMaxLineBytes * 8 <= kMaxSearch);

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

}  // namespace vellim
