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

void Mirror(Bytes& bytes) {
    for (uint8_t& byte : bytes) {
        unsigned mirrored = 0;
        for (unsigned bit = 0; bit < 8; ++bit)
            mirrored |= ((byte >> bit) & 1U) << (7 - bit);
        byte = static_cast<uint8_t>(mirrored);
    }
}

Bytes Joined(const std::vector<Bytes>& lines) {
    Bytes all;
    for (const Bytes& line : lines)
        all.insert(all.end(), line.begin(), line.end());
    return all;
}

// `data` as strips, one behind the other.
EngineRun EncodedRun(const EngineRun& shape, const Bytes& data, FullTable whenFull) {
    EngineRun run = shape;
    const size_t stripBytes = size_t{run.RowBytes()} * run.rowsPerStrip;
    for (size_t at = 0; at < data.size(); at += stripBytes) {
        const auto from = data.begin() + static_cast<std::ptrdiff_t>(at);
        const size_t size = std::min(stripBytes, data.size() - at);
        const Bytes strip =
            EncodeLzwStrip(Bytes(from, from + static_cast<std::ptrdiff_t>(size)), whenFull);
        run.offsets.push_back(static_cast<uint32_t>(run.stream.size()));
        run.stream.insert(run.stream.end(), strip.begin(), strip.end());
    }
    return run;
}

// The callback changes what it is given, and says `stop` at line `stopAt`.
Answer Meddling(uint32_t stopAt = ~0U, uint32_t stop = 0) {
    return [=](uint8_t* line, uint32_t number) {
        line[0] ^= 0x5A;
        return number == stopAt ? stop : 0U;
    };
}

void ExpectAsReference(const EngineRun& run, const char* what) {
    for (const Answer& answer : {Answer{}, Meddling(), Meddling(1, 7), Meddling(2, 3)}) {
        const Outcome expected = ReferenceLzw(run, answer);
        const Outcome got = RunEngine(DecodeLzw, run, answer);
        ASSERT_EQ(expected.code, got.code) << what;
        ASSERT_EQ(expected.lines, got.lines) << what;
    }
}

// Codes as they come: mostly known strings, the open entry often, now and then a clear or an end
// code, or a code that isn't known.
Bytes RandomCodes(Random& random, int count, uint32_t clearIn, uint32_t badIn) {
    LzwCodeWriter writer;
    if (Below(random, 8) != 0) writer.Put(256);
    for (int i = 0; i < count; ++i) {
        const uint32_t next = writer.NextFree();
        if (clearIn != 0 && Below(random, clearIn) == 0) {
            writer.Put(256);
        } else if (badIn != 0 && Below(random, badIn) == 0) {
            writer.Put(Below(random, 2) == 0 ? 257 : std::min(next, 4095U));
        } else if (next > 258) {
            const uint32_t code = Below(random, 6) == 0 ? next - 1 : Below(random, next);
            writer.Put(code == 256 || code == 257 ? 65 : code);
        } else {
            writer.Put(Below(random, 256));
        }
    }
    return writer.Finish();
}

