// Sizes, headers and colour tables of DIBs, sound and hostile.
#include "bridge/dib.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "platform/duplicate_block.h"
#include "platform/guards.h"

namespace vellim {
namespace {

// A header of depth `depth` with room for `entries` colours behind it, and nothing behind those.
struct Described {
    Described(int32_t depth, uint32_t used, size_t entries) : words(10 + entries, 0xABABABAB) {
        InitDibHeader(Header(), 4, 4, depth);
        Header()->biClrUsed = used;
    }
    BITMAPINFOHEADER* Header() { return reinterpret_cast<BITMAPINFOHEADER*>(words.data()); }
    [[nodiscard]] uint32_t Bytes() const { return static_cast<uint32_t>(words.size() * 4); }
    std::vector<uint32_t> words;  // an entry reads 0x00RRGGBB
};

TEST(Dib, SizesFollowTheHeader) {
    struct Case {
        uint32_t headerBytes, depth, used, colors;
        uint64_t tableBytes;
    };
    for (const Case& c : {Case{40, 1, 0, 2, 8}, Case{40, 4, 0, 16, 64}, Case{40, 8, 0, 256, 1024},
                          Case{40, 24, 0, 0, 0}, Case{40, 8, 5, 5, 20}, Case{40, 24, 9, 9, 36},
                          Case{40, 33, 0, 0, 0}, Case{40, 8, 0x40000000, 0x40000000, 1ULL << 32},
                          Case{12, 1, 0, 2, 6}, Case{12, 4, 0, 16, 48}, Case{12, 24, 0, 0, 0}}) {
        SCOPED_TRACE(testing::Message() << c.headerBytes << ", " << c.depth << ", " << c.used);
        Described dib(1, c.used, 5);
        dib.Header()->biBitCount = static_cast<uint16_t>(c.depth);
        // The core header: 16-bit width, height, planes and depth behind the first word.
        const uint16_t core[] = {12, 0, 1000, 1000, 1, static_cast<uint16_t>(c.depth)};
        if (c.headerBytes == 12) std::memcpy(dib.Header(), core, sizeof core);
        EXPECT_EQ(DibColorCount(dib.Header()), c.colors);
        EXPECT_EQ(DibPaletteSize(dib.Header()), c.tableBytes);
        const uint64_t offset = c.headerBytes + c.tableBytes;
        EXPECT_EQ(DibBitsPointer(dib.Header(), 60),
                  offset <= 60 ? reinterpret_cast<uint8_t*>(dib.Header()) + offset : nullptr);
    }
}

TEST(Dib, HeaderTakesTheNextImageDepth) {
    struct Case {
        int32_t width, height, depth;
        uint16_t bits;
        uint32_t imageBytes, colors;
    };
    for (const Case& c :
         {Case{33, 10, 0, 1, 80, 2}, Case{9, 3, 2, 4, 24, 16}, Case{9, 3, 5, 8, 36, 256},
          Case{3, 2, 16, 24, 24, 0}, Case{-1, 5, 8, 8, 0, 256}, Case{5, -1, 8, 8, 0, 256},
          Case{100000, 50000, 8, 8, 0, 256}}) {
        BITMAPINFOHEADER header;
        std::memset(&header, 0xAA, sizeof header);
        InitDibHeader(&header, c.width, c.height, c.depth);
        const BITMAPINFOHEADER expected = {40,           c.width, c.height, 1,        c.bits,  0,
                                           c.imageBytes, 0,       0,        c.colors, c.colors};
        EXPECT_EQ(std::memcmp(&header, &expected, sizeof header), 0) << c.width << ", " << c.depth;
    }
}

TEST(Dib, ColorTablesGoWithTheDepthAndStayInTheBlock) {
    struct Case {
        int32_t depth;
        size_t room, entry;
        uint32_t color;
    };
    for (const Case& c :
         {Case{1, 3, 0, 0}, Case{1, 3, 1, 0xFFFFFF}, Case{1, 3, 2, 0xABABABAB},
          Case{4, 16, 7, 0xC0C0C0}, Case{4, 16, 8, 0x808080}, Case{4, 16, 9, 0xFF0000},
          Case{4, 16, 12, 0x0000FF}, Case{8, 256, 1, 85}, Case{8, 256, 4, 36 << 8},
          Case{8, 256, 255, 0xFCFCFF}, Case{24, 2, 0, 0xABABABAB}, Case{8, 2, 1, 85}}) {
        Described dib(c.depth, 0, c.room);
        FillDefaultColorTable(dib.Header(), dib.Bytes());
        EXPECT_EQ(dib.words.at(10 + c.entry), c.color) << c.depth << " bits, " << c.entry;
    }
    struct Indices {
        int32_t depth;
        uint32_t used, words;  // 0 words: nothing is rewritten
    };
    for (const Indices& c : {Indices{8, 0, 256}, Indices{8, 5, 5}, Indices{4, 0, 16},
                             Indices{1, 2, 0}, Indices{24, 0, 0}, Indices{8, 600, 0}}) {
        Described dib(c.depth, c.used, 256);
        EXPECT_EQ(MakeDibPaletteIndices(dib.Header(), dib.Bytes()), c.words != 0 ? 1 : 0);
        uint16_t table[512];
        std::memcpy(table, &dib.words[10], sizeof table);
        for (uint32_t i = 0; i < 512; i++)
            ASSERT_EQ(table[i], i < c.words ? i : 0xABAB) << c.depth << " bits, " << c.used;
    }
    Described lying(8, 0, 3);
    lying.Header()->biSize = 0xFFFFFFF0;
    FillDefaultColorTable(lying.Header(), lying.Bytes());
    EXPECT_EQ(MakeDibPaletteIndices(lying.Header(), lying.Bytes()), 0);
}

TEST(DuplicateGlobalBlock, CopiesBytesAndLeavesBothUnlocked) {
    const OwnedBlock source(GlobalAlloc(GHND, 70001)), empty(GlobalAlloc(GHND, 0));
    std::memset(LockedBlock(source.Get()).As<uint8_t>(), 0x5A, 70001);
    const OwnedBlock copy(DuplicateGlobalBlock(source.Get())),
        none(DuplicateGlobalBlock(empty.Get()));
    ASSERT_TRUE(none && GlobalSize(copy.Get()) == 70001 && copy.Get() != source.Get());
    EXPECT_EQ(std::memcmp(GlobalLock(copy.Get()), GlobalLock(source.Get()), 70001), 0);
    EXPECT_EQ(GlobalUnlock(source.Get()) + GlobalUnlock(copy.Get()), 0) << "there are other locks";
    EXPECT_EQ(DuplicateGlobalBlock(0), 0U);
}

}  // namespace
}  // namespace vellim
