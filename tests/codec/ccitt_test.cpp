// The CCITT encoders and decoders beside plain reference ones: of any picture the same bytes and
// byte counts, of any data, sound or damaged, the same lines; and the same code, whatever comes.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>
#include <string>
#include <tuple>

#include "codec/engines.h"
#include "container/streams.h"
#include "platform/guards.h"
#include "support/reference_ccitt.h"
#include "vellim/encode.h"
#include "vellim/failures.h"

namespace vellim::test {
namespace {

struct Coding {
    CompressionKey key;
    Engine encode, decode;
};

// The stream must be a disk file.
uint32_t DecodeMmrOnDisk(CodecState& state) {
    const LockedBlock block(mBlock(state.Stream));
    const auto* bytes = block.As<uint8_t>();
    const std::string path = FileOf({bytes, bytes + state.StreamLimit}, "mmr");
    const OpenStream file(OpenFile(path.c_str(), nullptr, OF_READ));
    state.Stream = file.Get();
    return DecodeMmr(state);
}

constexpr Coding kCodings[] = {
    {TIFF_KEY_CCITT_1D_BARE, Encode1D, Decode1DNoEol},
    {TIFF_KEY_CCITT_1D, Encode1D, Decode1DNoEol},
    {TIFF_KEY_GROUP3_1D, Encode1D, Decode1DEol},
    {TIFF_KEY_GROUP3_1D_FILL, Encode1D, Decode1DEol},
    {TIFF_KEY_GROUP3_2D, EncodeGroup3TwoD, Decode2DEol},
    {TIFF_KEY_GROUP3_2D_FILL, EncodeGroup3TwoD, Decode2DEol},
    {TIFF_KEY_GROUP4, EncodeGroup4, DecodeGroup4},
    {kMmr, EncodeMmr, DecodeMmrOnDisk},
};

const Coding& CodingOf(CompressionKey key) {
    return *std::ranges::find(kCodings, key, &Coding::key);
}

EngineRun RunOf(const Coding& coding, const Picture& picture, size_t rowsPerStrip) {
    if (coding.key == kMmr) rowsPerStrip = picture.rows.size();
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

void ExpectRoundTrip(const Coding& coding, const Picture& picture, size_t rowsPerStrip,
                     int32_t k = 2) {
    ASSERT_EQ(SetKfactor(k), 1);
    for (const int32_t tooSmall : {1, 0, -1})  // changes nothing
        ASSERT_EQ(SetKfactor(tooSmall), 0);
    EngineRun run = RunOf(coding, picture, rowsPerStrip);
    const Encoded got = Encode(coding, picture, rowsPerStrip);
    ASSERT_TRUE(got == ReferenceCcittEncoder(run, picture, k, run.height))
        << "key " << run.key << ", width " << run.width << ", rows " << rowsPerStrip;
    // Later strips of Group 3 don't begin as a decoder expects it.
    if (rowsPerStrip < run.height && (run.key & 0xFFFF) == TIFF_KEY_GROUP3_1D) return;
    run.offsets = got.offsets;
    run.stream = got.stream;
    run.stream.push_back(0);  // for the look-ahead of a line that ends with the stream
    const Outcome back = RunEngine(coding.decode, run);
    ASSERT_TRUE(back.code == 0 && back.lines == picture.rows) << run.key << ", " << run.width;
}

// `stream` as a picture in a single strip. `place` tells one check of a test from another.
void ExpectSameLines(const Coding& coding, const Bytes& stream, int32_t width, size_t height,
                     size_t place) {
    EngineRun run = RunOf(coding, {width, std::vector<Bytes>(height)}, height);
    run.offsets = {0};
    run.stream = stream;
    ASSERT_TRUE(RunEngine(coding.decode, run) == ReferenceCcitt(run))
        << "key " << run.key << ", at " << place;
}

Bytes Truncated(const Bytes& bytes, size_t size) {
    return {bytes.begin(), bytes.begin() + static_cast<ptrdiff_t>(size)};
}

TEST(Ccitt, BytesWorkedOutByHand) {
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

TEST(Ccitt, EverySmallPicture) {
    for (int32_t width = 0; width <= 4; ++width)
        for (int32_t height = 1; height <= 3; ++height)
            for (int32_t bits = 0; bits < 1 << (width * height); ++bits) {
                Picture picture{width, {}};
                for (int32_t y = 0; y < height; ++y) {
                    const int row = (bits >> (y * width) & ((1 << width) - 1)) << (8 - width);
                    picture.rows.emplace_back(width == 0 ? 0 : 1, static_cast<uint8_t>(row));
                }
                for (const Coding& coding : kCodings)
                    ASSERT_NO_FATAL_FAILURE(ExpectRoundTrip(coding, picture, 3));
            }
}

TEST(Ccitt, RandomPicturesInStrips) {
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
                    ASSERT_NO_FATAL_FAILURE(ExpectRoundTrip(
                        coding, picture, static_cast<size_t>(rows), 2 + (width + rows) % 4));
        }
}

// White from the left, black behind it, and the other way round; white lines between keep such a
// line from being coded by the one before.
TEST(Ccitt, EveryRunLengthOfEitherColor) {
    constexpr size_t kWidth = 5208;
    Picture picture{kWidth, {}};
    Bytes row(kWidth / 8, 0xFF), other(kWidth / 8);
    for (size_t first = 0; first < kWidth; ++first) {
        picture.rows.insert(picture.rows.end(), {row, Bytes(kWidth / 8), other});
        row[first / 8] ^= static_cast<uint8_t>(0x80 >> first % 8);
        other[first / 8] ^= static_cast<uint8_t>(0x80 >> first % 8);
    }
    for (const CompressionKey key :
         {TIFF_KEY_CCITT_1D, TIFF_KEY_GROUP3_1D, TIFF_KEY_GROUP3_2D, TIFF_KEY_GROUP4})
        ASSERT_NO_FATAL_FAILURE(ExpectRoundTrip(CodingOf(key), picture, picture.rows.size()));
}

// 32,767 bytes of code, to the bit: the last block of an MMR stream is empty then.
TEST(Ccitt, CodeThatFillsTheBuffer) {
    ExpectRoundTrip(CodingOf(kMmr), {8, std::vector(262028, Bytes{0})}, 262028);
}

TEST(Ccitt, WideLines) {
    for (const int32_t meanRun : {2, 9000, 1'000'000})
        for (const int32_t width : {16384, 16385, 100'000, 1'000'000}) {
            const Picture picture = RandomPicture(5, width, 3, meanRun);
            for (const CompressionKey key : {TIFF_KEY_CCITT_1D, TIFF_KEY_GROUP3_1D})
                ASSERT_NO_FATAL_FAILURE(ExpectRoundTrip(CodingOf(key), picture, 3));
        }
    const Picture tooWide{33281, {Bytes(4161)}};
    for (const CompressionKey key :
         {CompressionKey{TIFF_KEY_GROUP3_2D}, CompressionKey{TIFF_KEY_GROUP4}, kMmr})
        EXPECT_TRUE(Encode(CodingOf(key), tooWide, 1) == (Encoded{TIFF_BAD_CODE, {}, {0}, {0}}));
}

TEST(Ccitt, CallbackStopsOrFails) {
    const Picture picture = RandomPicture(9, 100, 10, 6);
    SetKfactor(3);
    for (const Coding& coding : kCodings)
        for (size_t line = 0; line < picture.rows.size(); ++line) {
            const EngineRun run = RunOf(coding, picture, 4);
            const auto stopped =
                RunEncoder(coding.encode, run, LinesOf(picture, line, TIFF_LINE_STOP));
            EXPECT_TRUE(stopped == ReferenceCcittEncoder(run, picture, 3, line))
                << run.key << ", " << line;
            const auto failed = RunEncoder(coding.encode, run, LinesOf(picture, line, 7));
            EXPECT_TRUE(failed.code == 7 && failed.stream.empty());  // no buffer was full
        }
}

// At the end of a short picture, and early in a long one.
TEST(Ccitt, StreamThatRefusesWrites) {
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

// Short streams are cut at every byte. Of a long one, what was in hand at a buffer's end decides
// what can be read at the stream's: it is cut behind a crossing, with codes of all lengths there.
TEST(Ccitt, Truncated) {
    for (const Coding& coding : kCodings) {
        for (const int32_t width : {5, 24, 100}) {
            const Picture picture = RandomPicture(7, width, 40, 6);
            const Bytes stream = Encode(coding, picture, picture.rows.size()).stream;
            for (size_t size = 1; size < stream.size(); ++size)
                ExpectSameLines(coding, Truncated(stream, size), width, 40, size);
        }
        Picture picture = RandomPicture(3, 600, 1200, 5);
        picture.rows.insert(picture.rows.end(), 90, Bytes(600 / 8));
        const Bytes stream = Encode(coding, picture, picture.rows.size()).stream;
        ASSERT_GT(stream.size(), 32767U + 50);
        std::vector<size_t> sizes{32767, 32768, 32769, 32770, 32772, 32775, 32776};
        for (size_t before = 1; before < 40; ++before)
            sizes.push_back(stream.size() - before);
        for (const size_t size : sizes)
            ExpectSameLines(coding, Truncated(stream, size), 600, 1290, size);
    }
}

// Where vertical modes alone follow a horizontal one, how many lines the stream's end still gives
// hangs on where that one stood, however long ago.
TEST(Ccitt, WhitePagesWithoutAClosingCode) {
    for (const auto& [bytes, leads] : {std::pair{12U, 40U}, std::pair{33000U, 3U}}) {
        for (size_t lead = 0; lead < leads; ++lead) {
            Bytes stream(bytes, 0xFF);
            for (const size_t zero : {0U, 1U, 3U, 5U, 6U})
                stream[(lead + zero) / 8] &= static_cast<uint8_t>(~(0x80U >> (lead + zero) % 8));
            ExpectSameLines(CodingOf(TIFF_KEY_GROUP4), stream, 9, size_t{bytes} * 8, lead);
        }
    }
}

// Flipped bits in sound data, and noise of any density.
TEST(Ccitt, Damage) {
    std::mt19937 engine(11);
    const auto random = [&] { return static_cast<uint32_t>(engine()); };
    for (const Coding& coding : kCodings) {
        for (size_t round = 0; round < 400; ++round) {
            const auto width = static_cast<int32_t>(1 + random() % (round % 4 == 0 ? 9 : 300));
            const Picture picture = RandomPicture(random(), width, 30, 1.0 + random() % 20);
            Bytes stream = Encode(coding, picture, picture.rows.size()).stream;
            for (uint32_t flips = 1 + random() % 4; flips != 0; --flips)
                stream[random() % stream.size()] ^= static_cast<uint8_t>(1U << random() % 8);
            ASSERT_NO_FATAL_FAILURE(ExpectSameLines(coding, stream, width, 30, round));

            Bytes noise(1 + random() % 600);
            for (uint8_t& byte : noise) {
                const uint32_t bits = random(), other = random();
                byte = static_cast<uint8_t>(round % 3 == 0 ? bits & other : bits | other);
            }
            if (coding.key == kMmr) noise = InBlocks(noise, 1 + random() % 90);
            ASSERT_NO_FATAL_FAILURE(ExpectSameLines(coding, noise, width, 50, round));
        }
    }
}

TEST(Ccitt, RunsWithoutPixelsHaveABound) {
    // A horizontal mode of two empty runs goes nowhere: 21 bits, 8 times, are 21 bytes.
    constexpr std::string_view kMode = "001001101010000110111";
    EngineRun run = RunOf(CodingOf(TIFF_KEY_GROUP4), {100, std::vector<Bytes>(100)}, 100);
    run.offsets = {0};
    run.stream.resize(kMode.size() * 10000);
    for (size_t bit = 0; bit < run.stream.size() * 8; ++bit)
        if (kMode[bit % kMode.size()] == '1')
            run.stream[bit / 8] |= static_cast<uint8_t>(0x80U >> bit % 8);
    EXPECT_EQ(RunEngine(DecodeGroup4, run), (Outcome{TIFF_BAD_CODE}));
}

}  // namespace
}  // namespace vellim::test
