// A DIB as its header tells it to the drawing calls.
#pragma once

#include <cstdint>
#include <optional>

#include "platform/graphics/pixel_format.h"
#include "vellim/graphics.h"

namespace vellim {

struct DibFormat {
    int32_t width = 0;
    int32_t height = 0;
    uint32_t stride = 0;  // bytes of a stored row
    uint32_t bits = 24;
    uint32_t colorCount = 0;  // entries of the colour table, at most 1 << bits; none at 24 bits
};

// Pictures have 1, 4, 8 or 24 bits a pixel. DIBs of 16 (five of each colour, blue lowest) and of 32
// (blue, green, red and a byte more) are drawn too.
enum class DibDepths : uint8_t { OfPictures, AllDrawn };

// Nothing for a header that isn't one of 40 bytes, in one plane of such a depth, not compressed and
// lowest row first, or whose rows are longer than 31 bits tell; nor for a colour use that isn't
// known.
std::optional<DibFormat> ReadDibFormat(const BITMAPINFO* info, uint32_t use,
                                       DibDepths depths = DibDepths::OfPictures);

// Pixels of 16 or 32 bits as pixels of 24.
void MakeTrueColor(const uint8_t* from, uint32_t fromBits, uint8_t* to, uint32_t width);

// The colour table behind the header of such a DIB; entries of a null `palette` are black.
PixelFormat ReadDibColors(const BITMAPINFO* info, const DibFormat& dib, uint32_t use,
                          const Palette* palette);

// Bytes of a stored row, for a width above 0.
uint64_t DibStride(int32_t width, uint32_t bits);

}  // namespace vellim
