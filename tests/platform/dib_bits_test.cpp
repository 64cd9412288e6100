// Rows of DIBs put into bitmaps and taken out of them, against a model that works bit by bit.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <random>

#include "platform/graphics/display.h"
#include "support/test_files.h"
#include "vellim/graphics.h"

namespace {

using vellim::test::Bytes;

// Of 24 bits, read highest bit first, a pixel's blue, green and red are a ColorRef.
struct Format {
    uint32_t bits;
    std::vector<ColorRef> colors;
};

uint32_t Get(const uint8_t* row, uint32_t bits, size_t x) {
    uint32_t pixel = 0;
    for (size_t bit = x * bits; bit < (x + 1) * bits; bit++)
        pixel = pixel << 1 | (row[bit / 8] >> (7 - bit % 8) & 1);
    return pixel;
}

void Put(uint8_t* row, uint32_t bits, size_t x, uint32_t pixel) {
    for (size_t bit = (x + 1) * bits; bit-- > x * bits; pixel >>= 1) {
        const int mask = 0x80 >> bit % 8;
        row[bit / 8] = uint8_t((row[bit / 8] & ~mask) | ((pixel & 1) != 0 ? mask : 0));
    }
}

int Distance(ColorRef a, ColorRef b) {
    const auto square = [=](int shift) {
        const int difference = int(a >> shift & 255) - int(b >> shift & 255);
        return difference * difference;
    };
    return square(0) + square(8) + square(16);
}

uint32_t Converted(uint32_t pixel, const Format& from, const Format& to) {
    ColorRef color = pixel;
    if (from.bits < 24) color = pixel < from.colors.size() ? from.colors[pixel] : 0;
    if (to.bits == 24) return color;
    if (from.bits < 24 && pixel < to.colors.size() && to.colors[pixel] == color) return pixel;
    const auto nearer = [color](auto a, auto b) { return Distance(a, color) < Distance(b, color); };
    return uint32_t(std::ranges::min_element(to.colors, nearer) - to.colors.begin());
}

Format FormatOf(uint32_t bits) {
    Format format{bits, {}};
    const auto palette = vellim::DisplayPalette();
    for (uint32_t i = 0; bits < 24 && i < 1U << bits; i++)
        format.colors.push_back(
            bits == 1 ? 0xFFFFFF * i
                      : vellim::ColorOf(bits == 4 ? vellim::kSystemColors[i] : palette[i]));
    return format;
}

class DibBits : public testing::Test {
  protected:
    DibBits() { SetDisplay(&kPalettes); }
    ~DibBits() override { ReleaseDC(0, context) && SetDisplay(nullptr); }

    uint32_t Below(uint32_t limit) { return uint32_t(random() % limit); }
    Bytes Noise(size_t count) {
        Bytes bytes(count);
        std::ranges::generate(bytes, [this] { return uint8_t(random()); });
        return bytes;
    }

    // A palette of 20 entries, every third of them explicit, and the colours that it stands for,
    // with some beyond the last one.
    std::vector<ColorRef> SelectNewPalette() {
        std::array<uint32_t, 21> words = {0x300 | 20 << 16};
        std::vector<ColorRef> colors(25);
        for (size_t i = 0; i < 20; i++) {
            const uint32_t index = Below(512), color = Below(1U << 24);
            words[i + 1] = i % 3 == 0 ? index | PC_EXPLICIT << 24 : color;
            if (i % 3 != 0) colors[i] = color;
            if (i % 3 == 0 && index < 256) colors[i] = FormatOf(8).colors[index];
        }
        alignas(LOGPALETTE) uint8_t log[sizeof words];
        std::memcpy(log, &words, sizeof words);
        const PaletteHandle palette = CreatePalette(reinterpret_cast<LOGPALETTE*>(log));
        SelectPalette(context, palette, 0);
        EXPECT_EQ(DeleteObject(palette), 1) << "it lives on in the context";
        return colors;
    }

