// The calls around MMR streams, and their blocks. What becomes of the bits in them is tested with
// the other fax codings.
#include "codec/decode_file.h"
#include "container/streams.h"
#include "support/reference_ccitt.h"
#include "support/test_files.h"

namespace vellim::test {
namespace {

Outcome Decode(StreamHandle stream, int32_t offset, int32_t width, int32_t height) {
    return Take((static_cast<size_t>(width) + 7) / 8, [&](uintptr_t data) {
        return DecodeMMRImage(stream, offset, width, height, 9, TIFF_FILL_LSB_FIRST,
                              TIFF_BIG_ENDIAN, data, CallAnswer);
    });
}

Outcome Decode(const Bytes& bytes, int32_t width, size_t height, int32_t start = 0,
               int32_t offset = 0) {
    const OpenStream stream(OpenFile(FileOf(bytes, "mmr").c_str(), nullptr, OF_READ));
    mSeek(stream.Get(), start, 0);
    return Decode(stream.Get(), offset, width, static_cast<int32_t>(height));
}

TEST(Mmr, WhereItBeginsAndEnds) {
    const Outcome two{0, {{0xF0}, {0x3C}}}, three{0, {{0xF0}, {0x3C}, {0}}}, one{5, {{0xF0}}};
    const std::string path = FileOf({}, "encoded");
    const OpenStream written(OpenFile(path.c_str(), nullptr, OF_READWRITE));
    const Bytes pixels{0xF0, 0x3C};
    const auto encode = [&](uintptr_t data) {
        return EncodeMMRImage(written.Get(), 8, 2, 9, data, CallAnswer);
    };
    EXPECT_EQ(Take(0, encode, 0, LinesOf(pixels, 1)).code, 0U);
    const Bytes stream = ReadFile(path), code = CodeOfBlocks(stream);
    EXPECT_EQ(stream, (Bytes{0xFE, 0x92, 0,    16, 0, 0x19, 0xAB, 0xB0, 1, 6,
                             0x1C, 0,    0x60, 3,  0, 0x18, 0,    0xC0, 6, 0}));
    const auto behind = [](Bytes head, const Bytes& rest) {
        head.insert(head.end(), rest.begin(), rest.end());
        return head;
    };
    const Bytes later = behind({1, 2, 3}, stream);
    const auto cut = [&](const Bytes& head) {  // behind the first line
        return behind(behind({0xFE, 0x92, 0, 5, 0, 0x19, 0xAB, 0xB0, 1}, head), {6, 0x1C});
    };
    const std::tuple<Bytes, size_t, int32_t, int32_t, Outcome> cases[] = {
        {stream, 3, 0, 0, three},  // the closing codes give one line
        {stream, 0, 0, 0, {5, three.lines}},
        {later, 2, 0, 3, two},
        {later, 2, 3, 0, two},
        {later, 2, 0, 0, {6}},
        {stream, 2, 0, 20, two},  // not below the length
        {{0xFE, 0x92, 0}, 2, 0, 0, {6}},
        {behind({0xFE, 0x92, 0, 0}, code), 2, 0, 0, two},
        {behind({0xFE, 0x92, 0, 21}, code), 2, 0, 0, {6}},
        {cut({0xFE, 0x92, 0, 14}), 3, 0, 0, three},  // of AB B0, which the block before has left
        {cut({0xFE, 0x92, 0, 16}), 2, 0, 0, one},
        {cut({0xFE, 0x93, 0, 2}), 2, 0, 0, one},
        {cut({0xFF, 0x92, 0, 2}), 2, 0, 0, one},
    };
    for (const auto& [bytes, height, start, offset, expected] : cases)
        EXPECT_EQ(Decode(bytes, 8, height, start, offset), expected)
            << height << ", " << bytes.size();
    const OwnedBlock block(BlockOf(stream));
    const OpenStream inMemory(mOpen(block.Get(), 20));
    EXPECT_EQ(Decode(inMemory.Get(), 0, 8, 2), (Outcome{6}));
}

TEST(Mmr, BlocksOfOtherSizes) {
    const Picture picture = RandomPicture(3, 600, 2600, 5);
    const EngineRun run{.width = 600, .height = 2600, .rowsPerStrip = 2600, .bits = 1, .key = kMmr};
    const Bytes code = CodeOfBlocks(ReferenceCcittEncoder(run, picture, 2, 2600).stream);
    for (const size_t size : {1U, 2U, 3U, 8U, 9U, 10U, 65520U}) {
        Bytes stream = InBlocks(code, size);
        EXPECT_EQ(Decode(stream, 600, 2600), (Outcome{0, picture.rows})) << size;
        stream[2] = stream[3] = 0;
        EXPECT_EQ(Decode(stream, 600, 2600) == (Outcome{0, picture.rows}), size == 65520) << size;
    }
    EXPECT_EQ(Decode(InBlocks(code, 65521), 600, 2600), (Outcome{6}));
}

}  // namespace
}  // namespace vellim::test
