// Bitmaps, palettes and brushes as objects, and the colours that displays of each depth show.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <set>

#include "platform/graphics/display.h"
#include "platform/graphics/graphics_objects.h"
#include "support/test_files.h"

namespace {

using vellim::test::Bytes;

TEST(GraphicsObjects, BitmapsTellTheirSizeAndHoldWhatFits) {
    constexpr int32_t most = 0x7FFFFFFF;
    const struct {
        int32_t width, height;
        uint32_t planes, bits;
        int32_t stride;  // 0: refused
    } cases[] = {{17, 3, 1, 1, 4}, {3, 2, 1, 24, 10},        {3, 2, 4, 1, 2},
                 {5, 1, 1, 8, 6},  {0, 3, 1, 1, 0},          {3, -1, 1, 1, 0},
                 {3, 3, 1, 2, 0},  {3, 3, 0x80000001, 8, 0}, {65536, 32768, 1, 8, 0}};
    for (const auto& c : cases) {
        const BitmapHandle bitmap = CreateBitmap(c.width, c.height, c.planes, c.bits, nullptr);
        BITMAP record{};
        EXPECT_EQ(GetObjectA(bitmap, sizeof record, &record), c.stride ? int(sizeof record) : 0);
        EXPECT_EQ(record.bmWidthBytes, c.stride);
        if (c.stride == 0) continue;
        EXPECT_EQ(record.bmWidth * record.bmHeight, c.width * c.height);
        EXPECT_EQ(record.bmPlanes * record.bmBitsPixel, int(c.planes * c.bits));
        EXPECT_EQ(GetObjectA(bitmap, 0, nullptr) + GetObjectA(bitmap, 8, &record),
                  int(sizeof record) + 8);
        Bytes pattern = vellim::test::Counted(size_t(c.stride) * size_t(c.height)),
              got(pattern.size());
        EXPECT_EQ(SetBitmapBits(bitmap, 0xFFFFFFFF, pattern.data()), c.stride * c.height);
        pattern[0] = 99;
        EXPECT_EQ(SetBitmapBits(bitmap, 1, pattern.data()), 1);
        EXPECT_EQ(GetBitmapBits(bitmap, most, got.data()), c.stride * c.height);
        EXPECT_EQ(got, pattern);
        EXPECT_EQ(GetBitmapBits(bitmap, -1, got.data()), 0);
        EXPECT_EQ(DeleteObject(bitmap) + DeleteObject(bitmap), 1);
        EXPECT_EQ(GetBitmapBits(bitmap, 1, got.data()) + GetObjectA(bitmap, 0, nullptr), 0);
    }
    for (const auto system : {vellim::DefaultBitmap(), vellim::WhiteBrush()})
        EXPECT_EQ(DeleteObject(system), 0);
}

TEST(GraphicsObjects, PalettesAreReadSelectedAndRefused) {
    struct {
        LOGPALETTE log{0x300, 3, {{1, 2, 3, 0}}};
        PALETTEENTRY more[2] = {{4, 5, 6, 0}, {7, 8, 9, 0}};
    } three;
    const PaletteHandle palette = CreatePalette(&three.log);
    PALETTEENTRY got[3] = {};
    EXPECT_EQ(GetPaletteEntries(palette, 0, 0, nullptr), 3U);
    EXPECT_EQ(GetPaletteEntries(palette, 1, 0xFFFFFFFF, got), 2U);
    EXPECT_EQ(vellim::ColorOf(got[1]), 0x090807U);
    EXPECT_EQ(GetPaletteEntries(palette, 3, 1, got), 0U);
    uint16_t count = 0;
    EXPECT_TRUE(GetObjectA(palette, 100, &count) == 2 && count == 3);

    const DeviceContextHandle context = GetDC(0);
    const BrushHandle brush = CreateSolidBrush(5);
    EXPECT_EQ(SelectPalette(context, brush, 0) + SelectPalette(brush, palette, 0), 0U);
    const PaletteHandle before = SelectPalette(context, palette, 0);
    EXPECT_EQ(before, vellim::DefaultPalette());
    EXPECT_EQ(RealizePalette(context), 3U);
    EXPECT_EQ(GetNearestColor(context, 0x01000001), 0x060504U);
    EXPECT_EQ(GetNearestColor(context, 0x01000003), 0U);
    EXPECT_EQ(GetNearestColor(context, 0xFFFFFFFF), 0xFFFFFFFFU);
    EXPECT_EQ(DeleteObject(palette) + DeleteObject(brush), 2);
    EXPECT_EQ(SelectPalette(context, palette, 0), 0U) << "stale";
    EXPECT_EQ(SelectPalette(context, before, 0), palette);
    for (const LOGPALETTE& bad : {LOGPALETTE{0x300, 0, {}}, LOGPALETTE{0x100, 1, {}}})
        EXPECT_EQ(CreatePalette(&bad), 0U);
    ReleaseDC(0, context);
}

TEST(Display, ShowsTheNearestOfItsColours) {
    std::array<PALETTEENTRY, 256> greens{};
    for (size_t i = 0; i < 256; i++)
        greens[i] = {0, uint8_t(i), 0, 0};
    const DeviceContextHandle context = GetDC(0);
    const struct {
        int32_t depth;
        const PALETTEENTRY* palette;
        ColorRef asked, shown;
    } cases[] = {{24, nullptr, 0x123456, 0x123456},  {1, nullptr, 0x8000FF, 0xFFFFFF},
                 {1, nullptr, 0x80007F, 0},          {8, nullptr, 0x0101C1, 0x0000CC},
                 {8, nullptr, 0xA4A0A0, 0xA4A0A0},   {8, nullptr, 0x373232, 0x333333},
                 {8, greens.data(), 0x3211, 0x3200}, {8, greens.data(), 0xFFFFFF, 0xFF00}};
    for (const auto& c : cases) {
        const DisplaySettings display = {96, 96, c.depth};
        SetDisplay(&display);
        EXPECT_EQ(SetDisplayPalette(c.palette), 1);
        EXPECT_EQ(GetNearestColor(context, c.asked), c.shown) << std::hex << c.asked;
        EXPECT_EQ(GetSystemPaletteEntries(context, 0, 0, nullptr), c.depth == 8 ? 256U : 0U);
    }
    SetDisplay(nullptr);
    SetDisplayPalette(nullptr);
    ReleaseDC(0, context);
}

// Tables of 2, 16 or 256 colours by number lose nothing of pictures of 1, 4 or 8 bits, whatever the
// display's palette.
TEST(Display, NumbersAllColoursThatBitmapsHave) {
    std::array<PALETTEENTRY, 256> greens{};
    for (uint32_t i = 0; i < 256; i++)
        greens[i].peGreen = static_cast<uint8_t>(255 - i);
    SetDisplayPalette(greens.data());
    for (const uint32_t bits : {1U, 4U, 8U}) {
        std::set<ColorRef> numbered, shown;
        for (uint32_t i = 0; i < 1U << bits; i++) {
            numbered.insert(vellim::DisplayColor(i, size_t{1} << bits));
            shown.insert(vellim::ColorOfPixel(bits, i));
        }
        EXPECT_EQ(numbered, shown) << bits;
    }
    SetDisplayPalette(nullptr);
}

}  // namespace
