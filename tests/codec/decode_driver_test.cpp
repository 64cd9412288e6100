// Decoding from tags and from a caller's figures: which engine, which lines, which failure.

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <numeric>

#include "container/streams.h"
#include "platform/guards.h"
#include "platform/memory_blocks.h"
#include "support/tiff_builder.h"
#include "vellim/vellim.h"

namespace vellim::test {
namespace {

struct Decoded {
    int32_t code = 0;
    std::vector<uint32_t> numbers;
    Bytes bytes;
    bool operator==(const Decoded&) const = default;
};

struct Taker {
    size_t lineBytes;
    std::function<uint32_t(uint32_t)> answer;
    Decoded decoded;
};

uint32_t TakeLine(uint8_t* line, uint32_t number, uintptr_t data) {
    auto& taker = *reinterpret_cast<Taker*>(data);
    taker.decoded.numbers.push_back(number);
    taker.decoded.bytes.insert(taker.decoded.bytes.end(), line, line + taker.lineBytes);
    return taker.answer ? taker.answer(number) : 0;
}

// The result and the failure code must agree.
Decoded Ended(Taker& taker, int32_t result) {
    taker.decoded.code = TiffError();
    EXPECT_EQ(result, taker.decoded.code == 0 ? 1 : 0);
    return taker.decoded;
}

struct Part {
    uint32_t firstStrip = 0;
    uint32_t lineCount = 0;
};

Decoded DecodeOpen(TiffFileHandle file, size_t lineBytes, Part part = {},
                   std::function<uint32_t(uint32_t)> answer = {}) {
    EXPECT_EQ(GetTiffImage(file, 0), 1);
    Taker taker{lineBytes, std::move(answer), {}};
    const uint32_t blocks = LiveGlobalBlocks();
    const int32_t result = DecodeTiffImage(file, 0, part.firstStrip, part.lineCount,
                                           reinterpret_cast<uintptr_t>(&taker), TakeLine);
    EXPECT_EQ(LiveGlobalBlocks(), blocks);
    return Ended(taker, result);
}

Decoded DecodeMemory(const ImageSpec& image, size_t lineBytes, Part part = {},
                     std::function<uint32_t(uint32_t)> answer = {}) {
    const Bytes bytes = BuildTiff({image});
    const OwnedBlock block(BlockOf(bytes));
    const TiffFileHandle file =
        OpenTiffInMemory(block.Get(), static_cast<int32_t>(bytes.size()), T_READ);
    Decoded decoded = DecodeOpen(file, lineBytes, part, std::move(answer));
    EXPECT_EQ(GetMemoryTiffHandle(file), block.Get());
    CloseTiffFile(file);
    return decoded;
}

// Ten lines of one byte, each its number, three to a strip, in `strips` strips.
ImageSpec Numbered(size_t strips = 4, uint32_t rowsPerStrip = 3) {
    std::vector<Bytes> data;
    for (size_t strip = 0; strip < strips; ++strip) {
        Bytes lines(10);
        std::iota(lines.begin(), lines.end(), static_cast<uint8_t>(strip * rowsPerStrip));
        data.push_back(lines);
    }
    return SimpleImage(1, 10, 8, 1, 1, 1, rowsPerStrip, data);
}

Decoded LinesOf(uint32_t first, uint32_t count, int32_t code = 0) {
    Decoded lines{code, std::vector<uint32_t>(count), Bytes(count)};
    std::iota(lines.numbers.begin(), lines.numbers.end(), first);
    std::iota(lines.bytes.begin(), lines.bytes.end(), static_cast<uint8_t>(first));
    return lines;
}

// A line of eight white pixels in each coding.
TEST(DecodeTiffImage, TheTagsChooseTheEngine) {
    const uint16_t t4 = TIFF_TAG_T4_OPTIONS, predictor = TIFF_TAG_PREDICTOR;
    const uint16_t fillOrder = TIFF_TAG_FILL_ORDER, jpeg = TIFF_TAG_JPEG_PROC;
    const Bytes bare{0x98}, group3{0x00, 0x19, 0x80}, group3TwoD{0x00, 0x1C, 0xC0};
    const Bytes group4{0x80, 0x08, 0x00, 0x80}, lzw{0x80, 0x00, 0x20, 0x20, 0, 0};
    struct Case {
        uint16_t compression;
        std::vector<TagSpec> more;
        Bytes strip;
        int32_t code;
    };
    const std::vector<Case> cases{
        {1, {}, {0}, 0},
        {2, {}, bare, 0},
        {2, {ShortTag(fillOrder, {2})}, {0x19}, 0},
        {2, {ShortTag(fillOrder, {3})}, bare, 15},
        {3, {}, group3, 0},
        {3, {LongTag(t4, {4})}, group3, 0},
        {3, {LongTag(t4, {1})}, group3TwoD, 0},
        {3, {LongTag(t4, {5})}, group3TwoD, 0},
        {3, {LongTag(t4, {2})}, group3, 11},
        {3, {LongTag(t4, {8})}, group3, 11},
        {4, {LongTag(TIFF_TAG_T6_OPTIONS, {2})}, group4, 0},
        {5, {}, lzw, 0},
        {5, {ShortTag(predictor, {2})}, lzw, 0},
        {5, {ShortTag(predictor, {3})}, lzw, 11},
        {5, {RationalTag(predictor, 2, 0xFFFFFFFFU)}, lzw, 0},
        {6, {}, lzw, 10},
        {6, {ShortTag(jpeg, {2})}, lzw, 11},
        {6, {ShortTag(jpeg, {1})}, lzw, 10},
        {7, {}, lzw, 11},
        {32773, {}, {0x00, 0x00}, 0},
        {0, {}, lzw, 11},
    };
    for (const Case& test : cases) {
        ImageSpec image = SimpleImage(8, 1, 1, 1, test.compression, 0, 1, {test.strip});
        image.tags.insert(image.tags.end(), test.more.begin(), test.more.end());
        const Decoded decoded = DecodeMemory(image, 1);
        EXPECT_EQ(decoded.code, test.code) << test.compression;
        EXPECT_EQ(decoded.bytes, Bytes(test.code == 0 ? 1 : 0, 0)) << test.compression;
    }
}

TEST(DecodeTiffImage, StripsAndLineCounts) {
    struct Case {
        Part part;
        Decoded expected;
    };
    for (const Case& test : std::vector<Case>{{{0, 0}, LinesOf(0, 10)},
                                              {{0, 4}, LinesOf(0, 4)},
                                              {{0, 3}, LinesOf(0, 3)},
                                              {{1, 0}, LinesOf(3, 7)},
                                              {{1, 5}, LinesOf(3, 5)},
                                              {{3, 0}, LinesOf(9, 1)},
                                              {{2, 100}, LinesOf(6, 4)},
                                              {{0, 0xFFFFFFFFU}, LinesOf(0, 10)},
                                              {{4, 0}, LinesOf(0, 0, 3)}}) {
        EXPECT_EQ(DecodeMemory(Numbered(), 1, test.part), test.expected)
            << test.part.firstStrip << ", " << test.part.lineCount;
    }
    EXPECT_EQ(DecodeMemory(Numbered(6), 1), LinesOf(0, 10)) << "surplus strips";
    EXPECT_EQ(DecodeMemory(Numbered(6), 1, {4, 0}), LinesOf(0, 0, 3)) << "a surplus strip";
    EXPECT_EQ(DecodeMemory(Numbered(2), 1), LinesOf(0, 6, 6)) << "too few strips";
    for (const uint32_t rows : {0U, 11U, 0xFFFFFFFFU})
        EXPECT_EQ(DecodeMemory(Numbered(1, rows), 1), LinesOf(0, 10)) << rows << " rows a strip";
}

TEST(DecodeTiffImage, TheCallbacksResult) {
    const auto from = [](uint32_t line, uint32_t result) {
        return [=](uint32_t number) { return number < line ? 0 : result; };
    };
    EXPECT_EQ(DecodeMemory(Numbered(), 1, {}, from(0, 3)), LinesOf(0, 1));
    EXPECT_EQ(DecodeMemory(Numbered(), 1, {}, from(5, 3)), LinesOf(0, 6));
    EXPECT_EQ(DecodeMemory(Numbered(), 1, {}, from(5, 7)), LinesOf(0, 6, 7));
    EXPECT_EQ(DecodeMemory(Numbered(), 1, {}, from(9, 1000)), LinesOf(0, 10, 1000));
}

TEST(DecodeTiffImage, DiskAndMemoryBothByteOrdersBothTableWidths) {
    for (const bool bigEndian : {false, true}) {
        const Bytes bytes = BuildTiff({Numbered()}, bigEndian);
        const TiffFileHandle file = OpenTiffFile(FileOf(bytes, "numbered.tif").c_str(), T_READ);
        EXPECT_EQ(DecodeOpen(file, 1), LinesOf(0, 10));
        GlobalHandle table = 0;
        ASSERT_EQ(GetTiffImageInfoBuffer(file, 0, TIFF_TAG_STRIP_OFFSETS, &table, nullptr, nullptr),
                  1);
        const OwnedBlock owner(table);
        const LockedBlock longs(table);
        const std::vector<uint16_t> shorts(longs.As<uint32_t>(), longs.As<uint32_t>() + 4);
        DefineTiffImageInfoBuffer(file, 0, TIFF_TAG_STRIP_OFFSETS, shorts.data(), TIFF_TYPE_SHORT,
                                  4);
        EXPECT_EQ(DecodeOpen(file, 1), LinesOf(0, 10));
        CloseTiffFile(file);
    }
}

TEST(DecodeTiffImage, WhatCannotBeDecoded) {
    EXPECT_EQ(DecodeMemory(SimpleImage(1, 10, 8, 1, 1, 1, 3, {}), 1), LinesOf(0, 0, 10));
    EXPECT_EQ(DecodeMemory(SimpleImage(1, 10, 16, 1, 1, 1, 3, {{0}}), 1), LinesOf(0, 0, 16));
    EXPECT_EQ(DecodeMemory(SimpleImage(2'000'000, 1, 8, 1, 1, 1, 1, {{0}}), 1), LinesOf(0, 0, 1));

    const std::string path = FileOf(BuildTiff({Numbered()}), "gone.tif");
    const TiffFileHandle file = OpenTiffFile(path.c_str(), T_READ);
    EXPECT_EQ(DecodeTiffImage(file, 0, 0, 0, 0, TakeLine), 0);
    EXPECT_EQ(TiffError(), 3) << "tags not in memory";
    ASSERT_EQ(GetTiffImage(file, 0), 1);
    EXPECT_EQ(DecodeTiffImage(file, 0, 0, 0, 0, nullptr), 0);
    EXPECT_EQ(TiffError(), 3) << "no callback";
    ASSERT_EQ(DeleteFileA(path.c_str()), 1);
    EXPECT_EQ(DecodeOpen(file, 1), LinesOf(0, 0, 6));
    CloseTiffFile(file);
    EXPECT_EQ(DecodeTiffImage(file, 0, 0, 0, 0, TakeLine), 0);
}

// A run that a callback starts has tables of its own.
TEST(DecodeTiffImage, RunsNest) {
    const ImageSpec lzw = SimpleImage(1, 2, 8, 1, 5, 1, 2, {{0x80, 0x10, 0x48, 0x40, 0, 0}});
    const Decoded expected = DecodeMemory(lzw, 1);
    EXPECT_EQ(expected.bytes, (Bytes{0x41, 0x42}));
    const auto nested = [&](uint32_t) {
        EXPECT_EQ(DecodeMemory(lzw, 1), expected);
        return 0U;
    };
    EXPECT_EQ(DecodeMemory(lzw, 1, {}, nested), expected);
}

TEST(DecodeCcitt, OffsetsFillOrdersAndKeys) {
    const Bytes bytes{0xFF, 0x98, 0x98, 0x98};
    const std::string path = FileOf(bytes, "bare.g3");
    const OwnedBlock block(BlockOf(bytes));
    struct Case {
        bool onDisk;
        int32_t start;
        int32_t offset;
        CompressionKey key;
        uint32_t fillOrder;
        int32_t height;
        Decoded expected;
    };
    const std::vector<Case> cases{
        {true, 0, 1, TIFF_KEY_CCITT_1D_BARE, 1, 3, {0, {0, 1, 2}, {0, 0, 0}}},
        {true, 0, 1, TIFF_KEY_CCITT_1D, 9, 3, {0, {0, 1, 2}, {0, 0, 0}}},
        {true, 0, 1, TIFF_KEY_NONE, 2, 3, {0, {0, 1, 2}, {0x19, 0x19, 0x19}}},
        {true, 0, 1, TIFF_KEY_NONE, 1, 4, {5, {0, 1, 2}, {0x98, 0x98, 0x98}}},
        {true, 0, 4, TIFF_KEY_NONE, 1, 1, {0, {0}, {0xFF}}},   // not below the length
        {true, 0, -1, TIFF_KEY_NONE, 1, 1, {0, {0}, {0xFF}}},  // below 1
        {true, 2, 0, TIFF_KEY_NONE, 1, 1, {6, {}, {}}},        // the length is the whole stream's
        {false, 0, 0, TIFF_KEY_NONE, 1, 2, {0, {0, 1}, {0xFF, 0x98}}},
        {false, 0, 2, TIFF_KEY_NONE, 1, 3, {5, {0, 1}, {0xFF, 0x98}}},  // not moved, but cut
        {false, 2, 2, TIFF_KEY_NONE, 1, 2, {0, {0, 1}, {0x98, 0x98}}},
        {false, 0, 0, TIFF_KEY_JPEG + 1, 1, 1, {11, {}, {}}},
        {false, 0, 0, TIFF_KEY_NONE, 1, 0, {5, {0, 1, 2, 3}, bytes}},  // no last line
        {false, 0, 0, TIFF_KEY_NONE, 1, -1, {1, {}, {}}},
    };
    for (const Case& test : cases) {
        const OpenStream stream(test.onDisk ? OpenFile(path.c_str(), nullptr, OF_READ)
                                            : mOpen(block.Get(), 4));
        mSeek(stream.Get(), test.start, 0);
        Taker taker{1, {}, {}};
        const auto data = reinterpret_cast<uintptr_t>(&taker);
        const int32_t result =
            DecodeCcittImageFrom(stream.Get(), test.offset, 8, test.height, test.key,
                                 test.fillOrder, TIFF_LITTLE_ENDIAN, data, TakeLine);
        EXPECT_EQ(Ended(taker, result), test.expected) << &test - cases.data();
        EXPECT_GE(mTell(stream.Get()), 0) << "the stream stays open";
    }
}

TEST(DecodeCcitt, BadArguments) {
    const OwnedBlock block(BlockOf({1, 2}));
    const OpenStream stream(mOpen(block.Get(), 2));
    EXPECT_EQ(DecodeCcittImage(-1, 8, 1, TIFF_KEY_NONE, 0, TakeLine), 0);
    EXPECT_EQ(TiffError(), 6);
    EXPECT_EQ(DecodeCcittImage(stream.Get(), 8, 1, TIFF_KEY_NONE, 0, nullptr), 0);
    EXPECT_EQ(TiffError(), 3);
    EXPECT_EQ(DecodeCcittImage(stream.Get(), 2'000'000, 1, TIFF_KEY_NONE, 0, TakeLine), 0);
    EXPECT_EQ(TiffError(), 1);
    EXPECT_EQ(DecodeCcittImage(stream.Get(), 0, 0, TIFF_KEY_NONE, 0, TakeLine), 1);
}

// What libtiff's tool writes is read back as the pixels that it was given.
TEST(DecodeTiffImage, ReadsWhatAnotherWriterWrote) {
    if (std::system("command -v tiffcp > /dev/null") != 0) GTEST_SKIP() << "no tiffcp";
    struct Shape {
        uint16_t bits, samples, photometric;
        std::vector<const char*> options;
    };
    const std::vector<Shape> shapes{
        {8,
         1,
         1,
         {"lzw", "lzw:2", "packbits", "none -r 7", "lzw -B", "lzw -r 200", "lzw -f lsb2msb"}},
        {8, 3, 2, {"lzw", "lzw:2", "packbits", "lzw:2 -B"}},
        {4, 1, 1, {"lzw", "packbits", "lzw -r 3"}},
        {1, 1, 0, {"lzw", "packbits", "g3:1d", "g3:2d", "g3:2d:fill", "g4", "g4 -f lsb2msb"}},
    };
    for (const Shape& shape : shapes) {
        const size_t lineBytes = (size_t{301} * shape.bits * shape.samples + 7) / 8;
        Bytes pixels(lineBytes * 200);
        for (size_t i = 0; i < pixels.size(); ++i)
            pixels[i] = static_cast<uint8_t>(i / 9 * 31 ^ (i % lineBytes) / 5 * 17);
        if (shape.bits < 8)  // the last byte's spare bits are zero
            for (size_t end = lineBytes - 1; end < pixels.size(); end += lineBytes)
                pixels[end] &= static_cast<uint8_t>(shape.bits == 4 ? 0xF0 : 0xF8);
        const std::string source =
            FileOf(BuildTiff({SimpleImage(301, 200, shape.bits, shape.samples, 1, shape.photometric,
                                          200, {pixels})}),
                   "source.tif");
        for (const char* option : shape.options) {
            const std::string copy = source + ".copy";
            const std::string command =
                "tiffcp -c " + std::string(option) + " " + source + " " + copy;
            ASSERT_EQ(std::system(command.c_str()), 0) << command;
            const TiffFileHandle file = OpenTiffFile(copy.c_str(), T_READ);
            const Decoded decoded = DecodeOpen(file, lineBytes);
            CloseTiffFile(file);
            EXPECT_EQ(decoded.code, 0) << command;
            EXPECT_TRUE(decoded.bytes == pixels) << command;
        }
    }
}

}  // namespace
}  // namespace vellim::test
