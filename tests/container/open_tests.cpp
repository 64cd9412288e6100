// Opening: modes, headers, the chain of directories, whole and damaged.

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>

#include "container/opened_tiff.h"
#include "container/tiff_file.h"
#include "vellim/failures.h"
#include "vellim/queries.h"
#include "vellim/tags.h"

namespace vellim::test {
namespace {

uint32_t LongAt(const Bytes& bytes, size_t at) {
    uint32_t value = 0;
    std::memcpy(&value, &bytes.at(at + 3) - 3, 4);
    return value;
}

// Where the directory of each image of an "II" file stands, and where its link does.
struct Directory {
    uint32_t start, link;
};

std::vector<Directory> DirectoriesOf(const Bytes& bytes) {
    std::vector<Directory> directories;
    for (uint32_t start = LongAt(bytes, 4); start != 0;) {
        const uint32_t entries = LongAt(bytes, start) & 0xFFFF;
        directories.push_back({start, start + 2 + entries * 12});
        start = LongAt(bytes, directories.back().link);
    }
    return directories;
}

// Three images with subfile types 1 (NewSubfileType), 2 (SubfileType 3) and none.
Bytes ThreeImages(bool bigEndian = false) {
    std::vector<ImageSpec> images(
        3, SimpleImage(16, 4, 8, 3, 1, 2, 2, {Bytes(96, 0x55), Bytes(96, 0xAA)}));
    images[0].tags.push_back(LongTag(TIFF_TAG_NEW_SUBFILE_TYPE, {1}));
    images[1].tags.push_back(ShortTag(TIFF_TAG_SUBFILE_TYPE, {3}));
    images[1].tags.push_back(RationalTag(TIFF_TAG_X_RESOLUTION, 204, 1));
    images[2].tags.push_back(AsciiTag(TIFF_TAG_DOCUMENT_NAME, "a third page"));
    return BuildTiff(images, bigEndian);
}

TEST(Open, FindsTheImagesOnDiskAndInMemoryInBothByteOrders) {
    for (const bool bigEndian : {false, true}) {
        for (const Storage storage : {Storage::kDisk, Storage::kMemory}) {
            SetTiffError(TIFF_NOT_CALS);
            const OpenedTiff tiff(ThreeImages(bigEndian), storage);
            ASSERT_NE(tiff.Handle(), 0U);
            EXPECT_EQ(TiffError(), TIFF_SUCCESS);
            EXPECT_EQ(tiff.ImageCount(), 3);
            for (const uint32_t subfile : {0U, 1U, 2U})
                EXPECT_EQ(NumberOfTiffImages(tiff.Handle(), subfile), 1) << subfile;

            EXPECT_EQ(IsTiffImageRegistered(tiff.Handle(), 0), 0);
            EXPECT_EQ(GetTiffImage(tiff.Handle(), 0), 1);
            EXPECT_EQ(IsTiffImageRegistered(tiff.Handle(), 0), 1);
            EXPECT_EQ(NumberOfTiffImages(tiff.Handle(), 1), 0) << "the whole flags word counts";
            EXPECT_EQ(NumberOfTiffImages(tiff.Handle(), TIFF_IMAGE_IN_MEMORY + 1), 1);

            TiffFileInfo info = {};
            EXPECT_EQ(GetTiffFileInfo(tiff.Handle(), &info), 1);
            EXPECT_EQ(info.PathName, tiff.Path());
            EXPECT_EQ(info.ByteOrder, bigEndian ? TIFF_BIG_ENDIAN : TIFF_LITTLE_ENDIAN);
            EXPECT_EQ(info.ImageCount, 3U);
            EXPECT_EQ(info.FirstDirectoryOffset, DirectoriesOf(ThreeImages())[0].start);
            EXPECT_EQ(GetMemoryTiffHandle(tiff.Handle()), tiff.Block());
        }
    }
    EXPECT_EQ(GetNumberOfImagesInTiffFile(FileOf(ThreeImages(), "count.tif").c_str()), 3);
    EXPECT_EQ(GetNumberOfImagesInTiffFile("no-such-file.tif"), -1);
}

// A header whose first link leads to `directory`, which follows it.
Bytes WithDirectory(const Bytes& directory) {
    Bytes bytes = {'I', 'I', 42, 0, 8, 0, 0, 0};
    for (const uint8_t byte : directory)
        bytes.push_back(byte);
    return bytes;
}

TEST(Open, TellsWhyAFileIsNone) {
    const struct {
        const char* what;
        Bytes bytes;
        int32_t code;
    } cases[] = {
        {"empty", {}, TIFF_IO_ERROR},
        {"half a mark", {'I'}, TIFF_IO_ERROR},
        {"no mark", {'I', 'M', 42, 0, 8, 0, 0, 0}, TIFF_BAD_BYTE_ORDER},
        {"half a version", {'M', 'M', 0}, TIFF_IO_ERROR},
        {"version of the other order", {'M', 'M', 42, 0, 0, 0, 0, 8}, TIFF_NOT_TIFF},
        {"half a link", {'I', 'I', 42, 0, 8, 0}, TIFF_IO_ERROR},
        {"link behind the end", {'I', 'I', 42, 0, 99, 0, 0, 0}, TIFF_IO_ERROR},
        {"link above 31 bits", {'I', 'I', 42, 0, 8, 0, 0, 0x80}, TIFF_IO_ERROR},
        {"no link behind the directory", WithDirectory({0, 0, 0}), TIFF_IO_ERROR},
        {"65535 entries", WithDirectory({0xFF, 0xFF, 1, 0, 1, 0}), TIFF_IO_ERROR},
        {"a value of 32768 bytes",
         WithDirectory({1, 0, 1, 0, 3, 0, 0, 0x40, 0, 0, 8, 0, 0, 0, 0, 0, 0, 0}), TIFF_IO_ERROR},
        {"a value of 2^32 bytes",
         WithDirectory({1, 0, 1, 0, 4, 0, 0, 0, 0, 0x40, 8, 0, 0, 0, 0, 0, 0, 0}), TIFF_IO_ERROR},
    };
    for (const auto& c : cases) {
        for (const Storage storage : {Storage::kDisk, Storage::kMemory}) {
            const OpenedTiff tiff(c.bytes, storage);
            EXPECT_EQ(tiff.Handle(), 0U) << c.what;
            EXPECT_EQ(TiffError(), c.code) << c.what;
        }
    }
    const OpenedTiff none({'M', 'M', 0, 42, 0, 0, 0, 0});
    EXPECT_NE(none.Handle(), 0U);
    EXPECT_EQ(none.ImageCount(), 0);
    EXPECT_EQ(TiffError(), TIFF_SUCCESS);
}

TEST(Open, StopsAtAThousandImages) {
    Bytes loop = ThreeImages();
    const std::vector<Directory> directories = DirectoriesOf(loop);
    std::memcpy(&loop[directories[2].link], &directories[1].start, 4);
    const std::vector<ImageSpec> many(1001, ImageSpec{{LongTag(TIFF_TAG_IMAGE_WIDTH, {1})}, {}});
    const Bytes tooMany = BuildTiff(many);
    for (const Bytes& bytes : {loop, tooMany, BuildTiff({many.begin(), many.end() - 1})}) {
        const OpenedTiff tiff(bytes);
        EXPECT_EQ(tiff.ImageCount(), 1000);
        EXPECT_EQ(TiffError(), TIFF_SUCCESS);
        EXPECT_EQ(GetTiffImage(tiff.Handle(), 999), 1);
    }
    const OpenedTiff tiff(tooMany);
    EXPECT_EQ(TiffFileAccess(tiff.Handle())->TailLinkOffset, DirectoriesOf(tooMany)[998].link);
}

TEST(DamagedFile, CutAtAnyByteKeepsTheImagesBeforeTheCut) {
    const Bytes whole = ThreeImages();
    const std::vector<Directory> directories = DirectoriesOf(whole);
    for (size_t length = 2; length <= whole.size(); length++) {
        // What is left: images whose link is there too, one more where the cut is in its link.
        int32_t images = 0;
        while (images < 3 && length >= directories[static_cast<size_t>(images)].link + 4)
            images++;
        const bool inLink = images < 3 && length >= directories[static_cast<size_t>(images)].link;
        const bool opens = images > 0 && !inLink;
        const OpenedTiff tiff(Bytes(whole.begin(), whole.begin() + static_cast<long>(length)));
        ASSERT_EQ(TiffError(), images == 3 ? TIFF_SUCCESS : TIFF_IO_ERROR) << length;
        ASSERT_EQ(tiff.Handle() != 0, opens) << length;
        if (!opens) continue;
        ASSERT_EQ(tiff.ImageCount(), images) << length;
        const TiffFileAccess state(tiff.Handle());
        ASSERT_EQ(state->TailLinkOffset, directories[static_cast<size_t>(images) - 1].link);
        ASSERT_EQ(state->Images[images].DirectoryOffset, 0U) << length;
        // Values stand before their directory, so what was found is there.
        for (int32_t i = 0; i < images; i++)
            ASSERT_EQ(GetTiffImage(tiff.Handle(), i), 1) << length;
    }
}

TEST(DamagedFile, WithAnyByteChangedFailsByACodeAtWorst) {
    const Bytes whole[] = {ThreeImages(false), ThreeImages(true)};
    for (size_t at = 0; at < 6 * whole[0].size(); at++) {
        Bytes bytes = whole[at % 2];
        const uint8_t changes[] = {0x01, 0x80, 0xFF};
        bytes[at / 6] ^= changes[at % 3];
        const OpenedTiff tiff(bytes);
        ASSERT_TRUE(tiff.Handle() != 0 || TiffError() != TIFF_SUCCESS) << at;
        for (int32_t i = 0; i < tiff.ImageCount(); i++) {
            SetTiffError(TIFF_SUCCESS);
            const bool loaded = GetTiffImage(tiff.Handle(), i) == 1;
            ASSERT_EQ(loaded, TiffError() == TIFF_SUCCESS) << at;
            const OwnedBlock description(GetTiffRGBQuad(tiff.Handle(), i));
            ASSERT_TRUE(loaded || !description) << at;
        }
    }
}

// Every entry of the directory claims the same 32,000 bytes.
TEST(DamagedFile, CannotClaimFarMoreThanItHolds) {
    constexpr uint32_t kEntries = 2000;
    const Bytes entry = {0, 0x90, 1, 0, 0x00, 0x7D, 0, 0, 8, 0, 0, 0};
    Bytes bytes = WithDirectory({kEntries & 0xFF, kEntries >> 8});
    for (uint32_t i = 0; i < kEntries; i++)
        bytes.insert(bytes.end(), entry.begin(), entry.end());
    bytes.resize(bytes.size() + 32000);
    const OpenedTiff tiff(bytes);
    EXPECT_EQ(tiff.ImageCount(), 1);
    EXPECT_EQ(GetTiffImage(tiff.Handle(), 0), 0);
    EXPECT_EQ(TiffError(), TIFF_IO_ERROR);
}

TEST(OpenModes, DecideWhetherAFileMustExist) {
    const std::string there = FileOf(ThreeImages(), "there.tif"), missing = there + ".missing";
    const std::string text = FileOf({'t', 'e', 'x', 't'}, "text.tif");
    constexpr int32_t kFails = -1;
    const struct {
        const std::string& path;
        int32_t mode, images, code;
        uint32_t openStyle;
    } cases[] = {
        {there, T_READ, 3, TIFF_SUCCESS, 0},
        {there, T_APPEND, 3, TIFF_SUCCESS, 0x32},
        {there, T_CREAT, 0, TIFF_SUCCESS, 0x1032},
        {there, 1, 0, TIFF_SUCCESS, 0x1032},
        {missing, T_READ, kFails, TIFF_IO_ERROR, 0},
        {missing, T_APPEND, 0, TIFF_SUCCESS, 0x1032},
        {text, T_APPEND, kFails, TIFF_BAD_BYTE_ORDER, 0},
    };
    for (const auto& c : cases) {
        const TiffFileHandle file = OpenTiffFile(c.path.c_str(), c.mode);
        EXPECT_EQ(TiffError(), c.code) << c.path << c.mode;
        EXPECT_EQ(file == 0, c.images == kFails) << c.path << c.mode;
        if (file == 0) continue;
        EXPECT_EQ(NumberOfTiffImages(file, TIFF_ALL_IMAGES), c.images) << c.path << c.mode;
        EXPECT_EQ(TiffFileAccess(file)->OpenStyle, c.openStyle) << c.path << c.mode;
        EXPECT_EQ(CloseTiffFile(file) - CloseTiffFile(file), 1);
    }
    EXPECT_FALSE(std::filesystem::exists(missing));
    EXPECT_EQ(std::filesystem::file_size(there), ThreeImages().size());
    for (const int32_t mode : {T_APPEND, T_CREAT}) {
        const OpenedTiff tiff(ThreeImages(), Storage::kMemory, mode);
        EXPECT_EQ(tiff.ImageCount(), mode == T_APPEND ? 3 : 0);
        EXPECT_EQ(TiffFileAccess(tiff.Handle())->OpenStyle, mode == T_APPEND ? 0x32U : 0U);
        EXPECT_EQ(TiffFileAccess(tiff.Handle())->TailLinkOffset == 4U, mode == T_CREAT);
    }
}

TEST(FileInfo, TakesPathsAndByteOrdersThatFit) {
    const std::string longest(149, 'p'), tooLong(150, 'p');
    const TiffFileHandle file = OpenTiffFile(longest.c_str(), T_CREAT);
    const auto& state = *TiffFileAccess(file);
    EXPECT_EQ(ModiTiffFileInfo(file, nullptr, 0), 1);
    EXPECT_EQ(ModiTiffFileInfo(file, tooLong.c_str(), TIFF_BIG_ENDIAN), 0);
    EXPECT_EQ(TiffError(), TIFF_PATH_TOO_LONG);
    EXPECT_EQ(state.PathName, longest);
    EXPECT_EQ(state.ByteOrder, TIFF_BIG_ENDIAN) << "the byte order is taken all the same";
    EXPECT_EQ(ModiTiffFileInfo(file, "short", 4711), 0);
    EXPECT_EQ(TiffError(), TIFF_BAD_BYTE_ORDER);
    EXPECT_EQ(ModiTiffFileInfo(file, nullptr, TIFF_LITTLE_ENDIAN), 1);
    EXPECT_STREQ(state.PathName, "short");
    EXPECT_EQ(state.ByteOrder, TIFF_LITTLE_ENDIAN);
    CloseTiffFile(file);
    EXPECT_EQ(OpenTiffFile(tooLong.c_str(), T_CREAT), 0U);
    EXPECT_EQ(TiffError(), TIFF_PATH_TOO_LONG);
}

TEST(BadArguments, AreFailureResults) {
    for (const int32_t mode : {T_READ, T_APPEND, T_CREAT}) {
        EXPECT_EQ(OpenTiffFile(nullptr, mode) + OpenTiffFile("", mode), 0U);
        EXPECT_EQ(OpenTiffInMemory(0, -1, mode), 0U);
        EXPECT_EQ(TiffError(), TIFF_IO_ERROR);
    }
    EXPECT_EQ(OpenTiffInMemory(0xDEADBEEF, 100, T_READ), 0U);
    const OwnedBlock foreign(BlockOf(Bytes(100)));
    const TiffFileHandle stale = OpenTiffFile("never-written.tif", T_CREAT);
    EXPECT_EQ(GetTiffFileInfo(stale, nullptr), 0);
    CloseTiffFile(stale);
    for (const TiffFileHandle file : {0U, foreign.Get(), stale, 0xFFFFFFFFU}) {
        TiffFileInfo info = {};
        TiffDimensions dimensions = {};
        for (const int32_t result :
             {GetTiffFileInfo(file, &info), ModiTiffFileInfo(file, "path", 0),
              NumberOfTiffImages(file, TIFF_ALL_IMAGES), IsTiffImageRegistered(file, 0),
              GetTiffImage(file, 0), DropTiffImage(file, 0), DefineTiffImage(file) + 1,
              GetTiffImageInfo(file, 0, 256, &info), DefineTiffImageInfo(file, 0, 256, 4, 1),
              GetTiffImageInfoBuffer(file, 0, 0, nullptr, nullptr, nullptr),
              GetTiffDimensions(file, 0, &dimensions) - TIFF_TAG_MISSING,
              SetTiffImageDPI(file, 0, 0x00C800C8) - TIFF_TAG_MISSING, CloseTiffFile(file)})
            EXPECT_EQ(result, 0) << file;
        EXPECT_EQ(GetMemoryTiffHandle(file) + GetTiffRGBQuad(file, 0), 0U);
        EXPECT_EQ(GetTiffRowsPerStrip(file, 0) + GetTiffStripCount(file, 0), 0U);
    }
    EXPECT_EQ(GlobalSize(foreign.Get()), 100U) << "closing freed a block that is no file";
}

}  // namespace
}  // namespace vellim::test
