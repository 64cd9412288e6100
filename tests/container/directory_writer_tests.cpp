// Directories as they are written, byte by byte, and what is refused before a byte is.
#include <gtest/gtest.h>

#include <filesystem>

#include "container/opened_tiff.h"
#include "vellim/vellim.h"

namespace vellim::test {
namespace {

TEST(DirectoryWriter, LaysOutValuesThenEntriesInAscendingOrder) {
    const Bytes header = {'M', 'M', 0, 42, 0, 0, 0, 0};
    const std::string path = FileOf(header, "written.tif");
    const TiffFileHandle file = OpenTiffFile(path.c_str(), T_APPEND);
    ASSERT_EQ(ModiTiffFileInfo(file, nullptr, TIFF_LITTLE_ENDIAN), 1) << "the header counts";
    ASSERT_EQ(DefineTiffImage(file), 0);
    for (const TagSpec& tag : {RationalTag(282, 0x01020304, 5), ShortTag(256, {0x0A0B}),
                               AsciiTag(269, "abcd"), AsciiTag(270, "xyz"), ShortTag(258, {1, 2})})
        ASSERT_EQ(Define(file, 0, tag), 1);
    ASSERT_EQ(WriteTiffImageDirectory(file, 0), 0);
    const Bytes first = {'M', 'M', 0,   42,  0, 0, 0, 21,                       //
                         'a', 'b', 'c', 'd', 0,                                 // 269
                         1,   2,   3,   4,   0, 0, 0, 5,                        // 282
                         0,   5,                                                //
                         1,   0,   0,   3,   0, 0, 0, 1,  0x0A, 0x0B, 0,   0,   // 256
                         1,   2,   0,   3,   0, 0, 0, 2,  0,    1,    0,   2,   // 258
                         1,   13,  0,   2,   0, 0, 0, 5,  0,    0,    0,   8,   // 269
                         1,   14,  0,   2,   0, 0, 0, 4,  'x',  'y',  'z', 0,   // 270
                         1,   26,  0,   5,   0, 0, 0, 1,  0,    0,    0,   13,  // 282
                         0,   0,   0,   0};
    EXPECT_EQ(ReadFile(path), first);

    ASSERT_EQ(DefineTiffImage(file), 1);
    ASSERT_EQ(WriteTiffImageDirectory(file, 1), 0) << "no tags are tags too";
    Bytes second = first;
    second.back() = static_cast<uint8_t>(first.size());
    second.insert(second.end(), 6, 0);
    EXPECT_EQ(ReadFile(path), second);
    CloseTiffFile(file);
    EXPECT_EQ(GetNumberOfImagesInTiffFile(path.c_str()), 2);
}

TEST(DirectoryWriter, RefusesWithoutTouchingAnything) {
    const std::string path = FileOf(BuildTiff({{{ShortTag(256, {1})}, {}}}), "refused.tif");
    const Bytes before = ReadFile(path);
    const TiffFileHandle file = OpenTiffFile(path.c_str(), T_APPEND);
    EXPECT_EQ(WriteTiffImageDirectory(file, 0), TIFF_NO_MEMORY) << "no tags in memory";
    const int32_t image = DefineTiffImage(file);
    const Bytes value(32768);
    for (const uint32_t size : {32768U, 32767U}) {
        ASSERT_EQ(DefineTiffImageInfoBuffer(file, image, 40000, value.data(), 1, size), 1);
        EXPECT_EQ(WriteTiffImageDirectory(file, image), size == 32768 ? TIFF_BAD_TAG : 0);
        EXPECT_EQ(ReadFile(path) == before, size == 32768);
    }
    CloseTiffFile(file);

    const std::string missing = path + ".new";
    const TiffFileHandle created = OpenTiffFile(missing.c_str(), T_CREAT);
    EXPECT_EQ(WriteTiffImageDirectory(created, DefineTiffImage(created)), TIFF_IO_ERROR);
    EXPECT_FALSE(std::filesystem::exists(missing));
    CloseTiffFile(created);
    const OpenedTiff memory(before);
    GetTiffImage(memory.Handle(), 0);
    EXPECT_EQ(WriteTiffImageDirectory(memory.Handle(), 0), TIFF_IO_ERROR);
}

TEST(DirectoryWriter, AFileOfAThousandImagesIsFull) {
    for (const size_t images : {999U, 1000U, 1001U}) {
        const OpenedTiff tiff(BuildTiff(std::vector<ImageSpec>(images)), Storage::kDisk, T_APPEND);
        const bool full = images >= TIFF_MAX_IMAGES;
        EXPECT_EQ(DefineTiffImage(tiff.Handle()), full ? -1 : 0);
        EXPECT_EQ(TiffError(), full ? TIFF_NO_MEMORY : TIFF_SUCCESS);
    }
}

}  // namespace
}  // namespace vellim::test
