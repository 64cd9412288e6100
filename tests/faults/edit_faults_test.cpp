// Editing and copying when a call fails, and when the process is killed.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "platform/memory_blocks.h"
#include "support/faults.h"
#include "support/tiff_builder.h"
#include "vellim/edit.h"
#include "vellim/failures.h"
#include "vellim/files.h"

namespace vellim::test {
namespace {

Bytes Read(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

// Three images so long that each directory is read by itself, with tags that are read from the file
// again and with tables too long for an entry.
Bytes ThreeImages(bool bigEndian) {
    const TagSpec doubles = {40000, 12, 2, Bytes(16, 7)};
    std::vector<ImageSpec> images;
    for (uint8_t i = 1; i <= 3; i++) {
        images.push_back(SimpleImage(9, 4, 8, 1, 1, 1, 2, {Bytes(18, i), Bytes(6000, 0x55)}));
        images.back().tags.push_back(doubles);
    }
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
        copies.push_back(Read(alone));
    }
    return copies;
}

TEST(EditedFile, IsTheOldOneOrTheNewOneWhateverFails) {
    const std::string path = FileOf(kOld, "edited.tif");
    ASSERT_EQ(AddTag(path), 1);
    const Bytes edited = Read(path);
    const uint32_t blocks = LiveGlobalBlocks();
    const uint32_t struck = WithEveryFault([&](Fault& fault) {
        FileOf(kOld, "edited.tif");
        SetTiffError(TIFF_SUCCESS);
        int32_t result = 0;
        {
            const Armed armed(fault);
            result = AddTag(path);
        }
        EXPECT_TRUE(Read(path) == (result == 1 ? edited : kOld)) << fault;
        EXPECT_TRUE(result == 1 || TiffError() != TIFF_SUCCESS) << fault;
        EXPECT_EQ(LiveGlobalBlocks(), blocks) << fault;
    });
    EXPECT_GT(struck, 100U);

    const uint32_t killed =
        KilledEverywhere([&] { FileOf(kOld, "edited.tif"); }, [&] { AddTag(path); },
                         [&](const Fault& fault) {
                             const Bytes now = Read(path);
                             EXPECT_TRUE(now == kOld || now == edited) << fault;
                         });
    EXPECT_GT(killed, 100U);
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
        const auto check = [&](const Fault& fault, int32_t least, int32_t most) {
            const int32_t now = GetNumberOfImagesInTiffFile(path.c_str());
            if (isNew && now == -1 && least == 0) return;
            EXPECT_TRUE(now == stored + least || now == stored + most) << fault << ": " << now;
            EXPECT_TRUE(Images(path, stored) == before) << fault;
        };
        const uint32_t struck = WithEveryFault([&](Fault& fault) {
            prepare();
            SetTiffError(TIFF_SUCCESS);
            const uint32_t blocks = LiveGlobalBlocks();
            int32_t result = 0;
            {
                const Armed armed(fault);
                result = copy();
            }
            const int32_t code = TiffError();
            EXPECT_EQ(LiveGlobalBlocks(), blocks) << fault;
            check(fault, result, result);
            EXPECT_TRUE(result == 1 || code != TIFF_SUCCESS) << fault;
        });
        EXPECT_GT(struck, 40U);
        const uint32_t killed =
            KilledEverywhere(prepare, copy, [&](const Fault& fault) { check(fault, 0, 1); });
        EXPECT_GT(killed, 40U);
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
