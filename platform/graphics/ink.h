// Pictures of letters put on a surface.
#pragma once

#include <cstdint>

#include "platform/graphics/glyph_picture.h"
#include "platform/graphics/surface.h"

namespace vellim {

// What surfaces of this depth show of a letter.
Shades ShadesOn(uint32_t bits);

struct PlacedPicture {
    const GlyphPicture* picture;
    int64_t left;  // of its first column, on the surface
    int64_t top;
};

// Draws the part of a picture that lies in `part`, which lies on the surface and in the picture.
// `pixel` is that of full ink; what has less is mixed with what is there.
void DrawInk(const Surface& surface, const RECT& part, const PlacedPicture& placed, uint32_t pixel);

}  // namespace vellim
