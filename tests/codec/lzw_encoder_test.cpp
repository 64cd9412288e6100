// LZW encoding beside a literal model of it, byte for byte, and decoded again.

#include <gtest/gtest.h>

#include <array>
#include <random>

#include "codec/engines.h"
#include "support/reference_lzw.h"

namespace vellim::test {
namespace {

struct Shape {
    uint32_t width, height, rowsPerStrip;
    uint16_t bits = 8;
};

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

void ExpectAsReference(const EngineRun& run, const Bytes& pixels) {
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
TEST(LzwEncoder, WritesWhatTheReferenceWrites) {
    std::mt19937 random(3);
    const std::array<Shape, 12> shapes = {{{1, 1, 1},
                                           {1, 700, 9},
                                           {9, 900, 900},
                                           {310, 400, 26},
                                           {640, 300, 300},
                                           {2480, 60, 3},
                                           {8191, 12, 12},
                                           {8192, 12, 6},
                                           {20000, 9, 4},
                                           {1001, 40, 8, 4},
                                           {77, 40, 11, 24},
                                           {1728, 60, 37, 1}}};
    for (const Shape& shape : shapes) {
        for (uint32_t kind = 0; kind < 5; ++kind) {
            EngineRun run{shape.width, shape.height, shape.rowsPerStrip, shape.bits, TIFF_KEY_LZW};
            const Bytes pixels = Pixels(random, size_t{run.RowBytes()} * run.height, kind);
            SCOPED_TRACE(testing::Message() << shape.width << " wide, kind " << kind);
            ASSERT_NO_FATAL_FAILURE(ExpectAsReference(run, pixels));
            run.key = TIFF_KEY_LZW_DIFFERENCING;
            ASSERT_NO_FATAL_FAILURE(ExpectAsReference(run, pixels));
        }
    }
}

// Codes 256, 65, 257 and three zeros, nine bits each, filled up to pairs of bytes. A line of no
// bytes can't be coded.
TEST(LzwEncoder, WritesTheSmallestStrip) {
    const Encoded encoded =
        RunEncoder(EncodeLzw, {1, 1, 1, 8, TIFF_KEY_LZW}, LinesOf(Bytes{65}, 1));
    EXPECT_EQ(encoded.stream, (Bytes{0x80, 0x10, 0x60, 0x20, 0, 0, 0, 0}));
    EXPECT_EQ(encoded.counts, std::vector<uint32_t>{8});
    EXPECT_EQ(RunEncoder(EncodeLzw, {0, 1, 1, 8, TIFF_KEY_LZW}, LinesOf(Bytes{65}, 0)).code, 12U);
}

}  // namespace
}  // namespace vellim::test
