// Loading a stored image as a device bitmap: the same picture as the DIB is, what survives damage,
// what is left behind.
#include <gtest/gtest.h>

#include "support/shown_colors.h"
#include "support/stored_tiff.h"
#include "support/test_files.h"
#include "vellim/vellim.h"

namespace vellim::test {
namespace {

// Of a line of 24 bits a pixel that is longer than 65,535 bytes, red and blue change places in as
// many pixels as the low 16 bits of its length tell, and stay where they were in those behind.
Colors AsBitmapsShow(Colors colors, uint32_t width) {
    const uint32_t lineBytes = (width * 24 + 15) / 16 * 2;
    if (lineBytes <= 0xFFFF) return colors;
    for (size_t i = 0; i < colors.size(); i++) {
        const ColorRef color = colors[i];
        if (i % width >= lineBytes % 0x10000 / 3)
            colors[i] = color >> 16U | (color & 0xFF00U) | (color & 0xFFU) << 16U;
    }
    return colors;
}

// Of one strip of bytes that tell their place.
ImageSpec Image(uint32_t width, uint16_t bits, uint16_t samples, uint16_t photometric,
                size_t lines = 9) {
    const Bytes strip = Counted((width * bits * samples + 7) / 8 * lines);
    return SimpleImage(width, 9, bits, samples, 1, photometric, 9, {strip});
}

TEST(LoadBitmap, ShowsThePictureOfTheDibOrLeavesACode) {
    const Bytes group4 = {0xE0, 0x02, 0x00, 0x20};  // V0 three times, EOFB
    const struct {
        ImageSpec image;
        int32_t code;
        bool isLoaded, hasPalette;
    } cases[] = {
        {Image(17, 1, 1, 0), TIFF_SUCCESS, true, false},
        {Image(5, 4, 1, 1), TIFF_SUCCESS, true, true},
        {Image(22001, 8, 3, 2), TIFF_SUCCESS, true, true},
        {Image(3001, 8, 1, 1, 4), TIFF_UNEXPECTED_END, true, true},
        {SimpleImage(8, 9, 1, 1, 4, 1, 9, {group4}), TIFF_UNEXPECTED_EOFB, false, false},
        {SimpleImage(1U << 20U, 1U << 24U, 8, 1, 1, 1, 9, {}), TIFF_NO_MEMORY, false, true}};
    const std::vector<uint32_t> live = Live();
    for (const auto& c : cases) {
        const std::string path = FileOf(BuildTiff({c.image}), "image.tif");
        for (const int32_t display : {1, 8, 24}) {
            SetDisplayDepth(display);
            const OwnedObject palette(GetTiffImagePalette(path.c_str(), 0));
            EXPECT_EQ(bool{palette}, c.hasPalette);
            const OwnedObject bitmap(LoadTiffIntoBitmap(path.c_str(), 0, 0));
            EXPECT_EQ(TiffError(), c.code);
            ASSERT_EQ(bool{bitmap}, c.isLoaded) << c.code;
            if (!bitmap) continue;
            const OwnedBlock dib(LoadTiffIntoDIB(path.c_str(), 0, 0));
            const OwnedBlock back(BitmapToDib(bitmap.Get(), 0));
            const auto width = static_cast<uint32_t>(Element(c.image.tags[0], 0));
            const Colors colors = AsBitmapsShow(ColorsOf(dib.Get()), width);
            EXPECT_TRUE(ColorsOf(back.Get()) == Shown(colors)) << display << ", " << width;
            EXPECT_EQ(LoadTiffIntoBitmap(path.c_str(), 0, 1), 0U);
            EXPECT_EQ(TiffError(), TIFF_NO_MEMORY) << "no dialog can be run";
            EXPECT_EQ(LoadTiffIntoBitmap(path.c_str(), 1, 0), 0U);
            EXPECT_EQ(TiffError(), TIFF_BAD_INDEX);
        }
    }
    EXPECT_EQ(LoadTiffChainIntoBitmap(0, 0) + GetTiffImagePalette(nullptr, 0), 0U);
    EXPECT_EQ(Live(), live) << "something was kept";
    SetDisplay(nullptr);
}

// A line that has no row in the image, or whose description is no whole one, changes nothing.
TEST(BitmapLines, LandInTheirRowAlone) {
    const ScopedContext display(ScopedContext::Kind::Display);
    const OwnedObject bitmap(CreateBitmap(2, 3, 1, 24, nullptr));
    for (const uint32_t size : {40U, 39U}) {
        const OwnedBlock description = MakeDib(2, 3, 24);
        GlobalReAlloc(description.Get(), size, 0);
        LoadLineContext context{display.Get(), bitmap.Get(), description.Get(), nullptr, 0, 7, 1};
        for (const uint32_t number : {2U, 3U, 0xFFFFFFFFU}) {
            Bytes line = {1, 2, 3, 4, 5, static_cast<uint8_t>(size), 7};
            DllFlushTiffLine24(line.data(), number, reinterpret_cast<uintptr_t>(&context));
        }
        const OwnedBlock dib(BitmapToDib(bitmap.Get(), 0));
        EXPECT_EQ(ColorsOf(dib.Get()), (Colors{0x030201, 0x280504, 0, 0, 0, 0}));
    }
}

}  // namespace
}  // namespace vellim::test
