// The rows of a copy, ready to be put into the destination: joined, stretched, and in its colours.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "platform/bit_rows.h"
#include "platform/blit_colors.h"
#include "platform/pixel_groups.h"
#include "platform/row_stretching.h"
#include "platform/surface.h"

namespace vellim {

// The source, or those of its rows that the copy takes.
struct SourceRows {
    std::shared_ptr<const Surface> surface;
    int32_t first = 0;  // the row of the source that the surface begins with

    [[nodiscard]] const uint8_t* Row(int32_t y) const { return surface->Row(y - first); }
};

class CopiedRows {
  public:
    // `columns` is the horizontal axis. All must outlive the rows.
    CopiedRows(const SourceRows& source, const Axis& columns, Joining joining,
               const ColorChange& change)
        : source_(source), columns_(columns), joining_(joining), change_(change) {}

    // Finds which destination pixels from `left` to `right` have source pixels, and takes memory
    // for all rows; false where there is none.
    bool Prepare(int32_t left, int32_t right, uint32_t toBits);

    [[nodiscard]] int32_t Left() const { return left_; }
    [[nodiscard]] int32_t Right() const { return right_; }

    // The row that these source rows make, from Left() on; good until the next call.
    ConstBitPlace Row(PixelGroup rows);

  private:
    using Buffer = std::unique_ptr<uint8_t[]>;

    void ClipColumns(int32_t left, int32_t right);
    bool FindColumns(int32_t left, int32_t right);
    bool TakeMemory(uint32_t toBits);
    const uint8_t* JoinedRow(PixelGroup rows);
    [[nodiscard]] uint32_t Width() const { return static_cast<uint32_t>(right_ - left_); }
    [[nodiscard]] uint32_t Bits() const { return source_.surface->bits; }

    const SourceRows& source_;
    const Axis& columns_;
    Joining joining_;
    const ColorChange& change_;

    int32_t left_ = 0;
    int32_t right_ = 0;
    std::unique_ptr<PixelGroup[]> found_;  // where the copy isn't one to one
    std::span<PixelGroup> groups_;         // of left_ to right_, counted from firstByte_ on
    size_t firstByte_ = 0;                 // of the source's rows
    size_t byteCount_ = 0;
    size_t firstBit_ = 0;  // in firstByte_, or behind, where the copy is one to one
    Buffer joined_, stretched_, changed_;
    PixelGroup made_;  // the source rows of place_
    ConstBitPlace place_{};
};

}  // namespace vellim
