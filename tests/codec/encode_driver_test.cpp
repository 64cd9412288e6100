// The tags of a new image, where encoded images end up in their file, and what is refused first.
#include <gtest/gtest.h>

#include <filesystem>

#include "codec/decode_file.h"

namespace vellim::test {
namespace {

BITMAP Bitmap(int32_t width, int32_t height, uint16_t bits, uint16_t planes = 1) {
    return {0, width, height, 0, planes, bits, nullptr};
}

// A line of bytes that tell image and place.
uint32_t FillLine(uint8_t* line, uint32_t number, uintptr_t image) {
    line[0] = static_cast<uint8_t>(16 * image + number);
    return number >= 100 ? TIFF_LINE_STOP : TIFF_LINE_GO_ON;
}

// Adds an image of 8 x `height` bits to `file` and encodes it.
int32_t AddImage(TiffFileHandle file, uint32_t compression, int32_t height, uintptr_t mark) {
    const int32_t image = DefineTiffImage(file);
    DefineTiffImageInfo(file, image, TIFF_TAG_COMPRESSION, TIFF_TYPE_SHORT, compression);
    if (DefineGeneralTags(file, image, Bitmap(8, height, 1)) != 0) return -1;
    return EncodeTiffImage(file, image, mark, FillLine);
}

uint32_t Tag(TiffFileHandle file, int32_t image, uint32_t tag) {
    uint32_t value[2] = {0xEEEEEEEE, 0};
    GetTiffImageInfo(file, image, tag, value);
    return value[0];
}

TEST(GeneralTags, FollowSizeDepthAndCompression) {
    struct Case {
        uint32_t compression;
        BITMAP bitmap;
        int32_t result;
        uint32_t rows;
    };
    for (const Case& c : {
             Case{1, Bitmap(1728, 3508, 1), 0, 37},
             Case{1, Bitmap(65535, 5, 24), 0, 1},
             Case{0, Bitmap(800, 10, 1), 0, 10},
             Case{4, Bitmap(1728, 60000, 1), 0, 60000},
             Case{3, Bitmap(1, 65535, 1), 0, 65535},
             Case{5, Bitmap(7, 100, 4, 2), 0, 100},
             Case{1, Bitmap(100, 5, 16), 0, 5},
             Case{1, Bitmap(9000, 65535, 8), 0, 9},
             Case{1, Bitmap(0, 5, 1), 10, 0},
             Case{1, Bitmap(-1, 5, 3), 10, 0},
             Case{1, Bitmap(8, 5, 2), 16, 0},
             Case{1, Bitmap(8, 5, 32), 16, 0},
             Case{1, Bitmap(65536, 5, 1), 1, 0},
             Case{1, Bitmap(5, 65536, 1), 1, 0},
             Case{1, Bitmap(5, -5, 1), 1, 0},
         }) {
        const TiffFileHandle file = OpenTiffInMemory(0, 0, T_CREAT);
        ASSERT_EQ(DefineTiffImage(file), 0);
        if (c.compression != 0)
            DefineTiffImageInfo(file, 0, TIFF_TAG_COMPRESSION, TIFF_TYPE_SHORT, c.compression);
        const int32_t width = c.bitmap.bmWidth;
        EXPECT_EQ(DefineGeneralTags(file, 0, c.bitmap), c.result) << width;
        if (c.result == 0) {
            EXPECT_EQ(Tag(file, 0, 256), static_cast<uint32_t>(width));
            EXPECT_EQ(Tag(file, 0, 257), static_cast<uint32_t>(c.bitmap.bmHeight));
            EXPECT_EQ(Tag(file, 0, 258), uint32_t{c.bitmap.bmPlanes} * c.bitmap.bmBitsPixel);
            EXPECT_EQ(Tag(file, 0, 278), c.rows) << width;
        }
        CloseTiffFile(file);
    }
    EXPECT_EQ(DefineGeneralTags(0, 0, Bitmap(8, 8, 1)), 1);
}

TEST(GeneralTags, OfJpegAreOneTile) {
    const TiffFileHandle file = OpenTiffInMemory(0, 0, T_CREAT);
    DefineTiffImage(file);
    DefineTiffImageInfo(file, 0, TIFF_TAG_COMPRESSION, TIFF_TYPE_SHORT, 6);
    ASSERT_EQ(DefineGeneralTags(file, 0, Bitmap(30, 20, 24)), 0);
    const std::vector<std::pair<uint32_t, uint32_t>> expected = {
        {256, 30}, {257, 20}, {258, 8}, {277, 3}, {284, 1}, {322, 30},
        {323, 20}, {512, 1},  {515, 0}, {530, 2}, {532, 0}};
    for (const auto& [tag, value] : expected)
        EXPECT_EQ(Tag(file, 0, tag), value) << tag;
    EXPECT_EQ(EncodeTiffImage(file, 0, 0, FillLine), 0);
    EXPECT_EQ(TiffError(), TIFF_UNKNOWN_COMPRESSION);
    CloseTiffFile(file);
}

TEST(EncodeDriver, AMemoryTiffGrowsFromNothing) {
    const uint32_t blocks = LiveGlobalBlocks();
    const TiffFileHandle file = OpenTiffInMemory(0, 0, T_CREAT);
    ASSERT_NE(file, 0U);
    ModiTiffFileInfo(file, nullptr, TIFF_BIG_ENDIAN);
    for (uintptr_t mark = 1; mark <= 3; mark++)
        ASSERT_EQ(AddImage(file, 1, 5, mark), 1) << TiffError();
    const OwnedBlock block(GetMemoryTiffHandle(file));
    CloseTiffFile(file);
    const auto size = static_cast<int32_t>(GlobalSize(block.Get()));
    const TiffFileHandle again = OpenTiffInMemory(block.Get(), size, T_APPEND);
    ASSERT_EQ(NumberOfTiffImages(again, TIFF_ALL_IMAGES), 3);
    TiffFileInfo info{};
    GetTiffFileInfo(again, &info);
    EXPECT_EQ(info.ByteOrder, TIFF_BIG_ENDIAN);
    for (int32_t image = 0; image < 3; image++) {
        ASSERT_EQ(GetTiffImage(again, image), 1);
        const Outcome got = Take(1, [&](uintptr_t data) {
            return DecodeTiffImage(again, image, 0, 0, data, CallAnswer);
        });
        ASSERT_EQ(got.lines.size(), 5U);
        for (int32_t y = 0; y < 5; y++)
            EXPECT_EQ(got.lines[static_cast<size_t>(y)][0], 16 * (image + 1) + y);
    }
    CloseTiffFile(again);
    EXPECT_EQ(LiveGlobalBlocks(), blocks + 1);
}

// What the drawing of lines can't have spoilt: nothing is written, or the old images stand.
TEST(EncodeDriver, RefusesBeforeItWrites) {
    struct Case {
        const char* what;
        uint32_t tag, type, value;
        int32_t code;
    };
    for (const Case& c :
         {Case{"compression", 259, 3, 99, 11}, Case{"fill order", 266, 3, 3, 15},
          Case{"planes", 284, 3, 2, 16}, Case{"depth", 258, 3, 2, 16}, Case{"strips", 278, 3, 1, 9},
          Case{"tiles", 322, 3, 8, 11}, Case{"width", 256, 4, 0x7FFFFFFF, 1}}) {
        const std::string path = FileOf({}, "none") + ".tif";
        std::filesystem::remove(path);
        const TiffFileHandle file = OpenTiffFile(path.c_str(), T_CREAT);
        DefineTiffImage(file);
        ASSERT_EQ(DefineGeneralTags(file, 0, Bitmap(8, 8192, 1)), 0);
        DefineTiffImageInfo(file, 0, c.tag, c.type, c.value);
        EXPECT_EQ(EncodeTiffImage(file, 0, 0, FillLine), 0);
        EXPECT_EQ(TiffError(), c.code) << c.what;
        EXPECT_FALSE(std::filesystem::exists(path)) << c.what;
        DropTiffImage(file, 0);
        EXPECT_EQ(EncodeTiffImage(file, 0, 0, FillLine), 0);
        EXPECT_EQ(TiffError(), TIFF_BAD_INDEX) << "no tags in memory";
        CloseTiffFile(file);
    }
}

TEST(EncodeDriver, StopsAndFailuresOfTheCallback) {
    const std::string path = FileOf(BuildTiff({{{ShortTag(256, {1})}, {}}}), "stop.tif");
    const TiffFileHandle file = OpenTiffFile(path.c_str(), T_APPEND);
    DefineTiffImage(file);
    DefineTiffImageInfo(file, 0, TIFF_TAG_COMPRESSION, TIFF_TYPE_SHORT, 1);
    ASSERT_EQ(DefineGeneralTags(file, 0, Bitmap(8, 9, 1)), 0);
    DefineTiffImageInfo(file, 0, 278, TIFF_TYPE_SHORT, 2);
    Answer answer = [](uint8_t*, uint32_t number) { return number == 4 ? 7U : 0U; };
    EXPECT_EQ(EncodeTiffImage(file, 0, reinterpret_cast<uintptr_t>(&answer), CallAnswer), 0);
    EXPECT_EQ(TiffError(), 7);
    EXPECT_EQ(GetNumberOfImagesInTiffFile(path.c_str()), 1);
    answer = [](uint8_t*, uint32_t number) { return number == 4 ? 3U : 0U; };
    EXPECT_EQ(EncodeTiffImage(file, 0, reinterpret_cast<uintptr_t>(&answer), CallAnswer), 1);
    GlobalHandle counts = 0;
    GetTiffImageInfoBuffer(file, 0, TIFF_TAG_STRIP_BYTE_COUNTS, &counts, nullptr, nullptr);
    const OwnedBlock owned(counts);
    const LockedBlock locked(counts);
    const auto* count = locked.As<uint32_t>();
    EXPECT_EQ(std::vector<uint32_t>(count, count + 5), (std::vector<uint32_t>{2, 2, 0, 0, 0}));
    CloseTiffFile(file);
    EXPECT_EQ(GetNumberOfImagesInTiffFile(path.c_str()), 2);
}

// One writer at a time: a callback that stores something of its own in the file is refused, and
// what is being stored comes out whole.
TEST(EncodeDriver, IsTheOnlyWriterOfItsFile) {
    const std::string path =
        FileOf(BuildTiff({SimpleImage(8, 1, 1, 1, 1, 1, 1, {{0x5A}})}), "one.tif");
    for (const bool onDisk : {false, true}) {
        const TiffFileHandle file =
            onDisk ? OpenTiffFile(path.c_str(), T_APPEND) : OpenTiffInMemory(0, 0, T_CREAT);
        int32_t inner = 0;
        const Answer answer = [&](uint8_t* line, uint32_t number) {
            line[0] = 7;
            if (number == 1) inner += AddImage(file, 1, 3, 1);
            if (number == 2 && onDisk) inner += DeleteTiffTagOfImage(path.c_str(), 0, 259);
            if (number == 3 && onDisk)
                inner += CopyTiffImageInFile(path.c_str(), 0, path.c_str(), T_APPEND);
            return 0U;
        };
        const int32_t image = DefineTiffImage(file);
        ASSERT_EQ(DefineGeneralTags(file, image, Bitmap(8, 5, 1)), 0);
        EXPECT_EQ(EncodeTiffImage(file, image, reinterpret_cast<uintptr_t>(&answer), CallAnswer),
                  1);
        EXPECT_EQ(inner, 0);
        EXPECT_EQ(AddImage(file, 1, 3, 1), 1) << "free again";
        const OwnedBlock block(GetMemoryTiffHandle(file));
        CloseTiffFile(file);
    }
    EXPECT_EQ(GetNumberOfImagesInTiffFile(path.c_str()), 3);
}

// Without the tag a reader takes the image for a single strip.
TEST(EncodeDriver, AddsTheRowsPerStripThatItUsed) {
    const TiffFileHandle file = OpenTiffInMemory(0, 0, T_CREAT);
    DefineTiffImage(file);
    for (const uint32_t tag : {256U, 257U})
        DefineTiffImageInfo(file, 0, tag, TIFF_TYPE_SHORT, 8);
    ASSERT_EQ(EncodeTiffImage(file, 0, 0, FillLine), 1);
    EXPECT_EQ(Tag(file, 0, 278), 1U);
    EXPECT_EQ(GetTiffStripCount(file, 0), 8U);
    const OwnedBlock block(GetMemoryTiffHandle(file));
    CloseTiffFile(file);
}

}  // namespace
}  // namespace vellim::test
