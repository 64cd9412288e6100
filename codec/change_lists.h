// The changing elements of the line being decoded and of the line above it, as pixel positions in
// order: the end of the first white run, the end of the first black run, and so on. A line that
// begins with a black pixel begins with a change at 0.
#pragma once

#include <cstdint>
#include <utility>

#include "platform/guards.h"

namespace vellim {

// Positions are kept within this bound, so that sums of them can't overflow. A wider line can't be
// decoded: it counts as one that there is no memory for.
inline constexpr int32_t kFarPosition = 1 << 28;

class ChangeLists {
  public:
    // Room for both lists of a line of `width` pixels. A line has at most width + 1 changes, but
    // damaged two-dimensional data can hold runs of no pixels beside those, so that a short line
    // has room for some thousands of them too.
    explicit ChangeLists(int32_t width)
        : capacity_((static_cast<uint32_t>(width) < kLeastChanges ? kLeastChanges
                                                                  : static_cast<uint32_t>(width)) +
                    kClosingEntries),
          block_(width > kFarPosition ? 0 : GlobalAlloc(GHND, BytesOfAList() * 2)),
          lock_(block_.Get()) {
        if (!lock_) return;
        current_ = lock_.As<int32_t>() + kFrontEntries;
        reference_ = current_ + BytesOfAList() / sizeof(int32_t);
        for (uint32_t i = 1; i <= kFrontEntries; ++i) {
            *(current_ - i) = INT32_MIN;
            *(reference_ - i) = INT32_MIN;
        }
    }

    explicit operator bool() const { return static_cast<bool>(lock_); }

    // Entries -1 and -2 of either list lie left of every position.
    [[nodiscard]] int32_t* Current() const { return current_; }
    [[nodiscard]] const int32_t* Reference() const { return reference_; }

    // Changes that a line may have; behind them is room for its closing entries.
    [[nodiscard]] uint32_t Capacity() const { return capacity_; }

    // Makes the current line, closed behind its `count` changes with entries at the width, the
    // reference line. `leftover` is the position that a pass mode left behind the last change when
    // it was the line's last mode, else the width.
    void MakeReference(uint32_t count, int32_t width, int32_t leftover) {
        current_[count] = leftover;
        current_[count + 1] = width;
        current_[count + 2] = width;
        std::swap(current_, reference_);
    }

  private:
    static constexpr uint32_t kLeastChanges = 5008;
    // Three entries close a list; chains of modes look and write beyond those.
    static constexpr uint32_t kClosingEntries = 12;
    static constexpr uint32_t kFrontEntries = 2;

    [[nodiscard]] uint32_t BytesOfAList() const {
        return (kFrontEntries + capacity_ + kClosingEntries) * uint32_t{sizeof(int32_t)};
    }

    uint32_t capacity_;
    OwnedBlock block_;
    LockedBlock lock_;
    int32_t* current_ = nullptr;
    int32_t* reference_ = nullptr;
};

}  // namespace vellim
