// LZW beside slow references: the same bytes of any lines, the same lines of any codes, and failure
// for failure.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>

#include "codec/engines.h"
#include "support/reference_lzw.h"

namespace vellim::test {
namespace {

uint32_t Below(std::mt19937& random, uint32_t bound) {
    return std::uniform_int_distribution<uint32_t>(0, bound - 1)(random);
}

EngineRun EncodedRun(EngineRun run, const Bytes& pixels) {
    Encoded encoded = RunEncoder(EncodeLzw, run, LinesOf(pixels, run.RowBytes()));
    run.stream = std::move(encoded.stream);
    run.offsets = std::move(encoded.offsets);
    return run;
}

// Also with a callback that changes what it is given, and stops somewhere or not.
void ExpectAsReference(const EngineRun& run) {
    ASSERT_TRUE(RunEngine(DecodeLzw, run) == ReferenceLzw(run));
    for (const auto& [stopAt, stop] : {std::pair{~0U, 0U}, std::pair{1U, 7U}, std::pair{2U, 3U}}) {
        const Answer answer = [at = stopAt, code = stop](uint8_t* line, uint32_t number) {
            line[0] ^= 0x5A;
            return number == at ? code : 0U;
        };
        ASSERT_TRUE(RunEngine(DecodeLzw, run, answer) == ReferenceLzw(run, answer));
    }
}

// Codes as they come: mostly known strings, the open entry often, now and then a clear or an end
// code, or a code that isn't known.
Bytes RandomCodes(std::mt19937& random, int count, uint32_t clearIn, uint32_t badIn) {
    std::vector<uint32_t> codes;
    if (Below(random, 8) != 0) codes.push_back(256);
    for (uint32_t next = 258; std::ssize(codes) < count;) {
        uint32_t code = next > 258 && Below(random, 6) == 0 ? next - 1 : Below(random, next);
        if (code == 256 || code == 257) code = 65;
        if (badIn != 0 && Below(random, badIn) == 0)
            code = Below(random, 2) == 0 ? 257 : std::min(next, 4095U);
        if (clearIn != 0 && Below(random, clearIn) == 0) code = 256;
        next = code == 256 ? 258 : std::min(next + 1, 4096U);
        codes.push_back(code);
    }
    return PackLzwCodes(codes);
}

TEST(Lzw, FollowsTheReferenceOnAnyCodes) {
    std::mt19937 random(2);
    for (int round = 0; round < 600; ++round) {
        EngineRun run{.bits = 8, .key = TIFF_KEY_LZW};
        if (round % 2 == 0) run.key = TIFF_KEY_LZW_DIFFERENCING;
        if (round % 4 == 0) run.bits = std::array<uint16_t, 3>{1, 4, 24}[Below(random, 3)];
        run.width = 1 + Below(random, round % 3 == 0 ? 4 : 300);
        run.height = 1 + Below(random, 400);
        run.rowsPerStrip = 1 + Below(random, run.height);
        const bool isLong = round % 50 == 0;
        for (uint32_t line = 0; line < run.height; line += run.rowsPerStrip) {
            run.offsets.push_back(static_cast<uint32_t>(run.stream.size()));
            const Bytes codes =
                RandomCodes(random, isLong ? 9000 : 60, isLong ? 0 : 30, round % 2 == 0 ? 300 : 0);
            run.stream.insert(run.stream.end(), codes.begin(), codes.end());
        }
        ASSERT_NO_FATAL_FAILURE(ExpectAsReference(run)) << round;
    }
}

// Strips in and out of order and too few of them, a buffer's end inside codes, and the stream's end
// about there.
TEST(Lzw, FollowsTheReferenceAcrossBuffers) {
    std::mt19937 random(4);
    const EngineRun shape{.width = 700, .height = 320, .rowsPerStrip = 50, .key = TIFF_KEY_LZW};
    Bytes data(size_t{700} * 320);
    std::generate(data.begin(), data.end(), [&] { return static_cast<uint8_t>(random()); });
    EngineRun run = EncodedRun(shape, data);
    ASSERT_GT(run.stream.size(), 3 * 32767U);
    const Outcome got = RunEngine(DecodeLzw, run);
    ASSERT_EQ(got.lines.size(), 320U);
    for (size_t y = 0; y < 320; ++y)
        ASSERT_TRUE(std::equal(got.lines[y].begin(), got.lines[y].end(), &data[y * 700]));
    for (int round = 0; round < 20; ++round) {
        ASSERT_NO_FATAL_FAILURE(ExpectAsReference(run)) << round;
        std::shuffle(run.offsets.begin(), run.offsets.end(), random);
        if (round == 15) run.offsets.resize(4);
    }
    for (size_t size = 32760; size < 32776; ++size) {
        run = EncodedRun({.width = 700, .height = 320, .rowsPerStrip = 320, .key = run.key}, data);
        run.stream.resize(size);
        ASSERT_NO_FATAL_FAILURE(ExpectAsReference(run)) << size;
    }
}

// A full table that is never cleared, of the longest strings that there can be, and more output
// behind it than there is room for.
TEST(Lzw, GoesOnWithAFullTable) {
    std::mt19937 random(6);
    std::vector<uint32_t> codes{256, 65, 66, 67, 258};
    for (uint32_t newest = 261; newest < 4096; ++newest)
        codes.push_back(newest);
    for (int i = 0; i < 4000; ++i)
        codes.push_back(258 + Below(random, 4096 - 258));
    EngineRun run{.width = 1'000'000, .height = 14, .rowsPerStrip = 14, .key = TIFF_KEY_LZW};
    run.offsets = {0};
    run.stream = PackLzwCodes(codes);
    const Outcome got = RunEngine(DecodeLzw, run);
    EXPECT_TRUE(got.code == 0 && got == ReferenceLzw(run));
}

// Pixels of one kind after the other: noise, few values, long runs, a single value, words.
Bytes Pixels(std::mt19937& random, size_t size, uint32_t kind) {
    Bytes pixels(size);
    uint8_t last = 0;
    for (size_t i = 0; i < size; ++i) {
        const auto any = static_cast<uint8_t>(random() >> 8);
        if (kind == 0 || (kind == 2 && random() % 90 == 0)) last = any;
        if (kind == 1) last = any % 4;
        if (kind == 4) last = static_cast<uint8_t>("the fax and the scan "[i * (1 + i / 900) % 21]);
        pixels[i] = last;
    }
    return pixels;
}

void ExpectRoundTrip(const EngineRun& run, const Bytes& pixels) {
    for (const auto& [stopAt, stop] :
         {std::pair{~0U, 0U}, std::pair{run.height / 2, 3U}, std::pair{run.height / 3, 9U}}) {
        const Answer source = LinesOf(pixels, run.RowBytes(), stopAt, stop);
        const Encoded encoded = RunEncoder(EncodeLzw, run, source);
        ASSERT_TRUE(encoded == ReferenceLzwEncoder(run, source)) << stopAt;
        if (stop != 0) continue;
        EngineRun stored = run;
        stored.stream = encoded.stream;
        stored.offsets = encoded.offsets;
        const Outcome decoded = RunEngine(DecodeLzw, stored);
        ASSERT_EQ(decoded.code, 0U);
        for (size_t y = 0; y < run.height; ++y)
            ASSERT_TRUE(std::equal(decoded.lines[y].begin(), decoded.lines[y].end(),
                                   &pixels[y * run.RowBytes()]));
    }
}

// Lines of a pixel, lines longer than a generation, bit counts that wrap round to 0 and beyond, and
// strips of one line, of a few, and of all.
TEST(Lzw, WritesWhatTheReferenceWrites) {
    std::mt19937 random(3);
    const EngineRun shapes[] = {{1, 1, 1},        {1, 700, 9},      {9, 900, 900},
                                {310, 400, 26},   {640, 300, 300},  {2480, 60, 3},
                                {8191, 12, 12},   {8192, 12, 6},    {20000, 9, 4},
                                {1001, 40, 8, 4}, {77, 40, 11, 24}, {1728, 60, 37, 1}};
    for (EngineRun run : shapes) {
        for (uint32_t kind = 0; kind < 5; ++kind) {
            const Bytes pixels = Pixels(random, size_t{run.RowBytes()} * run.height, kind);
            SCOPED_TRACE(testing::Message() << run.width << " wide, kind " << kind);
            for (const CompressionKey key : {TIFF_KEY_LZW, TIFF_KEY_LZW_DIFFERENCING}) {
                run.key = key;
                ASSERT_NO_FATAL_FAILURE(ExpectRoundTrip(run, pixels));
            }
        }
    }
}

// Codes 256, 65, 257 and three zeros, nine bits each, filled up to pairs of bytes. A line of no
// bytes can't be coded.
TEST(Lzw, WritesTheSmallestStrip) {
    const Encoded encoded =
        RunEncoder(EncodeLzw, {1, 1, 1, 8, TIFF_KEY_LZW}, LinesOf(Bytes{65}, 1));
    EXPECT_EQ(encoded.stream, (Bytes{0x80, 0x10, 0x60, 0x20, 0, 0, 0, 0}));
    EXPECT_EQ(encoded.counts, std::vector<uint32_t>{8});
    EXPECT_EQ(RunEncoder(EncodeLzw, {0, 1, 1, 8, TIFF_KEY_LZW}, LinesOf(Bytes{65}, 0)).code, 12U);
}

}  // namespace
}  // namespace vellim::test
