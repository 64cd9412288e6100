// The CCITT encoders beside the plain reference encoder: the same bytes, byte counts and code.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <tuple>

#include "codec/engines.h"
#include "container/streams.h"
#include "support/encoder_run.h"
#include "support/reference_ccitt.h"
#include "vellim/encode.h"
#include "vellim/failures.h"

namespace vellim::test {
namespace {

struct Coding {
    CompressionKey key;
    Engine encode, decode;
};
constexpr Coding kCodings[] = {
    {TIFF_KEY_CCITT_1D_BARE, Encode1D, Decode1DNoEol},
    {TIFF_KEY_CCITT_1D, Encode1D, Decode1DNoEol},
    {TIFF_KEY_GROUP3_1D, Encode1D, Decode1DEol},
    {TIFF_KEY_GROUP3_1D_FILL, Encode1D, Decode1DEol},
    {TIFF_KEY_GROUP3_2D, EncodeGroup3TwoD, Decode2DEol},
    {TIFF_KEY_GROUP3_2D_FILL, EncodeGroup3TwoD, Decode2DEol},
    {TIFF_KEY_GROUP4, EncodeGroup4, DecodeGroup4},
};

const Coding& CodingOf(CompressionKey key) {
    return *std::ranges::find(kCodings, key, &Coding::key);
}

EngineRun RunOf(const Coding& coding, const Picture& picture, size_t rowsPerStrip) {
    return {.width = static_cast<uint32_t>(picture.width),
            .height = static_cast<uint32_t>(picture.rows.size()),
            .rowsPerStrip = static_cast<uint32_t>(rowsPerStrip),
            .bits = 1,
            .key = coding.key};
}

// Gives `stop` at line `stopAt`. Bits behind the width are noise on every other line.
Answer LinesOf(const Picture& picture, size_t stopAt = SIZE_MAX, uint32_t stop = 0) {
    return [&picture, stopAt, stop](uint8_t* line, uint32_t number) {
        if (number == stopAt) return stop;
        const Bytes& row = picture.rows[number];
        std::copy(row.begin(), row.end(), line);
        const int32_t inLastByte = picture.width % 8;
        if (inLastByte != 0 && number % 2 != 0)
            line[row.size() - 1] |= static_cast<uint8_t>(0xFF >> inLastByte);
        return 0U;
    };
}

Encoded Encode(const Coding& coding, const Picture& picture, size_t rowsPerStrip) {
    return RunEncoder(coding.encode, RunOf(coding, picture, rowsPerStrip), LinesOf(picture));
}

void ExpectAsReference(const Coding& coding, const Picture& picture, size_t rowsPerStrip,
                       int32_t k = 2) {
    ASSERT_EQ(SetKfactor(k), 1);
    EngineRun run = RunOf(coding, picture, rowsPerStrip);
    const Encoded got = Encode(coding, picture, rowsPerStrip);
    ASSERT_TRUE(got == EncodeStrips(run, picture, k, run.height))
        << "key " << run.key << ", width " << run.width << ", rows " << rowsPerStrip;
    // Later strips of Group 3 don't begin as a decoder expects it.
    if (rowsPerStrip < run.height && (run.key & 0xFFFF) == TIFF_KEY_GROUP3_1D) return;
    run.offsets = got.offsets;
    run.stream = got.stream;
    run.stream.push_back(0);  // for the look-ahead of a line that ends with the stream
    const Outcome back = RunEngine(coding.decode, run);
    ASSERT_TRUE(back.code == 0 && back.lines == picture.rows) << run.key << ", " << run.width;
}

TEST(CcittEncoder, BytesWorkedOutByHand) {
    const Picture white{8, {Bytes{0}}}, whites{8, std::vector(8, Bytes{0})};
    const Picture black{8, {Bytes{0xFF}}}, dot{1, {Bytes{0x80}}};
    const std::tuple<CompressionKey, const Picture&, Bytes, uint32_t> cases[] = {
        {TIFF_KEY_CCITT_1D, dot, {0x35, 0x40}, 2},
        {TIFF_KEY_GROUP3_1D, white, {0, 0x19, 0x80, 8, 0, 0x80, 8, 0, 0x80}, 2},
        {TIFF_KEY_GROUP3_1D_FILL,
         white,
         {0, 0, 0x19, 0x80, 0, 0x10, 0, 0x10, 0, 0x10, 0, 0x10, 0},
         3},
        {TIFF_KEY_GROUP3_2D, white, {0, 0x1C, 0xC0, 4, 0, 0x18, 0, 0xC0, 6, 0, 0x30, 1, 0x80}, 4},
        {TIFF_KEY_GROUP3_2D_FILL,
         white,
         {0, 3, 0x98, 0, 2, 0, 0, 3, 0, 3, 0, 3, 0, 3, 0, 3, 0, 3},
         6},
        {TIFF_KEY_GROUP4, white, {0x80, 8, 0, 0x80}, 4},
        {TIFF_KEY_GROUP4, whites, {0xFF, 0, 0x10, 1, 0}, 5},  // with the step of a full byte
        {TIFF_KEY_GROUP4, black, {0x26, 0xA2, 0x80, 8, 0, 0x80}, 6},
    };
    SetKfactor(2);
    for (const auto& [key, picture, bytes, count] : cases)
        EXPECT_TRUE(Encode(CodingOf(key), picture, 8) == (Encoded{0, bytes, {0}, {count}})) << key;
}

TEST(CcittEncoder, EverySmallPicture) {
    for (int32_t width = 0; width <= 4; ++width)
        for (int32_t height = 1; height <= 3; ++height)
            for (int32_t bits = 0; bits < 1 << (width * height); ++bits) {
                Picture picture{width, {}};
                for (int32_t y = 0; y < height; ++y) {
                    const int row = (bits >> (y * width) & ((1 << width) - 1)) << (8 - width);
                    picture.rows.emplace_back(width == 0 ? 0 : 1, static_cast<uint8_t>(row));
                }
                for (const Coding& coding : kCodings)
                    ASSERT_NO_FATAL_FAILURE(ExpectAsReference(coding, picture, 3));
            }
}

TEST(CcittEncoder, RandomPicturesInStrips) {
    std::vector<std::array<int32_t, 2>> sizes{{1728, 300}, {2560, 9},  {2561, 9},
                                              {5200, 9},   {33280, 4}, {40, 9000}};
    for (int32_t width = 1; width <= 70; ++width)
        sizes.push_back({width, 20});
    for (const auto& [width, height] : sizes)
        for (const int32_t meanRun : {1, 12, 3000}) {
            const auto seed = static_cast<uint32_t>(width + meanRun);
            const Picture picture = RandomPicture(seed, width, height, meanRun);
            for (const int32_t rows : {height, 1, 7})
                for (const Coding& coding : kCodings)
                    ASSERT_NO_FATAL_FAILURE(ExpectAsReference(
                        coding, picture, static_cast<size_t>(rows), 2 + (width + rows) % 4));
        }
}

// White from the left, black behind it, and the other way round; white lines between keep such a
// line from being coded by the one before.
TEST(CcittEncoder, EveryRunLengthOfEitherColor) {
    constexpr size_t kWidth = 5208;
    Picture picture{kWidth, {}};
    Bytes row(kWidth / 8, 0xFF), other(kWidth / 8);
    for (size_t first = 0; first < kWidth; ++first) {
        picture.rows.insert(picture.rows.end(), {row, Bytes(kWidth / 8), other});
        row[first / 8] ^= static_cast<uint8_t>(0x80 >> first % 8);
        other[first / 8] ^= static_cast<uint8_t>(0x80 >> first % 8);
    }
    for (const CompressionKey key : {TIFF_KEY_CCITT_1D, TIFF_KEY_GROUP4})
        ASSERT_NO_FATAL_FAILURE(ExpectAsReference(CodingOf(key), picture, picture.rows.size()));
}

TEST(CcittEncoder, WideLines) {
    for (const int32_t meanRun : {2, 9000, 1'000'000})
        for (const int32_t width : {16384, 16385, 100'000, 1'000'000}) {
            const Picture picture = RandomPicture(5, width, 3, meanRun);
            for (const CompressionKey key : {TIFF_KEY_CCITT_1D, TIFF_KEY_GROUP3_1D})
                ASSERT_NO_FATAL_FAILURE(ExpectAsReference(CodingOf(key), picture, 3));
        }
    const Picture tooWide{33281, {Bytes(4161)}};
    for (const CompressionKey key : {TIFF_KEY_GROUP3_2D, TIFF_KEY_GROUP4})
        EXPECT_TRUE(Encode(CodingOf(key), tooWide, 1) == (Encoded{TIFF_BAD_CODE, {}, {0}, {0}}));
}

TEST(CcittEncoder, CallbackStopsOrFails) {
    const Picture picture = RandomPicture(9, 100, 10, 6);
    SetKfactor(3);
    for (const Coding& coding : kCodings)
        for (size_t line = 0; line < picture.rows.size(); ++line) {
            const EngineRun run = RunOf(coding, picture, 4);
            const auto stopped =
                RunEncoder(coding.encode, run, LinesOf(picture, line, TIFF_LINE_STOP));
            EXPECT_TRUE(stopped == EncodeStrips(run, picture, 3, line)) << run.key << ", " << line;
            const auto failed = RunEncoder(coding.encode, run, LinesOf(picture, line, 7));
            EXPECT_TRUE(failed.code == 7 && failed.stream.empty());  // no buffer was full
        }
}

// At the end of a short picture, and early in a long one.
TEST(CcittEncoder, StreamThatRefusesWrites) {
    const std::string path = FileOf({1}, "read_only");
    for (const auto& [height, least, most] : {std::array{1U, 1U, 1U}, {2000U, 20U, 400U}}) {
        const Picture picture = RandomPicture(9, 2000, static_cast<int32_t>(height), 6);
        for (const Coding& coding : kCodings) {
            const OpenStream stream(OpenFile(path.c_str(), nullptr, OF_READ));
            const Answer lines = LinesOf(picture);
            uint32_t asked = 0;
            WithState(RunOf(coding, picture, height), [&](CodecState& state) {
                state.Stream = stream.Get();
                state.StripOffsets = BlockOf(Bytes(4));
                state.StripByteCounts = BlockOf(Bytes(4));
                state.Callback = CallAnswer;
                state.CallbackData = reinterpret_cast<uintptr_t>(&lines);
                EXPECT_EQ(coding.encode(state), uint32_t{TIFF_IO_ERROR});
                asked = state.LineNumber;
            });
            EXPECT_TRUE(asked >= least && asked <= most) << asked;
        }
    }
}

TEST(CcittEncoder, KFactorBelowTwoChangesNothing) {
    const Picture picture = RandomPicture(3, 50, 12, 5);
    ASSERT_EQ(SetKfactor(5), 1);
    for (const int32_t k : {1, 0, -1})
        EXPECT_EQ(SetKfactor(k), 0);
    const EngineRun run = RunOf(CodingOf(TIFF_KEY_GROUP3_2D), picture, 12);
    EXPECT_TRUE(RunEncoder(EncodeGroup3TwoD, run, LinesOf(picture)) ==
                EncodeStrips(run, picture, 5, 12));
    SetKfactor(2);
}

}  // namespace
}  // namespace vellim::test