    enum Table : uint32_t { kOwn, kEntries, kNoise, kFiveOfNoise };

    // Header and colour table of a DIB; `format` gets the colours.
    Bytes Info(uint32_t width, uint32_t height, uint32_t table, Format& format) {
        const uint32_t all = format.bits < 24 ? 1U << format.bits : 0;
        const uint32_t count = table == kFiveOfNoise ? std::min(all, 5U) : all;
        const BITMAPINFOHEADER header = {
            40, int(width), int(height), 1, uint16_t(format.bits), 0, 0, 0, 0, count % 16, 0};
        const auto palette = SelectNewPalette();
        Bytes info(40 + size_t{count} * (table == kEntries ? 2 : 4));
        std::memcpy(info.data(), &header, 40);
        format.colors.resize(count);
        for (uint32_t i = 0; i < count; i++) {
            const uint32_t index = Below(25);
            if (table != kOwn) format.colors[i] = Below(1U << 24);
            if (table == kEntries) format.colors[i] = palette[index];
            if (table == kEntries) std::memcpy(&info[40 + 2 * i], &index, 2);
            if (table != kEntries) Put(&info[40 + 4 * i], 24, 0, format.colors[i]);
        }
        return info;
    }

    static constexpr DisplaySettings kPalettes = {96, 96, 8};
    DeviceContextHandle context = GetDC(0);
    std::mt19937 random{6};
};

TEST_F(DibBits, AllDepthsUsesAndClipsAsTheModelHasThem) {
    constexpr uint32_t depths[] = {1, 4, 8, 24};
    for (int round = 0; round < 1500; round++) {
        const Format surface = FormatOf(depths[round % 4]);
        Format dib = FormatOf(depths[round / 4 % 4]);
        const uint32_t table = Below(4), use = table == kEntries ? DIB_PAL_COLORS : DIB_RGB_COLORS;
        const uint32_t width = 1 + Below(40), height = 1 + Below(6);
        const uint32_t dibWidth = Below(2) != 0 ? width : 1 + Below(40), dibHeight = 1 + Below(6);
        const uint32_t start = Below(7), lines = Below(3) != 0 ? Below(7) : 0xFFFFFFFF - Below(2);
        Bytes info = Info(dibWidth, dibHeight, table, dib);
        auto* const head = reinterpret_cast<BITMAPINFO*>(info.data());

        const uint32_t common = std::min(height, dibHeight);
        const uint32_t rows = start < common ? std::min(lines, common - start) : 0;
        const uint32_t columns = std::min(width, dibWidth);
        const size_t stride = (size_t{dibWidth} * dib.bits + 31) / 32 * 4;
        const size_t surfaceStride = (size_t{width} * surface.bits + 15) / 16 * 2;
        Bytes pixels = Noise(surfaceStride * height), bits = Noise(stride * rows);
        bits.reserve(1);  // an address, where there are no rows
        const BitmapHandle bitmap =
            CreateBitmap(int32_t(width), int32_t(height), 1, surface.bits, pixels.data());
        const auto rowOf = [&](uint32_t row) {
            return &pixels[(height - 1 - start - row) * surfaceStride];
        };

        ASSERT_EQ(SetDIBits(context, bitmap, start, lines, bits.data(), head, use), int(rows));
        for (uint32_t row = 0; row < rows; row++)
            for (uint32_t x = 0; x < columns; x++)
                Put(rowOf(row), surface.bits, x,
                    Converted(Get(&bits[row * stride], dib.bits, x), dib, surface));
        Bytes got(pixels.size());
        GetBitmapBits(bitmap, int32_t(got.size()), got.data());
        ASSERT_EQ(got, pixels) << dib.bits << " to " << surface.bits;

        pixels = Noise(pixels.size());
        SetBitmapBits(bitmap, uint32_t(pixels.size()), pixels.data());
        Bytes expected = Noise(bits.size());
        bits = expected;
        ASSERT_EQ(GetDIBits(context, bitmap, start, lines, bits.data(), head, use), int(rows));
        for (uint32_t row = 0; row < rows; row++) {
            uint8_t* to = &expected[row * stride];
            for (uint32_t x = 0; x < columns; x++)
                Put(to, dib.bits, x, Converted(Get(rowOf(row), surface.bits, x), surface, dib));
            const uint32_t used = dibWidth * dib.bits;
            for (uint32_t bit = used; columns == dibWidth && bit % 8 != 0; bit++)
                Put(to, 1, bit, 0);
        }
        ASSERT_EQ(bits, expected) << surface.bits << " to " << dib.bits;
        DeleteObject(bitmap);
    }
}

TEST_F(DibBits, RefusesHeadersAndHandlesThatAreNone) {
    const BITMAPINFOHEADER good = {40, 8, 2, 1, 1, 0, 0, 0, 0, 0, 0};
    const BITMAPINFOHEADER bad[] = {
        {12, 8, 2, 1, 1, 0, 0, 0, 0, 0, 0},           {0xFFFFFFFF, 8, 2, 1, 1, 0, 0, 0, 0, 0, 0},
        {40, 8, 2, 1, 16, 0, 0, 0, 0, 0, 0},          {40, 8, 2, 1, 0, 0, 0, 0, 0, 0, 0},
        {40, 8, -2, 1, 1, 0, 0, 0, 0, 0, 0},          {40, 8, 0, 1, 1, 0, 0, 0, 0, 0, 0},
        {40, -8, 2, 1, 1, 0, 0, 0, 0, 0, 0},          {40, 8, 2, 1, 8, 1, 0, 0, 0, 0, 0},
        {40, 0x55555556, 2, 1, 24, 0, 0, 0, 0, 0, 0}, {40, 8, 2, 0, 1, 0, 0, 0, 0, 0, 0}};
    const BitmapHandle bitmap = CreateBitmap(8, 2, 1, 1, nullptr);
    Bytes rows(8, 0xFF), info(48);
    auto* head = reinterpret_cast<BITMAPINFO*>(info.data());
    const auto filled = [&](DeviceContextHandle dc, BitmapHandle to, uint32_t use) {
        const BitmapHandle made =
            CreateDIBitmap(dc, &good, CBM_INIT, rows.data(), head, to == bitmap ? use : 2);
        return SetDIBits(dc, to, 0, 2, rows.data(), head, use) +
               GetDIBits(dc, to, 0, 2, rows.data(), head, use) + DeleteObject(made);
    };
    for (const auto& header : bad) {
        std::memcpy(info.data(), &header, sizeof header);
        EXPECT_EQ(filled(context, bitmap, DIB_RGB_COLORS), 0) << &header - bad;
    }
    // A table that claims more than the depth addresses isn't read to its end.
    std::memcpy(info.data(), &good, sizeof good);
    head->bmiHeader.biClrUsed = 0xFFFFFFFF;
    EXPECT_EQ(filled(context, bitmap, DIB_RGB_COLORS), 2 + 2 + 1);
    EXPECT_EQ(filled(context, bitmap, 2) + filled(context, context, DIB_RGB_COLORS) +
                  filled(bitmap, bitmap, DIB_RGB_COLORS),
              0);

    head->bmiHeader = {40, 0, 0, 0, 0, 9, 9, 9, 9, 9, 9};
    EXPECT_EQ(GetDIBits(context, bitmap, 0, 0, nullptr, head, DIB_RGB_COLORS), 2);
    const BITMAPINFOHEADER told = {40, 8, 2, 1, 1, 0, 8, 0, 0, 0, 0};
    EXPECT_EQ(std::memcmp(info.data(), &told, sizeof told), 0);
    EXPECT_EQ(DeleteObject(bitmap), 1);
    EXPECT_EQ(filled(context, bitmap, DIB_RGB_COLORS), 1) << "of CreateDIBitmap alone";
}

}  // namespace
