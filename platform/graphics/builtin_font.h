// A font that is always there: our own bitmaps of all characters of Windows-1252, in cells of one
// size. Text is drawn with it where the machine has no font.
#pragma once

#include <array>
#include <cstdint>

namespace vellim {

inline constexpr int32_t kBuiltInWidth = 8, kBuiltInHeight = 16, kBuiltInAscent = 12;

struct BuiltInGlyph {
    std::array<uint8_t, 16> rows;  // top row first, the leftmost pixel in the high bit
};

// Blank below 32; a hollow box for a byte that is no character.
BuiltInGlyph GlyphOfBuiltInFont(uint8_t windows1252);

}  // namespace vellim
