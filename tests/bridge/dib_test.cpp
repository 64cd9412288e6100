// Sizes, headers and colour tables of DIBs, sound and hostile.
#include "bridge/dib.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <vector>

namespace vellim {
namespace {

// A header of depth `depth` with room for `entries` colours behind it, and nothing behind those.
struct Described {
    Described(int32_t depth, uint32_t used, size_t entries) : words(10 + entries, 0xABABABAB) {
        InitDibHeader(Header(), 9, 3, depth);
        if (used != 0) Header()->biClrUsed = used;
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
    for (const Case& c : {Case{40, 1, 0, 2, 8}, Case{40, 8, 0, 256, 1024}, Case{40, 24, 9, 9, 36},
                          Case{40, 8, 1U << 30U, 1U << 30U, 1ULL << 32}, Case{12, 4, 0, 16, 48}}) {
        Described dib(1, 0, 5);
        dib.Header()->biClrUsed = c.used;
        dib.Header()->biBitCount = static_cast<uint16_t>(c.depth);
        // The core header: 16-bit width, height, planes and depth behind the first word.
        const uint16_t core[] = {12, 0, 1000, 1000, 1, static_cast<uint16_t>(c.depth)};
        if (c.headerBytes == 12) std::memcpy(dib.Header(), core, sizeof core);
        EXPECT_EQ(DibColorCount(dib.Header()), c.colors);
        EXPECT_EQ(DibBitsOffset(dib.Header()), c.headerBytes + c.tableBytes);
        EXPECT_EQ(DibBitsPointer(dib.Header(), 60) == nullptr, c.headerBytes + c.tableBytes > 60);
    }
}

// The depth rises to the next that images have; the tables go with it and stay in their room.
TEST(Dib, HeaderAndColorTablesGoWithTheDepth) {
    struct Case {
        int32_t depth;
        uint32_t used, room, entry, color, indices;  // no indices: the table isn't rewritten
    };
    for (const Case& c : {Case{0, 0, 256, 1, 0xFFFFFF, 0}, Case{1, 2, 256, 2, 0xABABABAB, 0},
                          Case{2, 5, 256, 7, 0xC0C0C0, 5}, Case{4, 0, 256, 9, 0xFF0000, 16},
                          Case{5, 0, 256, 255, 0xFCFCFF, 256}, Case{8, 0, 2, 1, 85, 0},
                          Case{8, 600, 256, 4, 36 << 8, 0}, Case{24, 0, 256, 0, 0xABABABAB, 0}}) {
        Described dib(c.depth, c.used, c.room);
        const uint32_t bits = c.depth < 2 ? 1 : c.depth < 5 ? 4 : c.depth < 24 ? 8 : 24;
        const uint32_t colors = bits == 24 ? 0 : 1U << bits, rowBytes = (9 * bits + 31) / 32 * 4;
        EXPECT_EQ(std::vector(dib.words.begin(), dib.words.begin() + 10),
                  (std::vector<uint32_t>{40, 9, 3, bits << 16U | 1, 0, rowBytes * 3, 0, 0,
                                         c.used != 0 ? c.used : colors, colors}));
        FillDefaultColorTable(dib.Header(), dib.Bytes());
        EXPECT_EQ(dib.words.at(10 + c.entry), c.color) << c.depth << " bits";
        std::fill(dib.words.begin() + 10, dib.words.end(), 0xABABABAB);
        EXPECT_EQ(MakeDibPaletteIndices(dib.Header(), dib.Bytes()), c.indices != 0 ? 1 : 0);
        for (uint32_t i = 0; i < 2 * c.room; i++)
            ASSERT_EQ(dib.words[10 + i / 2] >> i % 2 * 16 & 0xFFFF, i < c.indices ? i : 0xABAB);
    }
}

}  // namespace
}  // namespace vellim
