// The CCITT decoders beside the plain reference decoder, on sound and on damaged data: the same
// lines and the same code, whatever comes.
#include <gtest/gtest.h>

#include <array>
#include <random>

#include "codec/engines.h"
#include "support/reference_ccitt.h"
#include "vellim/failures.h"

namespace vellim::test {
namespace {

constexpr std::pair<CompressionKey, Engine> kCodings[] = {
    {TIFF_KEY_CCITT_1D, Decode1DNoEol},     {TIFF_KEY_GROUP3_1D, Decode1DEol},
    {TIFF_KEY_GROUP3_1D_FILL, Decode1DEol}, {TIFF_KEY_GROUP3_2D, Decode2DEol},
    {TIFF_KEY_GROUP3_2D_FILL, Decode2DEol}, {TIFF_KEY_GROUP4, DecodeGroup4},
};
using Coding = std::pair<CompressionKey, Engine>;

Outcome Decode(const Coding& coding, const Bytes& stream, uint32_t width, uint32_t height,
               bool byReference = false) {
    const EngineRun run{.width = width,
                        .height = height,
                        .rowsPerStrip = height,
                        .bits = 1,
                        .key = coding.first,
                        .offsets = {0},
                        .stream = stream};
    return byReference ? ReferenceCcitt(run) : RunEngine(coding.second, run);
}

// `place` tells one check of a test from another.
void ExpectAsReference(const Coding& coding, const Bytes& stream, uint32_t width, uint32_t height,
                       size_t place) {
    ASSERT_TRUE(Decode(coding, stream, width, height) ==
                Decode(coding, stream, width, height, true))
        << "key " << coding.first << ", at " << place;
}

// A code that begins in the last seven bits of a stream can't be read, and lines on byte boundaries
// may end in such a one: they need room behind them.
void ExpectRoundTrip(const Coding& coding, const Picture& picture) {
    Bytes stream = EncodeReference(coding.first, picture);
    stream.push_back(0);
    const auto height = static_cast<uint32_t>(picture.rows.size());
    const Outcome got = Decode(coding, stream, static_cast<uint32_t>(picture.width), height);
    ASSERT_TRUE(got.code == 0 && got.lines == picture.rows) << coding.first << ", " << height;
}

Bytes Truncated(const Bytes& bytes, size_t size) {
    return {bytes.begin(), bytes.begin() + static_cast<ptrdiff_t>(size)};
}

// White from the left, black behind it; white lines between keep such a line from being coded by
// the one before.
TEST(CcittDecoder, EveryRunLengthOfEitherColor) {
    constexpr int32_t kWidth = 5208;
    Picture picture{kWidth, {}};
    Bytes row(kWidth / 8, 0xFF);
    for (size_t white = 0; white < kWidth; ++white) {
        picture.rows.push_back(row);
        picture.rows.emplace_back(kWidth / 8);
        row[white / 8] &= static_cast<uint8_t>(0x7F >> white % 8);
    }
    for (const Coding& coding : kCodings)
        ASSERT_NO_FATAL_FAILURE(ExpectRoundTrip(coding, picture));
}

TEST(CcittDecoder, PicturesComeBackAcrossBuffers) {
    for (const auto& [width, height, meanRun] : std::initializer_list<std::array<int32_t, 3>>{
             {1, 40, 1}, {8, 40, 2}, {1728, 400, 4}, {33, 40000, 8}, {1'000'000, 1, 9000}}) {
        const Picture picture = RandomPicture(7, width, height, meanRun);
        for (const Coding& coding : kCodings)
            ASSERT_NO_FATAL_FAILURE(ExpectRoundTrip(coding, picture));
    }
}

// Short streams are cut at every byte. Of a long one, what was in hand at a buffer's end decides
// what can be read at the stream's: it is cut behind a crossing, with codes of all lengths there.
TEST(CcittDecoder, Truncated) {
    for (const Coding& coding : kCodings) {
        for (const uint32_t width : {5U, 24U, 100U}) {
            const Picture picture = RandomPicture(width, static_cast<int32_t>(width), 40, 6);
            const Bytes stream = EncodeReference(coding.first, picture);
            for (size_t size = 1; size < stream.size(); ++size)
                ExpectAsReference(coding, Truncated(stream, size), width, 40, size);
        }
        Picture picture = RandomPicture(3, 600, 1200, 5);
        picture.rows.insert(picture.rows.end(), 90, Bytes(600 / 8));
        const Bytes stream = EncodeReference(coding.first, picture);
        ASSERT_GT(stream.size(), 32767U + 50);
        std::vector<size_t> sizes{32767, 32768, 32769, 32770, 32772, 32775, 32776};
        for (size_t before = 1; before < 40; ++before)
            sizes.push_back(stream.size() - before);
        for (const size_t size : sizes)
            ExpectAsReference(coding, Truncated(stream, size), 600, 1290, size);
    }
}

// Where vertical modes alone follow a horizontal one, how many lines the stream's end still gives
// hangs on where that one stood, however long ago.
TEST(CcittDecoder, WhitePagesWithoutAClosingCode) {
    for (const auto& [bytes, leads] : {std::pair{12U, 40U}, std::pair{33000U, 3U}}) {
        for (size_t lead = 0; lead < leads; ++lead) {
            Bytes stream(bytes, 0xFF);
            for (const size_t zero : {0U, 1U, 3U, 5U, 6U})
                stream[(lead + zero) / 8] &= static_cast<uint8_t>(~(0x80U >> (lead + zero) % 8));
            ExpectAsReference({TIFF_KEY_GROUP4, DecodeGroup4}, stream, 9, bytes * 8, lead);
        }
    }
}

// Flipped bits in sound data, and noise of any density.
TEST(CcittDecoder, Damage) {
    std::mt19937 engine(11);
    const auto random = [&] { return static_cast<uint32_t>(engine()); };
    for (const Coding& coding : kCodings) {
        for (size_t round = 0; round < 400; ++round) {
            const uint32_t width = 1 + random() % (round % 4 == 0 ? 9 : 300);
            const Picture picture =
                RandomPicture(random(), static_cast<int32_t>(width), 30, 1.0 + random() % 20);
            Bytes stream = EncodeReference(coding.first, picture);
            for (uint32_t flips = 1 + random() % 4; flips != 0; --flips)
                stream[random() % stream.size()] ^= static_cast<uint8_t>(1U << random() % 8);
            ASSERT_NO_FATAL_FAILURE(ExpectAsReference(coding, stream, width, 30, round));

            Bytes noise(1 + random() % 600);
            for (uint8_t& byte : noise) {
                const uint32_t bits = random(), other = random();
                byte = static_cast<uint8_t>(round % 3 == 0 ? bits & other : bits | other);
            }
            ASSERT_NO_FATAL_FAILURE(ExpectAsReference(coding, noise, width, 50, round));
        }
    }
}

TEST(CcittDecoder, RunsWithoutPixelsHaveABound) {
    // A horizontal mode of two empty runs goes nowhere: 21 bits, 8 times, are 21 bytes.
    constexpr std::string_view kMode = "001001101010000110111";
    Bytes stream(size_t{21} * 10000);
    for (size_t bit = 0; bit < stream.size() * 8; ++bit)
        if (kMode[bit % kMode.size()] == '1')
            stream[bit / 8] |= static_cast<uint8_t>(0x80U >> bit % 8);
    EXPECT_EQ(Decode({TIFF_KEY_GROUP4, DecodeGroup4}, stream, 100, 100), (Outcome{TIFF_BAD_CODE}));
}

}  // namespace
}  // namespace vellim::test
