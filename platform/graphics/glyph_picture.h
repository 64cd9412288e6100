// The picture of a letter.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vellim {

// Ink or none, in bits, the leftmost in the high one; or how much of it, in bytes.
enum class Shades : uint8_t { Two, All };
inline constexpr size_t kShadesCount = 2;

struct GlyphPicture {
    int32_t left = 0;  // of the first column, counted from the pen
    int32_t top = 0;   // of the first row, counted down from the baseline
    int32_t width = 0;
    int32_t height = 0;
    size_t stride = 0;
    std::vector<uint8_t> rows;

    [[nodiscard]] const uint8_t* Row(int32_t y) const {
        return rows.data() + static_cast<size_t>(y) * stride;
    }
    [[nodiscard]] uint8_t* Row(int32_t y) { return rows.data() + static_cast<size_t>(y) * stride; }
};

// An empty picture of these columns and rows.
GlyphPicture BlankPicture(int32_t width, int32_t height, Shades shades);

// A hollow box that stands on the baseline in a cell of this width.
GlyphPicture BoxPicture(int32_t cellWidth, int32_t height, Shades shades);

// Sets `count` pixels of a row of a picture.
void InkPixels(GlyphPicture& picture, Shades shades, int32_t y, int32_t first, int32_t count);

}  // namespace vellim