TEST(Lzw, DecodesWhatWasEncoded) {
    struct Case {
        EngineRun shape;
        uint32_t colors;
    };
    const EngineRun byteRun{.bits = 8, .key = TIFF_KEY_LZW};
    EngineRun narrow = byteRun, wide = byteRun, single = byteRun;
    narrow.width = 3, narrow.height = 4000, narrow.rowsPerStrip = 900;
    wide.width = 40000, wide.height = 4, wide.rowsPerStrip = 1;
    single.width = 500, single.height = 400, single.rowsPerStrip = 400;
    Random random(1);
    for (const Case& test :
         {Case{narrow, 2}, Case{narrow, 256}, Case{wide, 3}, Case{wide, 256}, Case{single, 9}}) {
        const Bytes data =
            Pixels(random, size_t{test.shape.width} * test.shape.height, test.colors);
        for (const FullTable whenFull : {FullTable::kClear, FullTable::kGoOn}) {
            EngineRun run = EncodedRun(test.shape, data, whenFull);
            for (run.fillOrder = 1; run.fillOrder <= 2; ++run.fillOrder) {
                const Outcome got = RunEngine(DecodeLzw, run);
                EXPECT_EQ(got.code, 0U);
                EXPECT_TRUE(Joined(got.lines) == data) << run.width << " x " << run.height;
                Mirror(run.stream);
            }
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
        ASSERT_NO_FATAL_FAILURE(ExpectAsReference(run, "round")) << round;
    }
}

// In the narrow image every code ends a line, so that it shows which was the last to be taken.
TEST(Lzw, FollowsTheReferenceOnDamage) {
    Random random(3);
    for (const uint32_t width : {1U, 30U}) {
        const uint32_t height = 360 / width;
        EngineRun shape{.width = width, .height = height, .key = TIFF_KEY_LZW_DIFFERENCING};
        shape.rowsPerStrip = height / 2 - 1;
        const EngineRun whole = EncodedRun(shape, Pixels(random, 360, 5), FullTable::kClear);
        for (size_t size = 0; size <= whole.stream.size(); ++size) {
            EngineRun cut = whole;
            cut.stream.resize(size);
            ASSERT_NO_FATAL_FAILURE(ExpectAsReference(cut, "cut")) << size;
        }
        for (size_t bit = 0; bit < whole.stream.size() * 8; ++bit) {
            EngineRun flipped = whole;
            flipped.stream[bit / 8] ^= static_cast<uint8_t>(1U << bit % 8);
            ASSERT_NO_FATAL_FAILURE(ExpectAsReference(flipped, "bit")) << bit;
        }
    }
}

// Strips out of order, overlapping, behind the end, and a buffer's end inside codes.
TEST(Lzw, FollowsTheReferenceAcrossBuffers) {
    Random random(4);
    EngineRun shape{.width = 700, .height = 320, .key = TIFF_KEY_LZW, .rowsPerStrip = 50};
    const EngineRun whole = EncodedRun(shape, Pixels(random, 700 * 320, 256), FullTable::kClear);
    ASSERT_GT(whole.stream.size(), 3 * 32767U);
    ASSERT_NO_FATAL_FAILURE(ExpectAsReference(whole, "in order"));
    for (int round = 0; round < 40; ++round) {
        EngineRun run = whole;
        std::shuffle(run.offsets.begin(), run.offsets.end(), random);
        if (round % 4 == 1) run.offsets[3] += 2;
        if (round % 4 == 2) run.stream.resize(32760 + Below(random, 16));
        if (round % 4 == 3) run.offsets.resize(4);
        ASSERT_NO_FATAL_FAILURE(ExpectAsReference(run, "shuffled")) << round;
    }
}

// A full table that is never cleared, of the longest strings that there can be, and more output
// behind it than there is room for.
TEST(Lzw, GoesOnWithAFullTable) {
    Random random(6);
    EngineRun run{.width = 1'000'000, .height = 14, .key = TIFF_KEY_LZW, .rowsPerStrip = 14};
    run.offsets = {0};
    LzwCodeWriter writer;
    for (const uint32_t code : {256U, 65U, 66U, 67U, 258U})
        writer.Put(code);
    while (writer.NextFree() < 4096)
        writer.Put(writer.NextFree() - 1);
    for (int i = 0; i < 4000; ++i)
        writer.Put(258 + Below(random, 4096 - 258));
    run.stream = writer.Finish();
    const Outcome got = RunEngine(DecodeLzw, run);
    EXPECT_EQ(got.code, 0U);
    EXPECT_TRUE(got == ReferenceLzw(run));
}

TEST(Lzw, LinesOfNoBytesAreABadCode) {
    EngineRun run{.width = 0, .height = 3, .key = TIFF_KEY_LZW, .rowsPerStrip = 3, .offsets = {0}};
    run.stream = EncodeLzwStrip({1, 2, 3}, FullTable::kClear);
    EXPECT_EQ(RunEngine(DecodeLzw, run).code, 12U);
    run.rowsPerStrip = 1;
    run.offsets = {0, 0, 0};
    EXPECT_EQ(RunEngine(DecodeLzw, run), ReferenceLzw(run));
}

TEST(Lzw, ResultsOfDamageAreThese) {
    struct Case {
        const char* what;
        std::vector<uint32_t> codes;
        uint32_t code;
        size_t lines;
    };
    const std::array cases{
        Case{"first code behind a clear is no byte", {256, 258, 65, 65, 65}, 12, 0},
        Case{"code beyond the open entry", {256, 65, 259, 65, 65}, 12, 0},
        Case{"end code in the second of four lines", {256, 65, 66, 67, 257, 0, 0}, 12, 2},
        Case{"end code in the last line", {256, 65, 258, 259, 65, 257, 0, 0}, 0, 4},
        Case{"stream ends", {256, 65, 66, 67}, 5, 1},
    };
    for (const Case& test : cases) {
        LzwCodeWriter writer;
        for (const uint32_t code : test.codes)
            writer.Put(code);
        const EngineRun run{.width = 2,
                            .height = 4,
                            .key = TIFF_KEY_LZW,
                            .rowsPerStrip = 4,
                            .offsets = {0},
                            .stream = writer.Finish()};
        const Outcome got = RunEngine(DecodeLzw, run);
        EXPECT_EQ(got.code, test.code) << test.what;
        EXPECT_EQ(got.lines.size(), test.lines) << test.what;
    }
}

TEST(Differencing, SumsEveryWidth) {
    Random random(5);
    for (const uint16_t bits : {uint16_t{1}, uint16_t{4}, uint16_t{8}, uint16_t{24}}) {
        for (uint32_t width = 1; width < 130; ++width) {
            EngineRun run{.width = width, .height = 1, .bits = bits, .rowsPerStrip = 1};
            run.key = TIFF_KEY_LZW_DIFFERENCING;
            run = EncodedRun(run, Pixels(random, run.RowBytes(), 256), FullTable::kClear);
            ASSERT_EQ(RunEngine(DecodeLzw, run), ReferenceLzw(run)) << bits << " bits, " << width;
        }
    }
}

}  // namespace
}  // namespace vellim::test
