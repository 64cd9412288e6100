// Part of a DIB brought to another size: each new pixel is the old one that lies nearest to its
// place, by whole numbers alone.
//
// With div for a whole division, pixel j of `toWidth` new ones comes from pixel
// (4 toWidth + 8 j width) div 8 toWidth of the part, which is j width / toWidth rounded to the
// nearest, a half going up; and so do rows, counted from the highest. So 3 pixels become 8 as 0, 0,
// 1, 1, 2, 2, 2 and a last one that would be the fourth of three: what comes from behind the part
// or the image is 0. Pixels are moved as they are: the new DIB has the colour table of the old one.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "platform/guards.h"
#include "vellim/graphics.h"

namespace vellim {

// A DIB with a 40-byte header whose colour table and rows are all in its block.
struct WholeDib {
    BITMAPINFOHEADER header{};
    const uint8_t* bytes = nullptr;  // the header's
    const uint8_t* bits = nullptr;
    uint64_t stride = 0;              // bytes of a stored row
    std::span<const uint8_t> tail{};  // from the first stored row to the block's end
};

// Of any depth; nothing for a block that isn't one.
std::optional<WholeDib> ReadWholeDib(const LockedBlock& block);

// The part of the DIB, from its upper left corner, and the size that it is to have.
struct DibScaling {
    int32_t x;
    int32_t y;
    int32_t width;
    int32_t height;
    int32_t toWidth;
    int32_t toHeight;
};

// A new DIB, which the caller frees, with the header of the old one but for width and height. 0
// without memory, for a depth other than 1, 4, 8 and 24, for sizes below 1, and for a part that
// doesn't begin within the image; it may end behind it.
//
// The part's rows are read by whole bytes. Where the part is wider than what the image has of it,
// avail pixels, so many bytes are read of a row: avail div 8 + 1 at one bit, avail div 2 + 1 at
// four. Of pixels behind the image those bytes tell whatever the row's padding has; and where the
// part begins within a byte the image's last pixels may be in a byte more, which isn't read.
DibHandle ScaleDib(const WholeDib& dib, const DibScaling& scaling);

// Copies a row, each byte moved left by `shift` bits (below 8) with the next one's top bits behind
// them, as far as both go. Behind the last byte come zero bits.
void ShiftRowLeft(std::span<const uint8_t> from, uint32_t shift, std::span<uint8_t> to);

}  // namespace vellim
