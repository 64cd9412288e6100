// Opening: modes, headers, the chain of directories, whole and damaged.

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>

#include "container/opened_tiff.h"
#include "container/tiff_file.h"
#include "vellim/failures.h"
#include "vellim/queries.h"

namespace vellim::test {
namespace {

// Three images with subfile types 1 (NewSubfileType), 2 (SubfileType 3) and none.
Bytes ThreeImages(bool bigEndian = false) {
    const ImageSpec image = SimpleImage(16, 4, 8, 3, 1, 2, 2, {Bytes(96, 0x55), Bytes(96, 0xAA)});
    return BuildTiff({With(image, {LongTag(TIFF_TAG_NEW_SUBFILE_TYPE, {1})}),
                      With(image, {ShortTag(TIFF_TAG_SUBFILE_TYPE, {3})}), image},
                     bigEndian);
}

TEST(Open, FindsTheImagesOnDiskAndInMemoryInBothByteOrders) {
    for (const bool bigEndian : {false, true}) {
        const OpenedTiff tiff(ThreeImages(bigEndian),
                              bigEndian ? Storage::kDisk : Storage::kMemory);
        EXPECT_EQ(tiff.ImageCount(), 3);
        for (const uint32_t subfile : {0U, 1U, 2U})
            EXPECT_EQ(NumberOfTiffImages(tiff.Handle(), subfile), 1) << subfile;
        EXPECT_EQ(GetTiffImage(tiff.Handle(), 0), 1);
        EXPECT_EQ(NumberOfTiffImages(tiff.Handle(), 1), 0) << "the whole flags word counts";
        EXPECT_EQ(NumberOfTiffImages(tiff.Handle(), TIFF_IMAGE_IN_MEMORY + 1), 1);
        TiffFileInfo info = {};
        EXPECT_EQ(GetTiffFileInfo(tiff.Handle(), &info), 1);
        EXPECT_EQ(info.PathName, tiff.Path());
        EXPECT_EQ(GetMemoryTiffHandle(tiff.Handle()), tiff.Block());
    }
}

TEST(Open, TellsWhyAFileIsNone) {
    const struct {
        const char* what;
        Bytes bytes;
        int32_t code;
    } cases[] = {
        {"no mark", {'I', 'M', 42, 0, 8, 0, 0, 0}, TIFF_BAD_BYTE_ORDER},
        {"version of the other order", {'M', 'M', 42, 0, 0, 0, 0, 8}, TIFF_NOT_TIFF},
        {"link above 31 bits", {'I', 'I', 42, 0, 8, 0, 0, 0x80}, TIFF_IO_ERROR},
        {"no link behind the directory", {'I', 'I', 42, 0, 8, 0, 0, 0, 0, 0, 0}, TIFF_IO_ERROR},
        {"a value of 2^32 bytes",
         {'I', 'I', 42, 0, 8, 0, 0, 0, 1, 0, 1, 0, 4, 0, 0, 0, 0, 0x40, 8, 0, 0, 0, 0, 0, 0, 0},
         TIFF_IO_ERROR},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(OpenedTiff(c.bytes).Handle(), 0U) << c.what;
        EXPECT_EQ(TiffError(), c.code) << c.what;
    }
    const OpenedTiff none({'M', 'M', 0, 42, 0, 0, 0, 0});
    EXPECT_TRUE(none.Handle() != 0 && none.ImageCount() == 0 && TiffError() == TIFF_SUCCESS);
}

TEST(Open, StopsAtAThousandImages) {
    Bytes loop = ThreeImages();
    std::memcpy(&loop[LinksOf(loop)[2]], &loop[LinksOf(loop)[0]], 4);
    const std::vector<ImageSpec> many(1001, ImageSpec{{LongTag(TIFF_TAG_IMAGE_WIDTH, {1})}, {}});
    for (const Bytes& bytes : {loop, BuildTiff(many)}) {
        const OpenedTiff tiff(bytes);
        EXPECT_EQ(tiff.ImageCount(), 1000);
    }
}

TEST(DamagedFile, CutAtAnyByteKeepsTheImagesBeforeTheCut) {
    const Bytes whole = ThreeImages();
    const std::vector<size_t> links = LinksOf(whole);
    for (size_t length = 0; length <= whole.size(); length++) {
        // What is left: images whose link is there too. A file cut in a link isn't opened.
        size_t images = 0;
        while (images < 3 && length >= links[images] + 4)
            images++;
        const bool opens = images == 3 || (images > 0 && length < links[images]);
        const OpenedTiff tiff(Bytes(whole.begin(), whole.begin() + static_cast<long>(length)));
        ASSERT_EQ(TiffError(), images == 3 ? TIFF_SUCCESS : TIFF_IO_ERROR) << length;
        ASSERT_EQ(tiff.Handle() != 0, opens) << length;
        ASSERT_EQ(tiff.ImageCount(), opens ? static_cast<int32_t>(images) : 0) << length;
    }
}

TEST(OpenModes, DecideWhetherAFileMustExist) {
    const std::string there = FileOf(ThreeImages(), "there.tif"), missing = there + ".missing";
    const std::string text = FileOf({'t', 'e', 'x', 't'}, "text.tif");
    const struct {
        const std::string& path;
        int32_t mode, code, images = 0;
        uint32_t openStyle = 0;
    } cases[] = {
        {there, T_READ, TIFF_SUCCESS, 3, 0},          {there, T_APPEND, TIFF_SUCCESS, 3, 0x32},
        {there, T_CREAT, TIFF_SUCCESS, 0, 0x1032},    {missing, T_READ, TIFF_IO_ERROR},
        {missing, T_APPEND, TIFF_SUCCESS, 0, 0x1032}, {text, T_APPEND, TIFF_BAD_BYTE_ORDER},
    };
    for (const auto& c : cases) {
        const TiffFileHandle file = OpenTiffFile(c.path.c_str(), c.mode);
        EXPECT_EQ(TiffError(), c.code) << c.path << c.mode;
        EXPECT_EQ(file == 0, c.code != TIFF_SUCCESS) << c.path << c.mode;
        if (file == 0) continue;
        EXPECT_EQ(NumberOfTiffImages(file, TIFF_ALL_IMAGES), c.images) << c.path << c.mode;
        EXPECT_EQ(TiffFileAccess(file)->OpenStyle, c.openStyle) << c.path << c.mode;
        CloseTiffFile(file);
    }
    EXPECT_FALSE(std::filesystem::exists(missing));
    EXPECT_EQ(std::filesystem::file_size(there), ThreeImages().size());
}

TEST(FileInfo, TakesPathsAndByteOrdersThatFit) {
    const std::string longest(149, 'p'), tooLong(150, 'p');
    const TiffFileHandle file = OpenTiffFile(longest.c_str(), T_CREAT);
    const auto& state = *TiffFileAccess(file);
    EXPECT_EQ(ModiTiffFileInfo(file, tooLong.c_str(), TIFF_BIG_ENDIAN), 0);
    EXPECT_EQ(TiffError(), TIFF_PATH_TOO_LONG);
    EXPECT_EQ(state.ByteOrder, TIFF_BIG_ENDIAN) << "the byte order is taken all the same";
    EXPECT_EQ(ModiTiffFileInfo(file, "short", 4711), 0);
    EXPECT_STREQ(state.PathName, "short");
    CloseTiffFile(file);
}

TEST(BadArguments, AreFailureResults) {
    EXPECT_EQ(OpenTiffFile(nullptr, T_CREAT) + OpenTiffInMemory(0xDEADBEEF, 100, T_READ), 0U);
    const OwnedBlock foreign(BlockOf(Bytes(100)));
    const TiffFileHandle stale = OpenTiffFile("never-written.tif", T_CREAT);
    CloseTiffFile(stale);
    for (const TiffFileHandle file : {0U, foreign.Get(), stale, 0xFFFFFFFFU}) {
        EXPECT_EQ(ModiTiffFileInfo(file, "path", 0) + GetTiffImage(file, 0), 0);
        EXPECT_EQ(DefineTiffImage(file) + DefineTiffImageInfo(file, 0, 256, 4, 1), -1);
        EXPECT_EQ(CloseTiffFile(file), 0);
    }
    EXPECT_EQ(GlobalSize(foreign.Get()), 100U) << "closing freed a block that is no file";
}

}  // namespace
}  // namespace vellim::test
