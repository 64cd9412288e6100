// The library's own font at any size: its pixels drawn out to cells of another.
#pragma once

#include <cstdint>

#include "platform/graphics/glyph_picture.h"

namespace vellim {

struct BuiltInStyle {
    int32_t cellWidth = 8;
    int32_t cellHeight = 16;
    bool isBold = false;
    bool isSlanted = false;
};

// Rows of a cell of this height that are above the baseline.
int32_t AscentOfBuiltIn(int32_t cellHeight);

GlyphPicture DrawBuiltIn(uint8_t windows1252, const BuiltInStyle& style, Shades shades);

}  // namespace vellim
