// Saving when a call fails, and when the process is killed: the images that were there stay, and a
// save that tells of success has stored the picture.
#include <gtest/gtest.h>

#include <cstring>

#include "faults/whatever_fails.h"
#include "support/dib_maker.h"
#include "vellim/vellim.h"

namespace vellim::test {
namespace {

// The directories lie too far apart to be read at once, so that a chain may seem to end early.
const Bytes kOld = BuildTiff({SimpleImage(8, 2, 1, 1, 1, 1, 2, {Bytes(2, 9)}),
                              SimpleImage(80, 200, 8, 1, 1, 1, 200, {Bytes(16000, 7)})},
                             true);

// What must hold of the file at `path`, where `stored` images were, after a save that gave
// `result`, or 0 or 1 for a save that never came back (-1).
void Check(const std::string& path, int32_t stored, int32_t result, GlobalHandle dib,
           const Fault& fault) {
    const int32_t images = std::max(0, GetNumberOfImagesInTiffFile(path.c_str()));
    const int32_t added = result < 0 ? images - stored : result;
    EXPECT_TRUE(added == 0 || added == 1) << fault;
    EXPECT_EQ(images, stored + added) << fault;
    if (stored != 0 && added == 0) {
        Bytes now = ReadFile(path);
        now.resize(std::min(now.size(), kOld.size()));
        EXPECT_TRUE(now == kOld) << fault;
    }
    if (added == 0) return;
    const OwnedBlock saved(LoadTiffIntoDIB(path.c_str(), stored, 0));
    EXPECT_TRUE(SamePixels(saved.Get(), dib)) << fault;
}

TEST(SavedTo, KeepsItsImagesWhateverFails) {
    struct Case {
        uint32_t compression;
        uint16_t bits;
        bool isNew;
    };
    const std::string path = FileOf(kOld, "saved.tif");
    for (const Case& c : {Case{TIFF_SAVE_GROUP4, 1, false}, Case{TIFF_SAVE_GROUP3_2D, 1, true},
                          Case{TIFF_SAVE_LZW, 4, false}, Case{TIFF_SAVE_PACKBITS, 8, true}}) {
        const OwnedBlock dib = MakeDib(4096 / c.bits, 40, c.bits);
        const auto prepare = [&] {
            FileOf(kOld, "saved.tif");
            if (c.isNew) std::filesystem::remove(path);
        };
        const auto save = [&] {
            return SaveDIBInTiffFile(path.c_str(), dib.Get(), c.compression, 0);
        };
        const int32_t stored = c.isNew ? 0 : 2;
        WhateverFails(30, prepare, save, [&](const Fault& fault, int32_t result) {
            Check(path, stored, result, dib.Get(), fault);
        });
    }
}

uint32_t FillLine(uint8_t* line, uint32_t number, uintptr_t /*data*/) {
    std::memset(line, static_cast<int>(number), 1000);
    return TIFF_LINE_GO_ON;
}

// In memory a failed growth leaves the images that were there, and the next image goes behind them.
TEST(MemoryTiff, OutlivesEveryFailureOfMemory) {
    const auto add = [](TiffFileHandle file) {
        const int32_t image = DefineTiffImage(file);
        BITMAP bitmap{};
        bitmap.bmWidth = 1000;
        bitmap.bmHeight = 80;
        bitmap.bmPlanes = 1;
        bitmap.bmBitsPixel = 8;
        DefineTiffImageInfo(file, image, TIFF_TAG_PHOTOMETRIC, TIFF_TYPE_SHORT, 1);
        if (DefineGeneralTags(file, image, bitmap) != 0) return 0;
        return EncodeTiffImage(file, image, 0, FillLine);
    };
    const uint32_t struck = WithEveryFault([&](Fault& fault) {
        const TiffFileHandle file = OpenTiffInMemory(0, 0, T_CREAT);
        int32_t stored = add(file);
        {
            const Armed armed(fault);
            stored += add(file);
        }
        stored += add(file);
        EXPECT_GE(stored, 2) << fault;
        const OwnedBlock block(GetMemoryTiffHandle(file));
        CloseTiffFile(file);
        const auto size = static_cast<int32_t>(GlobalSize(block.Get()));
        const TiffFileHandle again = OpenTiffInMemory(block.Get(), size, T_READ);
        EXPECT_EQ(NumberOfTiffImages(again, TIFF_ALL_IMAGES), stored) << fault;
        CloseTiffFile(again);
    });
    EXPECT_GT(struck, 10U);
}

}  // namespace
}  // namespace vellim::test
