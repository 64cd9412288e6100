// Dimensions, colour tables, strips and resolution, asked of images defined tag by tag.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <tuple>

#include "container/opened_tiff.h"
#include "vellim/failures.h"
#include "vellim/queries.h"
#include "vellim/streams.h"
#include "vellim/tags.h"

namespace vellim::test {
namespace {

constexpr uint32_t kDisplayDpi = 96;

struct ImageOf : OpenedTiff {
    explicit ImageOf(const std::vector<TagSpec>& tags) {
        DefineTiffImage(Handle());
        for (const TagSpec& tag : tags)
            DefineTiffImageInfoBuffer(Handle(), 0, tag.tag, tag.value.data(), tag.type, tag.count);
    }
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
        {"no width", {kSized[1]}, 10, 0, 0},
        {"no height", {kSized[0]}, 10, 0, 0},
        {"width without elements", {{256, 3, 0, {}}, kSized[1]}, 10, 0, 0},
    };
    for (const auto& c : cases) {
        const ImageOf image(c.tags);
        TiffDimensions got = {};
        SetTiffError(TIFF_SUCCESS);
        EXPECT_EQ(GetTiffDimensions(image.Handle(), 0, &got), c.code) << c.what;
        const TiffDimensions want = {40, 1728, 2200, 1,        c.bits,  0,
                                     0,  3780, 3780, c.colors, c.colors};
        if (c.code == 0) {
            EXPECT_EQ(std::memcmp(&got, &want, sizeof got), 0) << c.what;
            continue;
        }
        EXPECT_EQ(TiffError(), c.code) << c.what;
        EXPECT_EQ(GetTiffRGBQuad(image.Handle(), 0), 0U) << c.what;
    }
    const ImageOf unknownHeight({LongTag(256, {8}), LongTag(257, {0})});
    TiffDimensions got = {};
    EXPECT_EQ(GetTiffDimensions(unknownHeight.Handle(), 0, &got), 0);
    EXPECT_EQ(got.biHeight, 1000);
    EXPECT_EQ(GetTiffRowsPerStrip(unknownHeight.Handle(), 0), 1000U);
    for (const int32_t image : {1, -1, 1000}) {
        SetTiffError(TIFF_SUCCESS);
        EXPECT_EQ(GetTiffDimensions(unknownHeight.Handle(), image, &got), TIFF_TAG_MISSING);
        EXPECT_EQ(TiffError(), TIFF_TAG_MISSING);
    }
    EXPECT_EQ(GetTiffDimensions(unknownHeight.Handle(), 0, nullptr), TIFF_TAG_MISSING);
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
        {{x(UINT32_MAX, 1), y(70000, 1)}, INT32_MAX, 2755900, 4464U << 16 | 65535},
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

TEST(Resolution, IsStoredInDotsPerInchOrTheDisplays) {
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
    EXPECT_EQ(GetTiffImageDPI(0, 0, nullptr), TIFF_TAG_MISSING);

    const DisplaySettings coarse = {.DotsPerInchX = 72, .DotsPerInchY = 50, .BitsPerPixel = 24};
    ASSERT_EQ(SetDisplay(&coarse), 1);
    EXPECT_EQ(GetTiffImageDPI(0, 0, &dpi), 0) << "no file at all";
    SetDisplay(nullptr);
    EXPECT_EQ(dpi, 50U << 16 | 72U);
}

TEST(Strips, HaveAtMostTheImagesLines) {
    const struct {
        std::vector<TagSpec> tags;
        uint32_t rows, strips;
    } cases[] = {
        {kSized, 2200, 0},
        {With(kSized, {LongTag(278, {0}), LongTag(273, {8})}), 2200, 1},
        {With(kSized, {LongTag(278, {0xFFFFFFFF}), ShortTag(273, {8, 9, 10})}), 2200, 3},
        {With(kSized, {ShortTag(278, {16})}), 16, 0},
        {{LongTag(256, {8}), LongTag(278, {16})}, 0, 0},
    };
    for (const auto& c : cases) {
        const ImageOf image(c.tags);
        EXPECT_EQ(GetTiffRowsPerStrip(image.Handle(), 0), c.rows);
        EXPECT_EQ(GetTiffStripCount(image.Handle(), 0), c.strips);
    }
}

// As 0xrrggbb. Photometric -1: no tag.
std::vector<uint32_t> TableOf(uint16_t bits, int photometric, const std::vector<TagSpec>& more) {
    std::vector<TagSpec> tags = With(kSized, more);
    tags.push_back(ShortTag(258, {bits}));
    if (photometric >= 0) tags.push_back(ShortTag(262, {static_cast<uint16_t>(photometric)}));
    const OwnedBlock block(GetTiffRGBQuad(ImageOf(tags).Handle(), 0));
    const LockedBlock locked(block.Get());
    if (!locked) return {0xBADBAD};
    const uint32_t colors = locked.As<TiffDimensions>()->biClrUsed;
    EXPECT_EQ(locked.Size(), 40 + 4 * colors);
    std::vector<uint32_t> table(colors);
    if (colors != 0) std::memcpy(table.data(), locked.As<uint8_t>() + 40, 4 * table.size());
    return table;
}

std::vector<uint32_t> Greys(uint32_t count, uint32_t first, uint32_t step) {
    std::vector<uint32_t> greys(count, 0);
    for (uint32_t i = 0; i < count; i++)
        greys[i] = (first + i * step) % 256 * 0x010101U;
    return greys;
}

TEST(ColorTable, FollowsPhotometricAndDepth) {
    const std::vector<uint32_t> whiteBlack = {0xFFFFFF, 0}, none = {0xBADBAD};
    std::vector<uint32_t> descending16 = Greys(16, 0, 240), descending256 = Greys(256, 0, 255);
    descending16[0] = descending256[0] = 0xFFFFFF;
    const TagSpec shortMap = ShortTag(320, {0x1100, 0x2200, 0x3300, 0x4400, 0x5500, 0x6600});
    const struct {
        uint16_t bits;
        std::vector<int> photometrics;
        std::vector<uint32_t> table;
    } cases[] = {{1, {0, 3, 4, 5, -1}, whiteBlack},
                 {1, {1}, {0, 0xFFFFFF}},
                 {1, {2}, {0, 0}},
                 {4, {0, 4}, descending16},
                 {4, {1}, Greys(16, 0, 16)},
                 {4, {2, 9, -1}, Greys(16, 0, 0)},
                 {8, {0}, descending256},
                 {8, {1}, Greys(256, 0, 1)},
                 {8, {2}, Greys(256, 0, 0)}};
    for (const auto& c : cases)
        for (const int photometric : c.photometrics)
            EXPECT_EQ(TableOf(c.bits, photometric, {shortMap}), c.table) << c.bits << photometric;
    for (const uint16_t bits : {uint16_t{1}, uint16_t{4}, uint16_t{8}}) {
        EXPECT_EQ(TableOf(bits, 3, {}), none);
        EXPECT_EQ(TiffError(), TIFF_TAG_MISSING);
    }
    EXPECT_TRUE(TableOf(8, 3, {ShortTag(277, {3})}).empty());

    // The high bytes count: 16 reds, 16 greens, 16 blues; or of a short map, two each.
    std::vector<uint16_t> map;
    for (uint32_t i = 0; i < 48; i++)
        map.push_back(static_cast<uint16_t>((0x40 + i / 16 * 0x40 + i % 16) << 8 | 0x77));
    const std::vector<uint32_t> mapped = TableOf(4, 3, {ShortTag(320, map)});
    for (uint32_t i = 0; i < 16; i++)
        EXPECT_EQ(mapped.at(i), 0x4080C0 + i * 0x010101);
    std::vector<uint32_t> two(16);
    two[0] = 0x113355;
    two[1] = 0x224466;
    EXPECT_EQ(TableOf(4, 3, {shortMap}), two);
    // A map of single bytes is half as long as its count says.
    EXPECT_EQ(TableOf(8, 3, {{320, 1, 768, Bytes(768, 9)}}).at(200), 0x090000U);
}

}  // namespace
}  // namespace vellim::test
