// Dimensions, colour tables, strips and resolution, asked of images defined tag by tag.

#include <gtest/gtest.h>

#include <tuple>

#include "container/opened_tiff.h"
#include "vellim/failures.h"
#include "vellim/queries.h"
#include "vellim/streams.h"
#include "vellim/tags.h"

namespace vellim::test {
namespace {

constexpr uint32_t kDisplayDpi = 96;

class ImageOf {
  public:
    explicit ImageOf(const std::vector<TagSpec>& tags) {
        DefineTiffImage(Handle());
        for (const TagSpec& tag : tags)
            DefineTiffImageInfoBuffer(Handle(), 0, tag.tag, tag.value.data(), tag.type, tag.count);
    }
    [[nodiscard]] TiffFileHandle Handle() const { return image_.Handle(); }

  private:
    NewImage image_;
};

std::vector<TagSpec> With(std::vector<TagSpec> tags, const std::vector<TagSpec>& more) {
    tags.insert(tags.end(), more.begin(), more.end());
    return tags;
}

const std::vector<TagSpec> kSized = {LongTag(256, {1728}), ShortTag(257, {2200})};

TEST(Dimensions, DecideWhatTheLibraryHandles) {
    const struct {
        const char* what;
        std::vector<TagSpec> tags;
        int32_t code;
        uint16_t bits;
        uint32_t colors;
    } cases[] = {
        {"defaults", kSized, 0, 1, 2},
        {"4 bits", With(kSized, {ShortTag(258, {4})}), 0, 4, 16},
        {"8 bits", With(kSized, {ShortTag(258, {8}), ShortTag(277, {1})}), 0, 8, 256},
        {"RGB", With(kSized, {ShortTag(258, {8, 8, 8}), ShortTag(277, {3})}), 0, 24, 0},
        {"depth as BYTE", With(kSized, {{258, 1, 1, {8}}}), 0, 8, 256},
        {"16-bit product", With(kSized, {ShortTag(258, {0x8001}), ShortTag(277, {8})}), 0, 8, 256},
        {"2 bits", With(kSized, {ShortTag(258, {2})}), 16, 2, 0},
        {"16 bits", With(kSized, {ShortTag(258, {16})}), 16, 16, 0},
        {"planes", With(kSized, {ShortTag(284, {2})}), 16, 0, 0},
        {"no planes", With(kSized, {ShortTag(284, {0})}), 16, 0, 0},
        {"no width", {kSized[1]}, 10, 0, 0},
        {"no height", {kSized[0]}, 10, 0, 0},
        {"width without elements", {{256, 3, 0, {}}, kSized[1]}, 10, 0, 0},
    };
    for (const auto& c : cases) {
        const ImageOf image(c.tags);
        TiffDimensions got = {};
        SetTiffError(TIFF_SUCCESS);
        EXPECT_EQ(GetTiffDimensions(image.Handle(), 0, &got), c.code) << c.what;
        if (c.code != 0) {
            EXPECT_EQ(TiffError(), c.code) << c.what;
            EXPECT_EQ(GetTiffRGBQuad(image.Handle(), 0), 0U) << c.what;
            continue;
        }
        EXPECT_EQ(got.biSize, 40U) << c.what;
        EXPECT_EQ(std::pair(got.biWidth, got.biHeight), std::pair(1728, 2200)) << c.what;
        EXPECT_EQ(got.biPlanes, 1) << c.what;
        EXPECT_EQ(got.biBitCount, c.bits) << c.what;
        EXPECT_EQ(got.biCompression + got.biSizeImage, 0U) << c.what;
        EXPECT_EQ(std::pair(got.biClrUsed, got.biClrImportant), std::pair(c.colors, c.colors));
    }
    const ImageOf unknownHeight({LongTag(256, {8}), LongTag(257, {0})});
    TiffDimensions got = {};
    EXPECT_EQ(GetTiffDimensions(unknownHeight.Handle(), 0, &got), 0);
    EXPECT_EQ(got.biHeight, 1000);
    EXPECT_EQ(GetTiffRowsPerStrip(unknownHeight.Handle(), 0), 1000U);
    EXPECT_EQ(GetTiffDimensions(unknownHeight.Handle(), 0, nullptr), TIFF_TAG_MISSING);
    EXPECT_EQ(GetTiffDimensions(unknownHeight.Handle(), 1000, &got), TIFF_TAG_MISSING);
}

TEST(Resolution, FollowsItsUnit) {
    const auto x = [](uint32_t n, uint32_t d) { return RationalTag(282, n, d); };
    const auto y = [](uint32_t n, uint32_t d) { return RationalTag(283, n, d); };
    const auto unit = [](uint16_t u) { return ShortTag(296, {u}); };
    const struct {
        std::vector<TagSpec> tags;
        int32_t pelsX, pelsY;
        uint32_t dpi;
    } cases[] = {
        {{x(204, 1), y(98, 1)}, 8031, 3858, 98U << 16 | 204},
        {{x(204, 1), y(98, 1), unit(1)}, 8031, 3858, 98U << 16 | 204},
        {{x(80, 1), y(385, 10), unit(3)}, 8000, 3850, 98U << 16 | 203},
        {{x(204, 1), y(98, 1), unit(4)}, 0, 0, 0},
        {{x(204, 1), y(98, 1), unit(0)}, 0, 0, 0},
        {{x(0, 0), y(300, 0)}, 0, 11811, 300U << 16},
        {{x(2999, 10), y(2994, 10)}, 11807, 11787, 299U << 16 | 300},
        {{x(UINT32_MAX, 1), y(65536, 1)}, INT32_MAX, 2580152, 65535U << 16 | 65535},
        {{y(200, 1)}, 3780, 7874, 200U << 16 | kDisplayDpi},
        {{ShortTag(282, {200}), AsciiTag(283, "200")}, 7874, 3780, kDisplayDpi << 16 | 200},
        {{}, 3780, 3780, kDisplayDpi << 16 | kDisplayDpi},
    };
    for (const auto& c : cases) {
        const ImageOf image(With(kSized, c.tags));
        TiffDimensions dimensions = {};
        uint32_t dpi = 0xEEEEEEEE;
        EXPECT_EQ(GetTiffDimensions(image.Handle(), 0, &dimensions), 0);
        EXPECT_EQ(dimensions.biXPelsPerMeter, c.pelsX) << c.dpi;
        EXPECT_EQ(dimensions.biYPelsPerMeter, c.pelsY) << c.dpi;
        EXPECT_EQ(GetTiffImageDPI(image.Handle(), 0, &dpi), 0);
        EXPECT_EQ(dpi, c.dpi);
    }
}

TEST(Resolution, IsTheDisplaysWhereTheImageHasNone) {
    const DisplaySettings coarse = {.DotsPerInchX = 72, .DotsPerInchY = 50, .BitsPerPixel = 24};
    ASSERT_EQ(SetDisplay(&coarse), 1);
    uint32_t dpi = 0;
    EXPECT_EQ(GetTiffImageDPI(0, 0, &dpi), 0) << "no file at all";
    SetDisplay(nullptr);
    EXPECT_EQ(dpi, 50U << 16 | 72U);
    EXPECT_EQ(GetTiffImageDPI(0, 0, nullptr), TIFF_TAG_MISSING);
}

TEST(Resolution, IsStoredInDotsPerInchAndTheUnitKept) {
    const ImageOf image(With(kSized, {ShortTag(296, {1})}));
    EXPECT_EQ(SetTiffImageDPI(image.Handle(), 0, 0x00C800CC), 0);
    uint32_t x[2] = {}, y[2] = {}, unit = 0, dpi = 0;
    EXPECT_EQ(GetTiffImageInfo(image.Handle(), 0, 282, x), 1);
    EXPECT_EQ(GetTiffImageInfo(image.Handle(), 0, 283, y), 1);
    EXPECT_EQ(GetTiffImageInfo(image.Handle(), 0, 296, &unit), 1);
    EXPECT_EQ(std::tuple(x[0], x[1], y[0], y[1], unit), std::tuple(204U, 1U, 200U, 1U, 1U));
    GetTiffImageDPI(image.Handle(), 0, &dpi);
    EXPECT_EQ(dpi, 0x00C800CCU);
    EXPECT_EQ(SetTiffImageDPI(image.Handle(), 1, 0x00C800CC), TIFF_TAG_MISSING);
    EXPECT_EQ(TiffError(), TIFF_TAG_MISSING);
}

TEST(Strips, HaveAtMostTheImagesLines) {
    const struct {
        std::vector<TagSpec> tags;
        uint32_t rows, strips;
    } cases[] = {
        {{}, 2200, 0},
        {{LongTag(278, {0}), LongTag(273, {8})}, 2200, 1},
        {{LongTag(278, {0xFFFFFFFF}), ShortTag(273, {8, 9, 10})}, 2200, 3},
        {{ShortTag(278, {2200})}, 2200, 0},
        {{ShortTag(278, {16})}, 16, 0},
    };
    for (const auto& c : cases) {
        const ImageOf image(With(kSized, c.tags));
        EXPECT_EQ(GetTiffRowsPerStrip(image.Handle(), 0), c.rows);
        EXPECT_EQ(GetTiffStripCount(image.Handle(), 0), c.strips);
    }
    const ImageOf image({LongTag(256, {8}), LongTag(278, {16})});
    EXPECT_EQ(GetTiffRowsPerStrip(image.Handle(), 0), 0U) << "no ImageLength";
}

std::vector<uint32_t> TableOf(TiffFileHandle file) {
    const OwnedBlock block(GetTiffRGBQuad(file, 0));
    const LockedBlock locked(block.Get());
    if (!locked) return {0xBADBAD};
    const auto* header = locked.As<TiffDimensions>();
    const auto* quads = locked.As<uint8_t>() + sizeof(TiffDimensions);
    EXPECT_EQ(locked.Size(), 40 + 4 * header->biClrUsed);
    std::vector<uint32_t> table;  // as 0xrrggbb
    for (uint32_t i = 0; i < header->biClrUsed; i++, quads += 4)
        table.push_back(quads[0] + 256U * quads[1] + 65536U * quads[2] + 16777216U * quads[3]);
    return table;
}

// Photometric -1: no tag.
std::vector<uint32_t> TableOf(uint16_t bits, int photometric, const std::vector<TagSpec>& more) {
    std::vector<TagSpec> tags = With(kSized, more);
    tags.push_back(ShortTag(258, {bits}));
    if (photometric >= 0) tags.push_back(ShortTag(262, {static_cast<uint16_t>(photometric)}));
    return TableOf(ImageOf(tags).Handle());
}

std::vector<uint32_t> Greys(size_t count, int first, int step) {
    std::vector<uint32_t> greys;
    for (size_t i = 0; i < count; i++)
        greys.push_back(static_cast<uint32_t>(first + static_cast<int>(i) * step) * 0x010101U);
    return greys;
}

TEST(ColorTable, FollowsPhotometricAndDepth) {
    const std::vector<uint32_t> whiteBlack = {0xFFFFFF, 0}, blackWhite = {0, 0xFFFFFF};
    std::vector<uint32_t> descending16 = Greys(16, 256, -16), descending256 = Greys(256, 256, -1);
    descending16[0] = descending256[0] = 0xFFFFFF;
    const TagSpec anyMap = ShortTag(320, {0x1100, 0x2200, 0x3300});
    const struct {
        uint16_t bits;
        int photometric;
        std::vector<TagSpec> more;
        std::vector<uint32_t> table;
    } cases[] = {
        {1, 0, {}, whiteBlack},       {1, 1, {}, blackWhite},       {1, 2, {}, {0, 0}},
        {1, 3, {anyMap}, whiteBlack}, {1, 4, {}, whiteBlack},       {1, 5, {}, whiteBlack},
        {1, -1, {}, whiteBlack},      {4, 0, {}, descending16},     {4, 1, {}, Greys(16, 0, 16)},
        {4, 2, {}, Greys(16, 0, 0)},  {4, 4, {}, descending16},     {4, -1, {}, Greys(16, 0, 0)},
        {8, 0, {}, descending256},    {8, 1, {}, Greys(256, 0, 1)}, {8, 8, {}, Greys(256, 0, 0)},
    };
    for (const auto& c : cases)
        EXPECT_EQ(TableOf(c.bits, c.photometric, c.more), c.table)
            << c.bits << ", " << c.photometric;
    const std::vector<TagSpec> rgb = With(kSized, {ShortTag(258, {8}), ShortTag(277, {3})});
    EXPECT_TRUE(TableOf(ImageOf(With(rgb, {ShortTag(262, {3})})).Handle()).empty());
}

TEST(ColorTable, ComesFromTheHighBytesOfAColorMap) {
    std::vector<uint16_t> map;
    std::vector<uint32_t> expected;
    for (uint32_t part = 1; part <= 3; part++) {
        for (uint32_t i = 0; i < 16; i++)
            map.push_back(static_cast<uint16_t>((part * 0x40 + i) << 8 | 0x77));
    }
    for (uint32_t i = 0; i < 16; i++)
        expected.push_back((0x4080C0 & 0xFFFFFF) + i * 0x010101);
    EXPECT_EQ(TableOf(4, 3, {ShortTag(320, map)}), expected);

    // Two colours: reds, greens, blues of two each.
    std::vector<uint32_t> two(16);
    two[0] = 0x113355;
    two[1] = 0x224466;
    const std::vector<uint16_t> shortMap = {0x1100, 0x2200, 0x3300, 0x4400, 0x5500, 0x6600};
    EXPECT_EQ(TableOf(4, 3, {ShortTag(320, shortMap)}), two);

    // A map of single bytes is half as long as its count says.
    EXPECT_EQ(TableOf(8, 3, {{320, 1, 768, Bytes(768, 9)}})[200], 0x090000U);

    for (const uint16_t bits : std::vector<uint16_t>{1, 4, 8}) {
        EXPECT_EQ(TableOf(bits, 3, {}), (std::vector<uint32_t>{0xBADBAD}));
        EXPECT_EQ(TiffError(), TIFF_TAG_MISSING);
    }
}

}  // namespace
}  // namespace vellim::test
