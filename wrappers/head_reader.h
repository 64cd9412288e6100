// The bytes of a disk file one after the other, for heads that are found by looking at each byte.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "vellim/platform.h"

namespace vellim {

// Reads in pieces from the file's position on, and at the end of the scope puts the position behind
// the last byte that was taken, as if each had been read by itself. A file ends where positions can
// no longer be told; one that can't tell its position at all has no bytes.
class HeadReader {
  public:
    explicit HeadReader(StreamHandle file)
        : file_(file), position_(_llseek(file, 0, kFromPosition)), isBroken_(position_ < 0) {}
    ~HeadReader();
    HeadReader(const HeadReader&) = delete;
    HeadReader& operator=(const HeadReader&) = delete;

    // The next byte, or nothing where the file ends or can't be read.
    std::optional<uint8_t> Byte() {
        if (taken_ == filled_ && !Fill()) return std::nullopt;
        return piece_[taken_++];
    }

    // Takes so many bytes; false when there are fewer.
    bool Skip(uint32_t bytes);

    // Of the next byte to be taken.
    [[nodiscard]] int32_t Position() const { return position_ + static_cast<int32_t>(taken_); }

    // Whether reading failed, other than by the file's end.
    [[nodiscard]] bool IsBroken() const { return isBroken_; }

  private:
    static constexpr int32_t kFromStart = 0;
    static constexpr int32_t kFromPosition = 1;
    static constexpr uint32_t kPieceBytes = 4096;

    bool Fill();

    StreamHandle file_;
    int32_t position_;  // of the piece's first byte
    bool isBroken_;
    uint32_t taken_ = 0;
    uint32_t filled_ = 0;
    std::array<uint8_t, kPieceBytes> piece_;  // only the first filled_ are set
};

}  // namespace vellim
