// Decoding from tags and from a caller's figures: which engine, which lines, which failure.

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <map>
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

struct Part {
    uint32_t firstStrip = 0;
    uint32_t lineCount = 0;
};
using Answer = std::function<uint32_t(uint32_t number)>;

struct Taker {
    size_t lineBytes;
    Answer answer;
    Decoded decoded;
};

uint32_t TakeLine(uint8_t* line, uint32_t number, uintptr_t data) {
    auto& taker = *reinterpret_cast<Taker*>(data);
    taker.decoded.numbers.push_back(number);
    taker.decoded.bytes.insert(taker.decoded.bytes.end(), line, line + taker.lineBytes);
    return taker.answer ? taker.answer(number) : 0;
}

// Runs `decode` with a taker's address; its result and the failure code must agree, and no block
// stay behind.
template <typename Decode>
Decoded Take(size_t lineBytes, const Answer& answer, Decode decode) {
    Taker taker{lineBytes, answer, {}};
    const uint32_t blocks = LiveGlobalBlocks();
    const int32_t result = decode(reinterpret_cast<uintptr_t>(&taker));
    taker.decoded.code = TiffError();
    EXPECT_EQ(LiveGlobalBlocks(), blocks);
    EXPECT_EQ(result, taker.decoded.code == 0 ? 1 : 0);
    return taker.decoded;
}

Decoded DecodeOpen(TiffFileHandle file, size_t lineBytes, Part part = {},
                   const Answer& answer = {}) {
    EXPECT_EQ(GetTiffImage(file, 0), 1);
    return Take(lineBytes, answer, [&](uintptr_t data) {
        return DecodeTiffImage(file, 0, part.firstStrip, part.lineCount, data, TakeLine);
    });
}

Decoded DecodeMemory(const ImageSpec& image, Part part = {}, const Answer& answer = {}) {
    const Bytes bytes = BuildTiff({image});
    const OwnedBlock block(BlockOf(bytes));
    const TiffFileHandle file =
        OpenTiffInMemory(block.Get(), static_cast<int32_t>(bytes.size()), T_READ);
    Decoded decoded = DecodeOpen(file, 1, part, answer);
    EXPECT_EQ(GetMemoryTiffHandle(file), block.Get());
    CloseTiffFile(file);
    return decoded;
}

