#include "platform/graphics/built_in_face.h"

#include "platform/graphics/builtin_font.h"

namespace vellim {
namespace {

constexpr uint32_t kLeftmost = 1U << (kBuiltInWidth - 1);

// Which of `count` source pixels the middle of pixel `i` of `drawn` lies in.
int32_t SourceOf(int32_t i, int32_t drawn, int32_t count) {
    return static_cast<int32_t>((int64_t{2} * i + 1) * count / (int64_t{2} * drawn));
}

// The first pixel of `drawn` whose middle lies in source pixel `i`, or behind it.
int32_t FirstOf(int32_t i, int32_t drawn, int32_t count) {
    return static_cast<int32_t>((int64_t{2} * i * drawn + count - 1) / (int64_t{2} * count));
}

// How far to the right `rows` rows of the cell lean: a column of the source for every four.
int32_t LeanOf(int32_t rows, const BuiltInStyle& style) {
    constexpr int64_t rowsForOne = 4;
    const int64_t columns = int64_t{rows} * kBuiltInHeight * style.cellWidth /
                            (rowsForOne * style.cellHeight * kBuiltInWidth);
    return style.isSlanted ? static_cast<int32_t>(columns) : 0;
}

}  // namespace

int32_t AscentOfBuiltIn(int32_t cellHeight) {
    return FirstOf(kBuiltInAscent, cellHeight, kBuiltInHeight);
}

// A cell's last column is blank, so that weight has room in it.
GlyphPicture DrawBuiltIn(uint8_t windows1252, const BuiltInStyle& style, Shades shades) {
    const BuiltInGlyph glyph = GlyphOfBuiltInFont(windows1252);
    const int32_t ascent = AscentOfBuiltIn(style.cellHeight), lowest = style.cellHeight - 1;
    GlyphPicture picture =
        BlankPicture(style.cellWidth + LeanOf(lowest, style), style.cellHeight, shades);
    picture.left = -LeanOf(style.cellHeight - ascent, style);
    picture.top = -ascent;
    for (int32_t y = 0; y < style.cellHeight; y++) {
        const auto row = static_cast<size_t>(SourceOf(y, style.cellHeight, kBuiltInHeight));
        const uint32_t thin = glyph.rows[row];
        const uint32_t bits = style.isBold ? thin | thin >> 1U : thin;
        const int32_t moved = LeanOf(lowest - y, style);
        for (int32_t column = 0; column < kBuiltInWidth; column++) {
            if ((bits & kLeftmost >> static_cast<uint32_t>(column)) == 0) continue;
            const int32_t first = FirstOf(column, style.cellWidth, kBuiltInWidth);
            const int32_t end = FirstOf(column + 1, style.cellWidth, kBuiltInWidth);
            if (first < end) InkPixels(picture, shades, y, first + moved, end - first);
        }
    }
    return picture;
}

}  // namespace vellim
