// Saving a DIB as an image: tags, bits, and what is refused with the file left alone.
#include "vellim/save.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "container/opened_tiff.h"
#include "support/dib_maker.h"
#include "support/test_files.h"
#include "vellim/vellim.h"

namespace vellim::test {
namespace {

uint32_t Number(TiffFileHandle file, uint32_t tag) {
    uint32_t value[2] = {0xEEEEEEEE, 0};
    GetTiffImageInfo(file, 0, tag, value);
    return value[0];
}

TEST(SaveDib, EveryCompressionAndDepthComesBackAsItWas) {
    const std::string path = NewPath("gone.tif");
    int32_t images = 0;
    for (const uint16_t bits : std::initializer_list<uint16_t>{1, 4, 8, 24}) {
        for (uint32_t id = TIFF_SAVE_NONE; id <= TIFF_SAVE_GROUP4; id++) {
            const OwnedBlock dib = MakeDib(61, 300, bits);
            if (bits > 1 && id >= TIFF_SAVE_CCITT_1D) continue;
            ASSERT_EQ(SaveDIBInTiffFile(path.c_str(), dib.Get(), id, 0), 1) << id << TiffError();
            const OwnedBlock back(LoadTiffIntoDIB(path.c_str(), images++, 0));
            EXPECT_TRUE(SamePixels(back.Get(), dib.Get())) << bits << " bits, id " << id;
        }
    }
    EXPECT_EQ(GetNumberOfImagesInTiffFile(path.c_str()), images);
}

TEST(SaveDib, TagsTellResolutionColoursAndMaker) {
    struct Case {
        uint16_t bits;
        bool blackFirst;
        uint32_t id, photometric, compression;
    };
    for (const Case& c : {Case{1, true, 201, 1, 1}, Case{1, false, 208, 0, 4},
                          Case{4, true, 202, 3, 32773}, Case{24, true, 204, 2, 5}}) {
        const std::string path = NewPath("gone.tif");
        const OwnedBlock dib = MakeDib(20, 10, c.bits, c.blackFirst);
        const LockedBlock locked(dib.Get());
        auto& header = *locked.As<BITMAPINFOHEADER>();
        if (c.bits == 4) header.biXPelsPerMeter = 0;
        header.biClrUsed = 0;
        ASSERT_EQ(SaveDIBInTiffFormat(path.c_str(), dib.Get(), c.id, 0), 1);
        EXPECT_EQ(header.biClrUsed, c.bits == 24 ? 0U : 1U << c.bits);
        const TiffFileHandle file = OpenTiffFile(path.c_str(), T_READ);
        GetTiffImage(file, 0);
        EXPECT_EQ(Number(file, 259), c.compression);
        EXPECT_EQ(Number(file, 262), c.photometric);
        EXPECT_EQ(Number(file, 282), c.bits == 4 ? 96U : 300U);
        EXPECT_EQ(Number(file, 283), 96U);
        EXPECT_EQ(Number(file, 296), 2U);
        EXPECT_EQ(Ask(file, 305).value,
                  AsciiTag(0, "VELL.DLL from Corvane Systems, Inc.Version 6.14").value);
        for (const uint32_t tag : {306U, 270U, 315U})
            EXPECT_EQ(Ask(file, tag).value, Bytes{0}) << tag;
        const Bytes map = Ask(file, 320).value;
        ASSERT_EQ(map.size(), c.bits == 4 ? 96U : 0U);
        if (c.bits == 4) {
            EXPECT_EQ(Bytes(&map[30], &map[34]), (Bytes{0, 0x7F, 0, 0xFF})) << "red 15, green 0";
        }
        CloseTiffFile(file);
    }
}

TEST(SaveDib, RefusesWithTheFileLeftAlone) {
    struct Case {
        const char* what;
        uint32_t id;
        void (*spoil)(BITMAPINFOHEADER*);
        int32_t dialog, code;
    };
    const auto nothing = [](BITMAPINFOHEADER*) {};
    const std::vector<Case> cases = {
        {"dialog", 201, nothing, 1, 1},
        {"id", 200, nothing, 0, 11},
        {"id", 210, nothing, 0, 11},
        {"no JPEG", 209, nothing, 0, 11},
        {"CCITT of 8 bits", 205, nothing, 0, 16},
        {"rows beyond the block", 201, [](BITMAPINFOHEADER* h) { h->biHeight++; }, 0, 5},
        {"colours beyond the block", 201, [](BITMAPINFOHEADER* h) { h->biClrUsed = ~0U; }, 0, 5},
        {"top-down", 201, [](BITMAPINFOHEADER* h) { h->biHeight = -1; }, 0, 16},
        {"run-length", 201, [](BITMAPINFOHEADER* h) { h->biCompression = 1; }, 0, 16},
        {"core header", 201, [](BITMAPINFOHEADER* h) { h->biSize = 12; }, 0, 16},
        {"16 bits", 201, [](BITMAPINFOHEADER* h) { h->biBitCount = 16, h->biWidth /= 2; }, 0, 16},
    };
    for (const Case& c : cases) {
        const std::string path = NewPath("gone.tif");
        const OwnedBlock dib = MakeDib(21, 10, 8);
        c.spoil(LockedBlock(dib.Get()).As<BITMAPINFOHEADER>());
        EXPECT_EQ(SaveDIBInTiffFile(path.c_str(), dib.Get(), c.id, c.dialog), 0) << c.what;
        EXPECT_EQ(TiffError(), c.code) << c.what;
        EXPECT_FALSE(std::filesystem::exists(path)) << c.what;
    }
    EXPECT_EQ(SaveDIBInTiffFile("x.tif", 12345, 201, 0), 0);
    EXPECT_EQ(TiffError(), TIFF_NO_MEMORY);
    const OwnedBlock dib = MakeDib(21, 10, 8);
    const std::string noTiff = FileOf({'G', 'I', 'F'}, "no.tif");
    EXPECT_EQ(SaveDIBInTiffFile(noTiff.c_str(), dib.Get(), 201, 0), 0);
    EXPECT_EQ(TiffError(), TIFF_BAD_OPEN_MODE);
    EXPECT_EQ(std::filesystem::file_size(noTiff), 3U);
}

}  // namespace
}  // namespace vellim::test
