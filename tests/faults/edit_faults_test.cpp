// Editing and copying when a call fails, and when the process is killed.
#include <gtest/gtest.h>

#include "faults/whatever_fails.h"
#include "vellim/edit.h"
#include "vellim/files.h"

namespace vellim::test {
namespace {

// Three images so long that each directory is read by itself, with tags that are read from the file
// again and with tables too long for an entry.
Bytes ThreeImages(bool bigEndian) {
    std::vector<ImageSpec> images;
    for (uint8_t i = 1; i <= 3; i++)
        images.push_back(With(SimpleImage(9, 4, 8, 1, 1, 1, 2, {Bytes(18, i), Bytes(6000, 0x55)}),
                              {{40000, 12, 2, Bytes(16, 7)}}));
    return BuildTiff(images, bigEndian);
}

const Bytes kOld = ThreeImages(true);

int32_t AddTag(const std::string& path) {
    return AddTiffTagToImage(path.c_str(), 1, 269, 2, "a name", 7);
}

// The first `images` images as they are now, each copied alone into a file of its own.
std::vector<Bytes> Images(const std::string& path, int32_t images) {
    std::vector<Bytes> copies;
    const std::string alone = FileOf({}, "alone.tif");
    for (int32_t i = 0; i < images; i++) {
        EXPECT_EQ(CopyTiffImageInFile(path.c_str(), i, alone.c_str(), T_CREAT), 1) << i;
        copies.push_back(ReadFile(alone));
    }
    return copies;
}

TEST(EditedFile, IsTheOldOneOrTheNewOneWhateverFails) {
    const std::string path = FileOf(kOld, "edited.tif");
    ASSERT_EQ(AddTag(path), 1);
    const Bytes edited = ReadFile(path);
    WhateverFails(
        100, [&] { FileOf(kOld, "edited.tif"); }, [&] { return AddTag(path); },
        [&](const Fault& fault, int32_t result) {
            const Bytes now = ReadFile(path);
            EXPECT_TRUE((result != 1 && now == kOld) || (result != 0 && now == edited)) << fault;
        });
}

TEST(FileCopiedTo, KeepsItsImagesWhateverFails) {
    for (const bool isNew : {false, true}) {
        const std::string from = FileOf(ThreeImages(false), "from.tif");
        const std::string path = FileOf(kOld, "to.tif");
        const int32_t stored = isNew ? 0 : 3;
        const std::vector<Bytes> before = Images(path, stored);
        const auto prepare = [&] {
            FileOf(kOld, "to.tif");
            if (isNew) std::filesystem::remove(path);
        };
        const auto copy = [&] { return CopyTiffImageInFile(from.c_str(), 1, path.c_str(), 2); };
        WhateverFails(40, prepare, copy, [&](const Fault& fault, int32_t result) {
            const int32_t now = GetNumberOfImagesInTiffFile(path.c_str());
            if (isNew && now == -1 && result != 1) return;
            EXPECT_TRUE((result != 1 && now == stored) || (result != 0 && now == stored + 1))
                << fault << ": " << now;
            EXPECT_TRUE(Images(path, stored) == before) << fault;
        });
    }
}

// A handle whose copy failed is as before: the next copy through it hooks its image in where the
// chain really ends.
TEST(HandleCopiedTo, IsGoodForTheNextCopy) {
    const std::string path = FileOf(kOld, "to.tif");
    const TiffFileHandle from = OpenTiffFile(FileOf(kOld, "from.tif").c_str(), T_READ);
    for (uint32_t at = 1; at <= 3; at++) {
        FileOf(kOld, "to.tif");
        const TiffFileHandle to = OpenTiffFile(path.c_str(), T_APPEND);
        Fault fault{Call::kWrite, at};
        {
            const Armed armed(fault);
            EXPECT_EQ(CopyTiffImage(from, 0, to), 0) << fault;
        }
        EXPECT_EQ(NumberOfTiffImages(to, TIFF_ALL_IMAGES), 3) << fault;
        EXPECT_EQ(CopyTiffImage(from, 0, to) + CopyTiffImage(from, 1, to), 2) << fault;
        EXPECT_EQ(GetNumberOfImagesInTiffFile(path.c_str()), 5) << fault;
        CloseTiffFile(to);
    }
    CloseTiffFile(from);
}

}  // namespace
}  // namespace vellim::test