// Ten lines of one byte, each its number, three to a strip, in `strips` strips.
ImageSpec Numbered(size_t strips = 4, uint32_t rowsPerStrip = 3) {
    std::vector<Bytes> data;
    for (size_t strip = 0; strip < strips; ++strip) {
        data.emplace_back(10);
        std::iota(data.back().begin(), data.back().end(),
                  static_cast<uint8_t>(strip * rowsPerStrip));
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
    constexpr uint16_t t4 = TIFF_TAG_T4_OPTIONS, t6 = TIFF_TAG_T6_OPTIONS;
    constexpr uint16_t fill = TIFF_TAG_FILL_ORDER, pred = TIFF_TAG_PREDICTOR;
    constexpr uint16_t jpeg = TIFF_TAG_JPEG_PROC, twoD = 0x100, mirrored = 0x200;
    const std::map<uint16_t, Bytes> strips{{1, {0}},
                                           {2, {0x98}},
                                           {2 | mirrored, {0x19}},
                                           {3, {0x00, 0x19, 0x80}},
                                           {3 | twoD, {0x00, 0x1C, 0xC0}},
                                           {4, {0x80, 0x08, 0x00, 0x80}},
                                           {5, {0x80, 0x00, 0x20, 0x20, 0, 0}},
                                           {32773, {0, 0}}};
    const auto decode = [&](uint16_t compression, const TagSpec& tag, uint16_t strip) {
        const auto found = strips.find(strip);
        const Bytes& bytes = found == strips.end() ? strips.at(5) : found->second;
        ImageSpec image = SimpleImage(8, 1, 1, 1, compression, 0, 1, {bytes});
        if (tag.tag != 0) image.tags.push_back(tag);
        return DecodeMemory(image);
    };
    struct Case {
        uint16_t compression, tag, value, variant;
        int32_t code;
    };
    constexpr Case kCases[] = {
        {1, 0, 0, 0, 0},     {2, 0, 0, 0, 0},     {2, fill, 2, mirrored, 0}, {2, fill, 3, 0, 15},
        {3, 0, 0, 0, 0},     {3, t4, 4, 0, 0},    {3, t4, 1, twoD, 0},       {3, t4, 5, twoD, 0},
        {3, t4, 2, 0, 11},   {3, t4, 8, 0, 11},   {4, t6, 2, 0, 0},          {5, 0, 0, 0, 0},
        {5, pred, 2, 0, 0},  {5, pred, 3, 0, 11}, {6, 0, 0, 0, 10},          {6, jpeg, 2, 0, 11},
        {6, jpeg, 1, 0, 10}, {7, 0, 0, 0, 11},    {32773, 0, 0, 0, 0},       {0, 0, 0, 0, 11},
    };
    for (const Case& test : kCases) {
        const auto strip = static_cast<uint16_t>(test.compression | test.variant);
        const Decoded decoded = decode(test.compression, ShortTag(test.tag, {test.value}), strip);
        EXPECT_EQ(decoded.code, test.code) << test.compression << ", " << test.value;
        EXPECT_EQ(decoded.bytes, Bytes(test.code == 0 ? 1 : 0, 0)) << test.compression;
    }
    EXPECT_EQ(decode(5, RationalTag(pred, 2, ~0U), 5).code, 0);
}

TEST(DecodeTiffImage, StripsAndLineCounts) {
    struct Case {
        size_t strips;
        uint32_t rowsPerStrip, firstStrip, lineCount;  // asked for
        uint32_t first, count;                         // that come
        int32_t code;
    };
    constexpr Case kCases[] = {
        {4, 3, 0, 0, 0, 10, 0},  {4, 3, 0, 4, 0, 4, 0},    {4, 3, 0, 3, 0, 3, 0},
        {4, 3, 1, 0, 3, 7, 0},   {4, 3, 1, 5, 3, 5, 0},    {4, 3, 3, 0, 9, 1, 0},
        {4, 3, 2, 100, 6, 4, 0}, {4, 3, 0, ~0U, 0, 10, 0}, {4, 3, 4, 0, 0, 0, 3},
        {6, 3, 0, 0, 0, 10, 0},  {6, 3, 4, 0, 0, 0, 3},    {2, 3, 0, 0, 0, 6, 6},
        {1, 0, 0, 0, 0, 10, 0},  {1, 11, 0, 0, 0, 10, 0},  {1, ~0U, 0, 0, 0, 10, 0},
        {0, 3, 0, 0, 0, 0, 10},
    };
    for (const Case& test : kCases) {
        const Part part{test.firstStrip, test.lineCount};
        EXPECT_EQ(DecodeMemory(Numbered(test.strips, test.rowsPerStrip), part),
                  LinesOf(test.first, test.count, test.code))
            << &test - kCases;
    }
    EXPECT_EQ(DecodeMemory(SimpleImage(1, 10, 16, 1, 1, 1, 3, {{0}})).code, 16);
    EXPECT_EQ(DecodeMemory(SimpleImage(2'000'000, 1, 8, 1, 1, 1, 1, {{0}})).code, 1);
}

TEST(DecodeTiffImage, TheCallbacksResult) {
    const auto decodeUpTo = [](uint32_t line, uint32_t answer) {
        return DecodeMemory(Numbered(), {},
                            [=](uint32_t number) { return number < line ? 0 : answer; });
    };
    EXPECT_EQ(decodeUpTo(0, 3), LinesOf(0, 1));
    EXPECT_EQ(decodeUpTo(5, 3), LinesOf(0, 6));
    EXPECT_EQ(decodeUpTo(5, 7), LinesOf(0, 6, 7));
    EXPECT_EQ(decodeUpTo(9, 1000), LinesOf(0, 10, 1000));
}

TEST(DecodeTiffImage, DiskFilesBothByteOrdersBothTableWidths) {
    for (const bool bigEndian : {false, true}) {
        const std::string path = FileOf(BuildTiff({Numbered()}, bigEndian), "numbered.tif");
        const TiffFileHandle file = OpenTiffFile(path.c_str(), T_READ);
        EXPECT_EQ(DecodeTiffImage(file, 0, 0, 0, 0, TakeLine), 0);
        EXPECT_EQ(TiffError(), 3) << "tags not in memory";
        EXPECT_EQ(DecodeOpen(file, 1), LinesOf(0, 10));
        EXPECT_EQ(DecodeTiffImage(file, 0, 0, 0, 0, nullptr), 0);
        EXPECT_EQ(TiffError(), 3) << "no callback";
        GlobalHandle table = 0;
        GetTiffImageInfoBuffer(file, 0, TIFF_TAG_STRIP_OFFSETS, &table, nullptr, nullptr);
        const OwnedBlock owner(table);
        const LockedBlock longs(table);
        const std::vector<uint16_t> shorts(longs.As<uint32_t>(), longs.As<uint32_t>() + 4);
        DefineTiffImageInfoBuffer(file, 0, TIFF_TAG_STRIP_OFFSETS, shorts.data(), TIFF_TYPE_SHORT,
                                  4);
        EXPECT_EQ(DecodeOpen(file, 1), LinesOf(0, 10));
        ASSERT_EQ(DeleteFileA(path.c_str()), 1);
        EXPECT_EQ(DecodeOpen(file, 1), LinesOf(0, 0, 6));
        CloseTiffFile(file);
        EXPECT_EQ(DecodeTiffImage(file, 0, 0, 0, 0, TakeLine), 0);
    }
}

// A run that a callback starts has tables of its own.
TEST(DecodeTiffImage, RunsNest) {
    const ImageSpec lzw = SimpleImage(1, 2, 8, 1, 5, 1, 2, {{0x80, 0x10, 0x48, 0x40, 0, 0}});
    const Decoded expected = DecodeMemory(lzw);
    EXPECT_EQ(expected.bytes, (Bytes{0x41, 0x42}));
    EXPECT_EQ(DecodeMemory(lzw, {},
                           [&](uint32_t) {
                               EXPECT_EQ(DecodeMemory(lzw), expected);
                               return 0U;
                           }),
              expected);
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
        const Decoded decoded = Take(1, {}, [&](uintptr_t data) {
            return DecodeCcittImageFrom(stream.Get(), test.offset, 8, test.height, test.key,
                                        test.fillOrder, TIFF_LITTLE_ENDIAN, data, TakeLine);
        });
        EXPECT_EQ(decoded, test.expected) << &test - cases.data();
        EXPECT_GE(mTell(stream.Get()), 0) << "the stream stays open";
    }
}

