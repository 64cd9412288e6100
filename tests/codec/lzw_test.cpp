// LZW against a slow reference: the same lines, code for code and failure for failure.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>

#include "codec/engines.h"
#include "support/reference_lzw.h"

namespace vellim::test {
namespace {

using Random = std::mt19937;

uint32_t Below(Random& random, uint32_t bound) {
    return std::uniform_int_distribution<uint32_t>(0, bound - 1)(random);
}

// Pixels with runs, repeats and noise.
Bytes Pixels(Random& random, size_t size, uint32_t colors) {
    Bytes bytes;
    while (bytes.size() < size) {
        const auto value = static_cast<uint8_t>(Below(random, colors));
        bytes.insert(bytes.end(), Below(random, 8) == 0 ? Below(random, 60) : 1, value);
    }
    bytes.resize(size);
    return bytes;
}

// `data` as strips, one behind the other.
EngineRun EncodedRun(const EngineRun& shape, const Bytes& data,
                     FullTable whenFull = FullTable::kClear) {
    EngineRun run = shape;
    const size_t stripBytes = size_t{run.RowBytes()} * run.rowsPerStrip;
    for (size_t at = 0; at < data.size(); at += stripBytes) {
        const Bytes part(&data[at], &data[at] + std::min(stripBytes, data.size() - at));
        const Bytes strip = EncodeLzwStrip(part, whenFull);
        run.offsets.push_back(static_cast<uint32_t>(run.stream.size()));
        run.stream.insert(run.stream.end(), strip.begin(), strip.end());
    }
    return run;
}

EngineRun OneStrip(uint32_t width, uint32_t height, const std::vector<uint32_t>& codes) {
    LzwCodeWriter writer;
    for (const uint32_t code : codes)
        writer.Put(code);
    return {.width = width,
            .height = height,
            .key = TIFF_KEY_LZW,
            .rowsPerStrip = height,
            .offsets = {0},
            .stream = writer.Finish()};
}

// The callback changes what it is given, and gives `stop` at line `stopAt`.
Answer Meddling(uint32_t stopAt, uint32_t stop) {
    return [=](uint8_t* line, uint32_t number) {
        line[0] ^= 0x5A;
        return number == stopAt ? stop : 0U;
    };
}

void ExpectAsReference(const EngineRun& run) {
    for (const Answer& answer : {Answer{}, Meddling(~0U, 0), Meddling(1, 7), Meddling(2, 3)})
        ASSERT_TRUE(RunEngine(DecodeLzw, run, answer) == ReferenceLzw(run, answer));
}

// Codes as they come: mostly known strings, the open entry often, now and then a clear or an end
// code, or a code that isn't known.
Bytes RandomCodes(Random& random, int count, uint32_t clearIn, uint32_t badIn) {
    LzwCodeWriter writer;
    if (Below(random, 8) != 0) writer.Put(256);
    for (int i = 0; i < count; ++i) {
        const uint32_t next = writer.NextFree();
        uint32_t code = next > 258 && Below(random, 6) == 0 ? next - 1 : Below(random, next);
        if (code == 256 || code == 257) code = 65;
        if (badIn != 0 && Below(random, badIn) == 0)
            code = Below(random, 2) == 0 ? 257 : std::min(next, 4095U);
        if (clearIn != 0 && Below(random, clearIn) == 0) code = 256;
        writer.Put(code);
    }
    return writer.Finish();
}

TEST(Lzw, DecodesWhatWasEncoded) {
    Random random(1);
    for (const auto& [width, height, rowsPerStrip] :
         {std::array{3U, 4000U, 900U}, std::array{40000U, 4U, 1U}, std::array{500U, 400U, 400U}}) {
        for (const FullTable whenFull : {FullTable::kClear, FullTable::kGoOn}) {
            EngineRun shape{.width = width, .height = height, .key = TIFF_KEY_LZW};
            shape.rowsPerStrip = rowsPerStrip;
            const Bytes data = Pixels(random, size_t{width} * height, 9);
            const Outcome got = RunEngine(DecodeLzw, EncodedRun(shape, data, whenFull));
            EXPECT_EQ(got.code, 0U);
            ASSERT_EQ(got.lines.size(), height);
            for (size_t y = 0; y < height; ++y)
                ASSERT_TRUE(std::equal(got.lines[y].begin(), got.lines[y].end(), &data[y * width]));
        }
    }
}

TEST(Lzw, FollowsTheReferenceOnAnyCodes) {
    Random random(2);
    for (int round = 0; round < 600; ++round) {
        EngineRun run{.bits = 8, .key = TIFF_KEY_LZW};
        if (round % 5 == 0) run.key = TIFF_KEY_LZW_DIFFERENCING;
        if (round % 15 == 0) run.bits = 24;
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

// In the narrow image every code ends a line, so that it shows which was the last to be taken.
TEST(Lzw, FollowsTheReferenceOnDamage) {
    Random random(3);
    for (const uint32_t width : {1U, 30U}) {
        EngineRun shape{.width = width, .height = 360 / width, .key = TIFF_KEY_LZW_DIFFERENCING};
        shape.rowsPerStrip = shape.height / 2 - 1;
        const EngineRun whole = EncodedRun(shape, Pixels(random, 360, 5));
        for (size_t bit = 0; bit < whole.stream.size() * 8; ++bit) {
            EngineRun damaged = whole;
            damaged.stream[bit / 8] ^= static_cast<uint8_t>(1U << bit % 8);
            ASSERT_NO_FATAL_FAILURE(ExpectAsReference(damaged)) << "bit " << bit;
            if (bit % 8 != 0) continue;
            damaged.stream.resize(bit / 8);
            ASSERT_NO_FATAL_FAILURE(ExpectAsReference(damaged)) << "cut at " << bit / 8;
        }
    }
}

// Strips out of order, overlapping, behind the end, and a buffer's end inside codes.
TEST(Lzw, FollowsTheReferenceAcrossBuffers) {
    Random random(4);
    EngineRun shape{.width = 700, .height = 320, .key = TIFF_KEY_LZW, .rowsPerStrip = 50};
    const EngineRun whole = EncodedRun(shape, Pixels(random, 700 * 320, 256));
    ASSERT_GT(whole.stream.size(), 3 * 32767U);
    ASSERT_NO_FATAL_FAILURE(ExpectAsReference(whole));
    for (int round = 0; round < 40; ++round) {
        EngineRun run = whole;
        std::shuffle(run.offsets.begin(), run.offsets.end(), random);
        if (round % 4 == 1) run.offsets[3] += 2;
        if (round % 4 == 2) run.stream.resize(32760 + Below(random, 16));
        if (round % 4 == 3) run.offsets.resize(4);
        ASSERT_NO_FATAL_FAILURE(ExpectAsReference(run)) << round;
    }
}

// A full table that is never cleared, of the longest strings that there can be, and more output
// behind it than there is room for.
TEST(Lzw, GoesOnWithAFullTable) {
    Random random(6);
    std::vector<uint32_t> codes{256, 65, 66, 67, 258};
    for (uint32_t newest = 261; newest < 4096; ++newest)
        codes.push_back(newest);
    for (int i = 0; i < 4000; ++i)
        codes.push_back(258 + Below(random, 4096 - 258));
    const EngineRun run = OneStrip(1'000'000, 14, codes);
    const Outcome got = RunEngine(DecodeLzw, run);
    EXPECT_EQ(got.code, 0U);
    EXPECT_TRUE(got == ReferenceLzw(run));
}

TEST(Lzw, ResultsOfDamageAreThese) {
    struct Case {
        const char* what;
        uint32_t width;
        std::vector<uint32_t> codes;
        uint32_t code;
        size_t lines;
    };
    for (const Case& test : std::initializer_list<Case>{
             {"first code behind a clear is no byte", 2, {256, 258, 65, 65, 65}, 12, 0},
             {"code beyond the open entry", 2, {256, 65, 259, 65, 65}, 12, 0},
             {"end code in the second of four lines", 2, {256, 65, 66, 67, 257, 0, 0}, 12, 2},
             {"end code in the last line", 2, {256, 65, 258, 259, 65, 257, 0, 0}, 0, 4},
             {"stream ends", 2, {256, 65, 66, 67}, 5, 1},
             {"lines of no bytes", 0, {256, 65, 66, 67, 257, 0, 0}, 12, 1},
         }) {
        const EngineRun run = OneStrip(test.width, 4, test.codes);
        const Outcome got = RunEngine(DecodeLzw, run);
        EXPECT_EQ(got.code, test.code) << test.what;
        EXPECT_EQ(got.lines.size(), test.lines) << test.what;
        EXPECT_EQ(got, ReferenceLzw(run)) << test.what;
    }
}

TEST(Differencing, SumsEveryWidth) {
    Random random(5);
    for (const uint16_t bits : {uint16_t{1}, uint16_t{4}, uint16_t{8}, uint16_t{24}}) {
        for (uint32_t width = 1; width < 130; ++width) {
            EngineRun run{.width = width, .height = 1, .bits = bits, .rowsPerStrip = 1};
            run.key = TIFF_KEY_LZW_DIFFERENCING;
            run = EncodedRun(run, Pixels(random, run.RowBytes(), 256));
            ASSERT_EQ(RunEngine(DecodeLzw, run), ReferenceLzw(run)) << bits << " bits, " << width;
        }
    }
}

}  // namespace
}  // namespace vellim::test
