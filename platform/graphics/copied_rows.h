// The rows of a copy, ready to be put into the destination: joined, stretched, and in its colours.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "platform/graphics/bit_joining.h"
#include "platform/graphics/bit_rows.h"
#include "platform/graphics/blit_colors.h"
#include "platform/graphics/pixel_groups.h"
#include "platform/graphics/row_buffer.h"
#include "platform/graphics/row_stretching.h"
#include "platform/graphics/surface.h"

namespace vellim {

// The source, or those of its rows that the copy takes.
struct SourceRows {
    std::shared_ptr<const Surface> surface;
    int32_t first = 0;  // the row of the source that the surface begins with

    [[nodiscard]] const uint8_t* Row(int32_t y) const { return surface->Row(y - first); }
};

// Made for one copy after the other: a picture that comes line by line has most of the work done
// once.
class CopiedRows {
  public:
    // How the copy goes across: `columns` is its horizontal axis, and destination pixels from
    // `left` to `right` are wanted.
    struct Shape {
        Axis columns;
        int32_t left = 0;
        int32_t right = 0;
        Joining joining = Joining::Or;
        ColorChange::Terms colors;

        bool operator==(const Shape&) const = default;
    };

    // Begins a copy: finds which destination pixels have source pixels. False without memory.
    bool Begin(const Shape& shape);

    [[nodiscard]] int32_t Left() const { return left_; }
    [[nodiscard]] int32_t Right() const { return right_; }
    [[nodiscard]] const ColorChange& Change() const { return change_; }

    // The rows of the source for each destination row from `top` on, `count` of them; null without
    // memory. Good until it is asked again.
    const PixelGroup* Down(const Axis& rows, int32_t top, size_t count);

    // The row that these rows of the source make, from Left() on; good until the next call.
    ConstBitPlace Row(const SourceRows& source, PixelGroup rows);

  private:
    void Stretch(const uint8_t* row);
    void ClipColumns();
    bool FindColumns();
    bool TakeMemory();
    const uint8_t* JoinedRow(const SourceRows& source, PixelGroup rows);
    [[nodiscard]] bool IsBlank(const uint8_t* row) const;
    [[nodiscard]] uint32_t Width() const { return static_cast<uint32_t>(right_ - left_); }
    [[nodiscard]] uint32_t Bits() const { return shape_.colors.fromBits; }

    Shape shape_;
    bool isReady_ = false;  // what follows is that of the shape
    ColorChange change_;
    int32_t left_ = 0;
    int32_t right_ = 0;
    RowBuffer<PixelGroup> found_;   // where the copy isn't one to one
    std::span<PixelGroup> groups_;  // of left_ to right_, counted from firstByte_ on
    BitJoiner joiner_;              // of one bit, where it serves
    bool isJoined_ = false;         // it does
    size_t firstByte_ = 0;          // of the source's rows
    size_t byteCount_ = 0;
    size_t firstBit_ = 0;  // in firstByte_, or behind, where the copy is one to one
    RowBuffer<uint8_t> joined_, stretched_, changed_;
    RowBuffer<PixelGroup> down_;
    Axis downAxis_;
    int32_t downTop_ = 0;
    size_t downCount_ = 0;  // of down_, where it is that of the axis
    PixelGroup made_;       // the source rows of place_, in the copy under way
    bool isBlank_ = false;  // place_ was made of zero bits alone, in a copy of this shape
    ConstBitPlace place_{};
};

}  // namespace vellim
