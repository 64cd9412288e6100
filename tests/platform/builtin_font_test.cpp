// The built-in font: its cells, and letters with accents against those without.
#include "platform/graphics/builtin_font.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <string_view>

namespace {

using Rows = std::array<uint8_t, 16>;

Rows RowsOf(char code) {
    return vellim::GlyphOfBuiltInFont(static_cast<uint8_t>(code)).rows;
}

TEST(BuiltInFont, EachCharacterHasAPictureOfItsOwnInItsCell) {
    std::map<Rows, std::string> characters;
    for (int code = 0; code < 256; ++code) {
        const Rows rows = RowsOf(static_cast<char>(code));
        EXPECT_TRUE(std::ranges::none_of(rows, [](uint8_t row) { return row & 1U; })) << code;
        characters[rows] += static_cast<char>(code);
    }
    std::string blanks(33, ' ');
    for (char code = 0; code < 32; ++code)
        blanks[static_cast<size_t>(code)] = code;
    EXPECT_EQ(characters[Rows{}], blanks + '\xA0');
    EXPECT_EQ(characters[RowsOf('-')], "-\xAD");
    EXPECT_EQ(characters[RowsOf('\x7F')], "\x7F\x81\x8D\x8F\x90\x9D");
    EXPECT_EQ(characters.size(), 256 - 33 - 1 - 5) << "all others differ";
}

// A small letter keeps its rows below the mark; a capital is a row lower, and its mark two.
TEST(BuiltInFont, AccentsStandAboveTheirLetters) {
    const struct {
        std::string_view letters, accented;
    } marks[] = {{"AEIOUaeiou", "\xC0\xC8\xCC\xD2\xD9\xE0\xE8\xEC\xF2\xF9"},
                 {"AEIOUYaeiouy", "\xC1\xC9\xCD\xD3\xDA\xDD\xE1\xE9\xED\xF3\xFA\xFD"},
                 {"AEOUaeou", "\xC2\xCA\xD4\xDB\xE2\xEA\xF4\xFB"},
                 {"Ii", "\xCE\xEE"},
                 {"ANOano", "\xC3\xD1\xD5\xE3\xF1\xF5"},
                 {"AEOUaeouy", "\xC4\xCB\xD6\xDC\xE4\xEB\xF6\xFC\xFF"},
                 {"IYi", "\xCF\x9F\xEF"},
                 {"SZsz", "\x8A\x8E\x9A\x9E"}};
    for (const auto& [letters, accented] : marks) {
        const Rows top = RowsOf(accented.back());
        EXPECT_TRUE(top[2] != 0 && top[3] != 0 && top[4] == 0) << letters;
        for (size_t i = 0; i < letters.size(); ++i) {
            Rows expected = RowsOf(letters[i]);
            if (letters[i] >= 'a') {
                std::copy_n(top.begin(), 4, expected.begin());
            } else {
                std::copy_backward(&expected[1], &expected[9], &expected[10]);
                std::copy_n(&top[2], 2, expected.begin());
            }
            EXPECT_EQ(RowsOf(accented[i]), expected) << letters[i];
        }
    }
}

}  // namespace
