// Dimensions, colour tables, strips and resolution, asked of images defined tag by tag.

#include <gtest/gtest.h>

#include <cstring>
#include <utility>

#include "container/opened_tiff.h"
#include "vellim/failures.h"
#include "vellim/queries.h"

namespace vellim::test {
namespace {

constexpr uint32_t kDisplayDpi = 96;

struct ImageOf : OpenedTiff {
    explicit ImageOf(const std::vector<TagSpec>& tags) {
        DefineTiffImage(Handle());
        for (const TagSpec& tag : tags)
            Define(Handle(), 0, tag);
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
        {"RGB", With(kSized, {ShortTag(258, {8, 8, 8}), ShortTag(277, {3})}), 0, 24, 0},
        {"16-bit product", With(kSized, {ShortTag(258, {0x8001}), ShortTag(277, {8})}), 0, 8, 256},
        {"2 bits", With(kSized, {ShortTag(258, {2})}), 16, 2, 0},
        {"planes", With(kSized, {ShortTag(284, {2})}), 16, 0, 0},
        {"no height", {kSized[0]}, 10, 0, 0},
        {"width without elements", {{256, 3, 0, {}}, kSized[1]}, 10, 0, 0},
    };
    for (const auto& c : cases) {
        TiffDimensions got = {},
                       want = {40, 1728, 2200, 1, c.bits, 0, 0, 3780, 3780, c.colors, c.colors};
        EXPECT_EQ(GetTiffDimensions(ImageOf(c.tags).Handle(), 0, &got), c.code) << c.what;
        EXPECT_TRUE(c.code != 0 || std::memcmp(&got, &want, sizeof got) == 0) << c.what;
        EXPECT_TRUE(c.code == 0 || TiffError() == c.code) << c.what;
    }
    const ImageOf unknownHeight({LongTag(256, {8}), LongTag(257, {0})});
    TiffDimensions got = {};
    EXPECT_EQ(GetTiffDimensions(unknownHeight.Handle(), 0, &got), 0);
    EXPECT_EQ(got.biHeight, 1000);
    EXPECT_EQ(GetTiffRowsPerStrip(unknownHeight.Handle(), 0), 1000U);
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
        {{x(80, 1), y(385, 10), unit(3)}, 8000, 3850, 98U << 16 | 203},
        {{x(204, 1), y(98, 1), unit(4)}, 0, 0, 0},
        {{x(0, 0), y(300, 0)}, 0, 11811, 300U << 16},
        {{x(UINT32_MAX, 1), y(70000, 1)}, INT32_MAX, 2755900, 4464U << 16 | 65535},
        {{ShortTag(282, {200}), AsciiTag(283, "200")}, 7874, 3780, kDisplayDpi << 16 | 200},
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
    uint32_t unit = 0, dpi = 0;
    EXPECT_EQ(GetTiffImageInfo(image.Handle(), 0, 296, &unit), 1);
    EXPECT_EQ(GetTiffImageDPI(image.Handle(), 0, &dpi), 0);
    EXPECT_EQ(std::pair(unit, dpi), std::pair(1U, 0x00C800CCU));
    EXPECT_EQ(GetTiffImageDPI(0, 0, &dpi), 0) << "no file at all";
    EXPECT_EQ(dpi, kDisplayDpi << 16 | kDisplayDpi);
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

TEST(ColorTable, FollowsPhotometricAndDepth) {
    const TagSpec shortMap = ShortTag(320, {0x1100, 0x2200, 0x3300, 0x4400, 0x5500, 0x6600});
    for (const int photometric : {0, 3, 4, 5, -1})
        EXPECT_EQ(TableOf(1, photometric, {shortMap}), (std::vector<uint32_t>{0xFFFFFF, 0}));
    EXPECT_EQ(TableOf(1, 1, {}), (std::vector<uint32_t>{0, 0xFFFFFF}));
    EXPECT_EQ(TableOf(4, 2, {}), std::vector<uint32_t>(16));
    EXPECT_EQ(TableOf(4, 4, {}).at(1), 0xF0F0F0U);
    EXPECT_EQ(TableOf(8, 0, {}).at(0) ^ TableOf(8, 0, {}).at(200), 0xFFFFFFU ^ 0x383838U);
    EXPECT_EQ(TableOf(8, 1, {}).at(200), 0xC8C8C8U);
    EXPECT_EQ(TableOf(4, 3, {}).at(0), 0xBADBADU);
    EXPECT_EQ(TiffError(), TIFF_TAG_MISSING);

    // The high bytes count; a short map has two colours; one of single bytes is half as long.
    std::vector<uint16_t> map;
    for (uint32_t i = 0; i < 48; i++)
        map.push_back(static_cast<uint16_t>((0x40 + i / 16 * 0x40 + i % 16) << 8 | 0x77));
    EXPECT_EQ(TableOf(4, 3, {ShortTag(320, map)}).at(15), 0x4F8FCFU);
    EXPECT_EQ(TableOf(4, 3, {shortMap}).at(1), 0x224466U);
    EXPECT_EQ(TableOf(8, 3, {{320, 1, 768, Bytes(768, 9)}}).at(200), 0x090000U);
}

}  // namespace
}  // namespace vellim::test
