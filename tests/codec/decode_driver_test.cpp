// Decoding from tags and from a caller's figures: which engine, which lines, which failure.

#include <gtest/gtest.h>

#include <numeric>

#include "codec/decode_file.h"
#include "container/streams.h"

namespace vellim::test {
namespace {

// Ten lines of one byte, each its number, three to a strip, in `strips` strips.
Bytes Numbered(size_t strips = 4, uint32_t rowsPerStrip = 3) {
    std::vector<Bytes> data(strips, Bytes(10));
    for (size_t i = 0; i < strips; ++i)
        std::iota(data[i].begin(), data[i].end(), static_cast<uint8_t>(i * rowsPerStrip));
    return BuildTiff({SimpleImage(1, 10, 8, 1, 1, 1, rowsPerStrip, data)});
}

Outcome LinesOf(uint32_t first, uint32_t count, uint32_t code = 0) {
    Outcome lines{code};
    for (uint32_t i = 0; i < count; ++i)
        lines.lines.push_back({static_cast<uint8_t>(first + i)});
    return lines;
}

// A line of eight white pixels in each coding.
TEST(DecodeTiffImage, TheTagsChooseTheEngine) {
    constexpr uint16_t t4 = TIFF_TAG_T4_OPTIONS, fill = TIFF_TAG_FILL_ORDER;
    constexpr uint16_t pred = TIFF_TAG_PREDICTOR, jpeg = TIFF_TAG_JPEG_PROC;
    const Bytes raw{0}, mh{0x98}, mirrored{0x19}, g3{0x00, 0x19, 0x80}, g32d{0x00, 0x1C, 0xC0};
    const Bytes g4{0x80, 0x08, 0x00, 0x80}, lzw{0x80, 0x00, 0x20, 0x20, 0, 0}, packed{0, 0};
    struct Case {
        uint16_t compression, tag, value;
        const Bytes& strip;
        uint32_t code;
    };
    const Case cases[] = {
        {1, fill, 1, raw, 0},  {2, fill, 1, mh, 0},         {2, fill, 2, mirrored, 0},
        {2, fill, 3, mh, 15},  {3, t4, 4, g3, 0},           {3, t4, 1, g32d, 0},
        {3, t4, 5, g32d, 0},   {3, t4, 2, g3, 11},          {3, t4, 8, g3, 11},
        {4, fill, 1, g4, 0},   {5, pred, 2, lzw, 0},        {5, pred, 3, lzw, 11},
        {6, fill, 1, raw, 10}, {6, jpeg, 2, raw, 11},       {6, jpeg, 1, raw, 10},
        {7, fill, 1, raw, 11}, {32773, fill, 1, packed, 0}, {0, fill, 1, raw, 11},
    };
    for (const Case& test : cases) {
        ImageSpec image = SimpleImage(8, 1, 1, 1, test.compression, 0, 1, {test.strip});
        image.tags.push_back(ShortTag(test.tag, {test.value}));
        EXPECT_EQ(DecodeFile(BuildTiff({image})), LinesOf(0, test.code == 0, test.code))
            << test.compression << ", " << test.value;
    }
}

TEST(DecodeTiffImage, StripsAndLineCounts) {
    struct Case {
        size_t strips;
        uint32_t rowsPerStrip;
        Part part;  // asked for
        uint32_t count, code;
    };
    constexpr Case kCases[] = {
        {4, 3, {0, 4, 0}, 4, 0},  {4, 3, {1, 0, 3}, 7, 0},    {4, 3, {1, 5, 3}, 5, 0},
        {4, 3, {3, 0, 9}, 1, 0},  {4, 3, {2, 100, 6}, 4, 0},  {4, 3, {0, ~0U, 0}, 10, 0},
        {4, 3, {4, 0, 0}, 0, 3},  {6, 3, {4, 0, 0}, 0, 3},    {2, 3, {0, 0, 0}, 6, 6},
        {1, 0, {0, 0, 0}, 10, 0}, {1, ~0U, {0, 0, 0}, 10, 0}, {0, 3, {0, 0, 0}, 0, 10},
    };
    for (const Case& test : kCases) {
        EXPECT_EQ(DecodeFile(Numbered(test.strips, test.rowsPerStrip), test.part),
                  LinesOf(test.part.firstLine, test.count, test.code))
            << &test - kCases;
    }
}

// Also where the callback starts a run of its own.
TEST(DecodeTiffImage, TheCallbacksResult) {
    const auto decodeUpTo = [](uint32_t line, uint32_t code) {
        return DecodeFile(Numbered(), {}, [=](uint8_t*, uint32_t number) {
            EXPECT_EQ(DecodeFile(Numbered()), LinesOf(0, 10));
            return number < line ? 0 : code;
        });
    };
    EXPECT_EQ(decodeUpTo(5, 3), LinesOf(0, 6));
    EXPECT_EQ(decodeUpTo(5, 7), LinesOf(0, 6, 7));
    EXPECT_EQ(decodeUpTo(9, 1000), LinesOf(0, 10, 1000));
}

TEST(DecodeCcitt, OffsetsFillOrdersAndKeys) {
    const Bytes bytes{0xFF, 0x98, 0x98, 0x98};
    const std::string path = FileOf(bytes, "bare.g3");
    const OwnedBlock block(BlockOf(bytes));
    struct Case {
        bool onDisk;
        int32_t start, offset;
        CompressionKey key;
        uint32_t fillOrder;
        int32_t height;
        Outcome expected;
    };
    const std::vector<Case> cases{
        {true, 0, 1, TIFF_KEY_CCITT_1D, 9, 3, {0, {{0}, {0}, {0}}}},
        {true, 0, 1, TIFF_KEY_NONE, 2, 3, {0, {{0x19}, {0x19}, {0x19}}}},
        {true, 0, 4, TIFF_KEY_NONE, 1, 1, {0, {{0xFF}}}},   // not below the length
        {true, 0, -1, TIFF_KEY_NONE, 1, 1, {0, {{0xFF}}}},  // below 1
        {true, 2, 0, TIFF_KEY_NONE, 1, 1, {6, {}}},         // the length is the whole stream's
        {false, 0, 2, TIFF_KEY_NONE, 1, 3, {5, {{0xFF}, {0x98}}}},  // not moved, but cut
        {false, 2, 2, TIFF_KEY_NONE, 1, 2, {0, {{0x98}, {0x98}}}},
        {false, 0, 0, TIFF_KEY_JPEG + 1, 1, 1, {11, {}}},
        {false, 0, 0, TIFF_KEY_NONE, 1, 0, {5, {{0xFF}, {0x98}, {0x98}, {0x98}}}},  // no last line
        {false, 0, 0, TIFF_KEY_NONE, 1, -1, {1, {}}},
    };
    for (const Case& test : cases) {
        const OpenStream stream(test.onDisk ? OpenFile(path.c_str(), nullptr, OF_READ)
                                            : mOpen(block.Get(), 4));
        mSeek(stream.Get(), test.start, 0);
        const Outcome decoded = Take(1, [&](uintptr_t data) {
            return DecodeCcittImageFrom(stream.Get(), test.offset, 8, test.height, test.key,
                                        test.fillOrder, TIFF_LITTLE_ENDIAN, data, CallAnswer);
        });
        EXPECT_EQ(decoded, test.expected) << &test - cases.data();
    }
}

// Lines that cross the code buffer's end are read again from where they begin: counted from the
// offset, not from the start of the file.
TEST(DecodeCcitt, RawLinesFromAnOffset) {
    constexpr size_t kLineBytes = 997;
    constexpr int32_t kLines = 100;
    Bytes bytes(3 + kLineBytes * kLines);
    for (size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<uint8_t>(i * 7 + i / 251);
    Outcome expected;
    for (const uint8_t* line = &bytes[3]; line <= &bytes.back(); line += kLineBytes)
        expected.lines.emplace_back(line, line + kLineBytes);
    const int32_t file = OpenFile(FileOf(bytes, "raw").c_str(), nullptr, OF_READ);
    EXPECT_TRUE(expected == Take(kLineBytes, [&](uintptr_t data) {
                    return DecodeCcittImageFrom(file, 3, kLineBytes * 8, kLines, TIFF_KEY_NONE, 1,
                                                TIFF_LITTLE_ENDIAN, data, CallAnswer);
                }));
    _lclose(file);
}

}  // namespace
}  // namespace vellim::test