// Data of several buffers that begin inside the stream, in lines that don't divide a buffer.
TEST(DecodeCcitt, RawLinesFromAnOffset) {
    Bytes bytes(100000);
    for (size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<uint8_t>(i * 37 + i / 256);
    const OpenStream stream(OpenFile(FileOf(bytes, "raw.bin").c_str(), nullptr, OF_READ));
    for (const int32_t lineBytes : {7, 100, 9000, 40000}) {
        const Decoded decoded = Take(static_cast<size_t>(lineBytes), {}, [&](uintptr_t data) {
            return DecodeCcittImageFrom(stream.Get(), 1000, lineBytes * 8, 99000 / lineBytes,
                                        TIFF_KEY_NONE, 1, TIFF_LITTLE_ENDIAN, data, TakeLine);
        });
        EXPECT_EQ(decoded.code, 0);
        ASSERT_EQ(std::ssize(decoded.bytes), 99000 / lineBytes * lineBytes);
        EXPECT_TRUE(std::equal(decoded.bytes.begin(), decoded.bytes.end(), &bytes[1000]));
    }
    // From further on than the length allows for, lines come as long as whole buffers do.
    mSeek(stream.Get(), 77, 0);
    const Decoded cut = Take(100, {}, [&](uintptr_t data) {
        return DecodeCcittImage(stream.Get(), 800, 999, TIFF_KEY_NONE, data, TakeLine);
    });
    EXPECT_EQ(cut.code, 6);
    EXPECT_EQ(cut.numbers.size(), 3U * 32767 / 100);
}

TEST(DecodeCcitt, BadArguments) {
    const OwnedBlock block(BlockOf({1, 2}));
    const OpenStream stream(mOpen(block.Get(), 2));
    const auto codeOf = [](StreamHandle from, int32_t width, int32_t height,
                           LineCallback callback) {
        return DecodeCcittImage(from, width, height, TIFF_KEY_NONE, 0, callback) ? 0 : TiffError();
    };
    EXPECT_EQ(codeOf(-1, 8, 1, TakeLine), 6);
    EXPECT_EQ(codeOf(stream.Get(), 8, 1, nullptr), 3);
    EXPECT_EQ(codeOf(stream.Get(), 2'000'000, 1, TakeLine), 1);
    EXPECT_EQ(codeOf(stream.Get(), 0, 0, TakeLine), 0);
}

// What libtiff's tool writes is read back as the pixels that it was given.
TEST(DecodeTiffImage, ReadsWhatAnotherWriterWrote) {
    if (std::system("command -v tiffcp > /dev/null") != 0) GTEST_SKIP() << "no tiffcp";
    struct Shape {
        uint16_t bits, samples, photometric;
        uint8_t lastByte;  // without the bits behind the line's last pixel
        std::vector<std::string> options;
    };
    for (const Shape& shape : std::initializer_list<Shape>{
             {8, 1, 1, 0xFF, {"lzw", "lzw:2", "packbits", "none -r 7", "lzw -B -f lsb2msb"}},
             {8, 3, 2, 0xFF, {"lzw", "lzw:2", "packbits", "lzw:2 -B"}},
             {4, 1, 1, 0xF0, {"lzw", "packbits", "lzw -r 3"}},
             {1, 1, 0, 0xF8, {"lzw", "packbits", "g3:1d", "g3:2d", "g4", "g4 -f lsb2msb"}},
             {1, 1, 0, 0xF8, {"g3:1d:fill", "g3:2d:fill"}},
         }) {
        const size_t lineBytes = (size_t{301} * shape.bits * shape.samples + 7) / 8;
        Bytes pixels(lineBytes * 200);
        for (size_t i = 0; i < pixels.size(); ++i)
            pixels[i] = static_cast<uint8_t>(i / 9 * 31 ^ (i % lineBytes) / 5 * 17);
        for (size_t end = lineBytes - 1; end < pixels.size(); end += lineBytes)
            pixels[end] &= shape.lastByte;
        const ImageSpec image =
            SimpleImage(301, 200, shape.bits, shape.samples, 1, shape.photometric, 200, {pixels});
        const std::string source = FileOf(BuildTiff({image}), "source.tif");
        const std::string copy = source + ".copy";
        std::string arguments = " " + source;
        arguments += " " + copy;
        for (const std::string& option : shape.options) {
            const std::string command = "tiffcp -c " + option + arguments;
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
