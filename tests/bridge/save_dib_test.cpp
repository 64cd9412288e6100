// Saving a DIB as an image: tags, bits, and what is refused with the file left alone.
#include "vellim/save.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>

#include "bridge/dib.h"
#include "platform/guards.h"
#include "support/tiff_builder.h"
#include "vellim/vellim.h"

namespace vellim::test {
namespace {

// A DIB with a rising colour table; `blackFirst` gives entry 0 as black, else white.
OwnedBlock MakeDib(int32_t width, int32_t height, uint16_t bits, bool blackFirst = true) {
    BITMAPINFOHEADER header;
    InitDibHeader(&header, width, height, bits);
    header.biBitCount = bits;
    header.biXPelsPerMeter = 11811;
    header.biYPelsPerMeter = 3780;
    const auto size = static_cast<uint32_t>(DibBitsOffset(&header) + header.biSizeImage);
    OwnedBlock dib(GlobalAlloc(GHND, size));
    const LockedBlock locked(dib.Get());
    auto* bytes = locked.As<uint8_t>();
    std::memcpy(bytes, &header, sizeof header);
    for (uint32_t i = 0; i < header.biClrUsed; i++) {
        const auto grey = static_cast<uint8_t>(i * 255 / (header.biClrUsed - 1));
        const RGBQUAD colour = {grey, uint8_t(255 - grey), uint8_t(grey / 2), 0};
        std::memcpy(bytes + 40 + 4 * i, &colour, 4);
    }
    if (bits == 1) std::memset(bytes + 40, blackFirst ? 0 : 0xFF, 3);
    for (uint32_t i = 0; i < header.biSizeImage; i++)
        bytes[DibBitsOffset(&header) + i] = static_cast<uint8_t>(i * 37 + i / 5);
    return dib;
}

std::string NewPath() {
    const std::string path = FileOf({}, "gone") + ".tif";
    std::filesystem::remove(path);
    return path;
}

std::vector<uint32_t> Shorts(TiffFileHandle file, uint32_t tag) {
    GlobalHandle value = 0;
    GetTiffImageInfoBuffer(file, 0, tag, &value, nullptr, nullptr);
    const OwnedBlock owned(value);
    const LockedBlock locked(value);
    const auto* shorts = locked.As<uint16_t>();
    return locked ? std::vector<uint32_t>(shorts, shorts + locked.Size() / 2)
                  : std::vector<uint32_t>{};
}

std::string Text(TiffFileHandle file, uint32_t tag) {
    GlobalHandle value = 0;
    GetTiffImageInfoBuffer(file, 0, tag, &value, nullptr, nullptr);
    const OwnedBlock owned(value);
    const LockedBlock locked(value);
    return locked ? std::string(locked.As<char>(), locked.Size()) : "missing";
}

uint32_t Number(TiffFileHandle file, uint32_t tag) {
    uint32_t value[2] = {0xEEEEEEEE, 0};
    GetTiffImageInfo(file, 0, tag, value);
    return value[0];
}

TEST(SaveDib, EveryCompressionAndDepthComesBackAsItWas) {
    const std::string path = NewPath();
    int32_t images = 0;
    for (const uint16_t bits : std::initializer_list<uint16_t>{1, 4, 8, 24}) {
        for (uint32_t id = TIFF_SAVE_NONE; id <= TIFF_SAVE_GROUP4; id++) {
            const OwnedBlock dib = MakeDib(61, 300, bits);
            if (bits > 1 && id >= TIFF_SAVE_CCITT_1D) continue;
            ASSERT_EQ(SaveDIBInTiffFile(path.c_str(), dib.Get(), id, 0), 1) << id << TiffError();
            const OwnedBlock back(LoadTiffIntoDIB(path.c_str(), images++, 0));
            ASSERT_EQ(GlobalSize(back.Get()), GlobalSize(dib.Get()));
            const LockedBlock is(back.Get()), was(dib.Get());
            const auto stride = (61U * bits + 31) / 32 * 4;
            const uint32_t line = 61U * bits / 8;  // whole bytes: padding isn't kept
            for (uint32_t row = is.Size() - 300 * stride; row < is.Size(); row += stride)
                ASSERT_EQ(std::memcmp(is.As<uint8_t>() + row, was.As<uint8_t>() + row, line), 0)
                    << bits << " bits, id " << id << ", byte " << row;
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
        const std::string path = NewPath();
        const OwnedBlock dib = MakeDib(20, 10, c.bits, c.blackFirst);
        {
            const LockedBlock locked(dib.Get());
            locked.As<BITMAPINFOHEADER>()->biXPelsPerMeter = c.bits == 4 ? 0 : 11811;
            locked.As<BITMAPINFOHEADER>()->biClrUsed = 0;
        }
        ASSERT_EQ(SaveDIBInTiffFormat(path.c_str(), dib.Get(), c.id, 0), 1);
        const LockedBlock locked(dib.Get());
        EXPECT_EQ(locked.As<BITMAPINFOHEADER>()->biClrUsed, c.bits == 24 ? 0U : 1U << c.bits);
        const TiffFileHandle file = OpenTiffFile(path.c_str(), T_READ);
        GetTiffImage(file, 0);
        EXPECT_EQ(Number(file, 259), c.compression);
        EXPECT_EQ(Number(file, 262), c.photometric);
        EXPECT_EQ(Number(file, 282), c.bits == 4 ? 96U : 300U);
        EXPECT_EQ(Number(file, 283), 96U);
        EXPECT_EQ(Number(file, 296), 2U);
        EXPECT_EQ(Text(file, 305),
                  std::string("VELL.DLL from Corvane Systems, Inc.Version 6.14") + '\0');
        for (const uint32_t tag : {306U, 270U, 315U})
            EXPECT_EQ(Text(file, tag), std::string(1, '\0')) << tag;
        const std::vector<uint32_t> map = Shorts(file, 320);
        ASSERT_EQ(map.size(), c.bits == 4 ? 48U : 0U);
        if (c.bits == 4) {
            EXPECT_EQ(map[15] << 16 | map[16], 0x7F00FF00U) << "red 15, green 0";
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
        const std::string path = NewPath();
        const OwnedBlock dib = MakeDib(21, 10, 8);
        {
            const LockedBlock locked(dib.Get());
            c.spoil(locked.As<BITMAPINFOHEADER>());
        }
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

TEST(SaveDib, AnExistingBigEndianFileKeepsItsOrder) {
    const auto image = SimpleImage(8, 1, 1, 1, 1, 1, 1, {{0x5A}});
    const std::string path = FileOf(BuildTiff({image}, true), "big.tif");
    const OwnedBlock dib = MakeDib(8, 2, 1);
    ASSERT_EQ(SaveDIBInTiffFile(path.c_str(), dib.Get(), 203, 0), 1);
    EXPECT_EQ(GetNumberOfImagesInTiffFile(path.c_str()), 2);
    const OwnedBlock back(LoadTiffIntoDIB(path.c_str(), 1, 0));
    EXPECT_EQ(GlobalSize(back.Get()), GlobalSize(dib.Get()));
}

}  // namespace
}  // namespace vellim::test
