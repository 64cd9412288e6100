#include "platform/graphics/glyph_picture.h"

#include <algorithm>

#include "platform/graphics/bit_rows.h"

namespace vellim {

GlyphPicture BlankPicture(int32_t width, int32_t height, Shades shades) {
    constexpr size_t byteBits = 8;
    const auto columns = static_cast<size_t>(width);
    GlyphPicture picture;
    picture.width = width;
    picture.height = height;
    picture.stride = shades == Shades::Two ? (columns + byteBits - 1) / byteBits : columns;
    picture.rows.resize(picture.stride * static_cast<size_t>(height));
    return picture;
}

void InkPixels(GlyphPicture& picture, Shades shades, int32_t y, int32_t first, int32_t count) {
    constexpr uint32_t fullInk = 0xFF;
    const uint32_t bits = shades == Shades::Two ? 1 : 8;
    const uint32_t ink = shades == Shades::Two ? 1 : fullInk;
    FillPixels(picture.Row(y), bits, static_cast<size_t>(first), static_cast<size_t>(count), ink);
}

GlyphPicture BoxPicture(int32_t cellWidth, int32_t height, Shades shades) {
    constexpr int32_t partsOfStroke = 16;  // of the height
    const int32_t margin = cellWidth / 8;
    const int32_t width = std::max(cellWidth - 2 * margin, 1);
    const int32_t stroke = std::min(height / partsOfStroke + 1, width);
    GlyphPicture picture = BlankPicture(width, height, shades);
    picture.left = margin;
    picture.top = -height;
    for (int32_t y = 0; y < height; y++) {
        const bool isSide = y >= stroke && y < height - stroke;
        InkPixels(picture, shades, y, 0, isSide ? stroke : width);
        if (isSide) InkPixels(picture, shades, y, width - stroke, stroke);
    }
    return picture;
}

}  // namespace vellim
