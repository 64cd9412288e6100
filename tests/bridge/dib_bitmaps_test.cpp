// Palettes of DIBs and of displays, and pixels on their way between DIBs and device bitmaps.
#include "bridge/dib_bitmaps.h"

#include <gtest/gtest.h>

#include "bridge/dib_palettes.h"
#include "platform/graphics/display.h"
#include "support/shown_colors.h"

namespace vellim::test {
namespace {

uint32_t Entry(PaletteHandle palette, uint32_t index) {
    PALETTEENTRY entry = {1, 2, 3, 4};  // no colour of the palettes below
    GetPaletteEntries(palette, index, 1, &entry);
    return ColorOf(entry) | uint32_t{entry.peFlags} << 24U;
}

TEST(DibPalettes, FollowTheTable) {
    constexpr uint32_t none = 0x04030201;
    uint32_t dib[13] = {40, 1, 1, 0, 0, 0, 0, 0, 0, 0, 0x09332211, 0, 0x09FFFF01};
    auto* header = reinterpret_cast<BITMAPINFOHEADER*>(dib);
    const struct {
        uint32_t headerBytes, depth, used, block, index, color;
    } cases[] = {{40, 8, 3, 52, 0, 0x112233},   {40, 24, 3, 52, 2, 0x01FFFF},
                 {40, 8, 3, 52, 3, none},       {40, 8, 3, 51, 0, none},
                 {12, 8, 3, 52, 0, none},       {40, 16, 0, 52, 0, none},
                 {40, 24, 0, 40, 1, 0x20},      {40, 24, 0, 40, 8, 0x2000},
                 {40, 24, 0, 40, 64, 0x400000}, {40, 24, 0, 40, 254, 0xC0E0C0},
                 {40, 24, 0, 40, 255, 0xFFFFFF}};
    for (const auto& c : cases) {
        header->biSize = c.headerBytes, header->biClrUsed = c.used;
        header->biBitCount = static_cast<uint16_t>(c.depth);
        const OwnedObject palette(CreatePaletteFromHeader(header, c.block));
        EXPECT_EQ(Entry(palette.Get(), c.index), c.color) << c.depth << " bits, " << c.block;
    }
    // The table of a 16-colour header, filled from palettes of ever more entries.
    for (const uint16_t count : std::initializer_list<uint16_t>{0, 3, 17}) {
        uint32_t log[18] = {0x300U | uint32_t{count} << 16U, 0, 0, 0x00112233}, filled[26] = {};
        header = reinterpret_cast<BITMAPINFOHEADER*>(filled);
        InitDibHeader(header, 1, 1, 4);
        const OwnedObject colors(CreatePalette(reinterpret_cast<const LOGPALETTE*>(log)));
        EXPECT_EQ(FillDibColorTable(colors.Get(), header, 51), 1);
        EXPECT_EQ(filled[12], 0U) << "has no room";
        EXPECT_EQ(FillDibColorTable(colors.Get(), header, sizeof filled), 1);
        EXPECT_EQ(filled[12], count == 3 ? 0x332211U : 0x008000U) << count;
        EXPECT_EQ(filled[25], count == 3 ? 0U : 0xFFFFFFU) << count;
    }
}

TEST(DibBitmaps, KeepWhatTheDisplayCanShow) {
    const std::vector<uint32_t> live = Live();
    for (const int32_t display : {1, 8, 24}) {
        SetDisplayDepth(display);
        EXPECT_EQ(OwnedObject(CreateSystemPalette()).Get() != 0, display == 8);
        for (const uint16_t bits : std::initializer_list<uint16_t>{1, 4, 8, 24}) {
            const OwnedBlock dib = MakeDib(13, 5, bits, false);
            const OwnedObject bitmap(DibToBitmap(dib.Get()));
            const OwnedBlock back(BitmapToDib(bitmap.Get(), 0));
            ASSERT_TRUE(back);
            EXPECT_EQ(ColorsOf(back.Get()), Shown(ColorsOf(dib.Get()))) << bits << ", " << display;
            const uint32_t depth = bits == 1 ? 1 : static_cast<uint32_t>(display);
            const uint32_t table = depth == 24 ? 0 : 4U << depth;
            EXPECT_EQ(GlobalSize(back.Get()), 5 * ((13 * depth + 31) / 32 * 4) + table + 50);
            GlobalReAlloc(dib.Get(), GlobalSize(dib.Get()) - 1, 0);
            EXPECT_EQ(DibToBitmap(dib.Get()), 0U) << "ends before its last row does";
        }
    }
    {
        const OwnedObject black(CreateBitmap(2, 2, 1, 8, nullptr)), mono(CreateMonoPalette());
        const OwnedBlock dib(BitmapToDib(black.Get(), mono.Get()));
        EXPECT_EQ(Entry(OwnedObject(CreateDibPalette(dib.Get())).Get(), 0), 0xFFFFFFU);
        EXPECT_EQ(ColorsOf(dib.Get()), Colors(4));
        EXPECT_EQ(BitmapToDib(mono.Get(), 0) + BitmapToDib(0, 0) + DibToBitmap(0), 0U);
    }
    EXPECT_EQ(Live(), live) << "something was kept";
    SetDisplay(nullptr);
}

}  // namespace
}  // namespace vellim::test
