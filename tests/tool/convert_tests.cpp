// Pixels in the right sense and form, in every format.
#include <gtest/gtest.h>
#include <png.h>

#include <filesystem>

#include "run_tool.h"

namespace vellim::test {
namespace {

struct PixelCase {
    const char* name;
    uint32_t width;
    uint16_t bits, samples, photometric;
    Bytes stored;
    std::vector<uint16_t> colourMap;
    int depth, colourType;  // of the PNG
    Bytes png, pbm, pgm, ppm;
};

// A picture of one line.
std::string OneLine(const PixelCase& c) {
    ImageSpec image = SimpleImage(c.width, 1, c.bits, c.samples, 1, c.photometric, 1, {c.stored});
    if (!c.colourMap.empty()) image.tags.push_back(ShortTag(320, c.colourMap));
    return FileOf(BuildTiff({image}), "line.tif");
}

std::vector<uint16_t> ColourMap(size_t colours, const std::vector<std::array<uint16_t, 3>>& first) {
    std::vector<uint16_t> map(colours * 3, 0);
    for (size_t i = 0; i < first.size(); ++i) {
        for (size_t part = 0; part < 3; ++part)
            map[part * colours + i] = first[i][part];
    }
    return map;
}

const std::vector<PixelCase>& PixelCases() {
    static const std::vector<PixelCase> cases = {
        {"bilevel, white is zero",
         10,
         1,
         1,
         0,
         {0xA5, 0x7F},
         {},
         1,
         PNG_COLOR_TYPE_GRAY,
         {0x5A, 0x80},
         {0xA5, 0x40},
         {0, 255, 0, 255, 255, 0, 255, 0, 255, 0},
         {}},
        {"bilevel, black is zero",
         10,
         1,
         1,
         1,
         {0xA5, 0x7F},
         {},
         1,
         PNG_COLOR_TYPE_GRAY,
         {0xA5, 0x40},
         {0x5A, 0x80},
         {255, 0, 255, 0, 0, 255, 0, 255, 0, 255},
         {}},
        {"16 greys, white is zero",
         3,
         4,
         1,
         0,
         {0x0F, 0x8F},
         {},
         4,
         PNG_COLOR_TYPE_GRAY,
         {0xF0, 0x70},
         {0x60},
         {255, 0, 119},
         {255, 255, 255, 0, 0, 0, 119, 119, 119}},
        {"grey at half of white",
         3,
         8,
         1,
         1,
         {0, 127, 128},
         {},
         8,
         PNG_COLOR_TYPE_GRAY,
         {0, 127, 128},
         {0xC0},
         {0, 127, 128},
         {0, 0, 0, 127, 127, 127, 128, 128, 128}},
        {"two colours",
         3,
         1,
         1,
         3,
         {0x5F},
         ColourMap(2, {{0xFF00, 0, 0}, {0, 0, 0xFFFF}}),
         1,
         PNG_COLOR_TYPE_PALETTE,
         {0x40},
         {0xE0},
         {76, 29, 76},
         {255, 0, 0, 0, 0, 255, 255, 0, 0}},
        {"a palette of 8-bit values",
         3,
         4,
         1,
         3,
         {0x10, 0x2F},
         ColourMap(16, {{1, 2, 3}, {10, 20, 30}, {200, 210, 220}}),
         4,
         PNG_COLOR_TYPE_PALETTE,
         {0x10, 0x20},
         {0xC0},
         {18, 2, 208},
         {10, 20, 30, 1, 2, 3, 200, 210, 220}},
        {"RGB",
         2,
         8,
         3,
         2,
         {255, 0, 0, 10, 250, 30},
         {},
         8,
         PNG_COLOR_TYPE_RGB,
         {255, 0, 0, 10, 250, 30},
         {0x80},
         {76, 153},
         {255, 0, 0, 10, 250, 30}},
    };
    return cases;
}

TEST(ConvertPixels, HaveTheirSenseInEveryFormat) {
    for (const PixelCase& c : PixelCases()) {
        SCOPED_TRACE(c.name);
        const std::string input = OneLine(c);
        const std::string out = NewPath("line.png");
        ASSERT_EQ(RunTool(Words({"convert", input, out})).exitCode, 0);
        const Png png = ReadPng(out);
        EXPECT_EQ(png.depth, c.depth);
        EXPECT_EQ(png.colourType, c.colourType);
        EXPECT_EQ(png.rows, std::vector<Bytes>{c.png});
        EXPECT_EQ(png.unit, -1) << "a resolution from nowhere";
        if (!c.colourMap.empty()) {
            const size_t colours = c.colourMap.size() / 3;
            ASSERT_EQ(png.palette.size(), colours * 3);
            const bool small = c.colourMap.back() < 256 && c.bits == 4;
            EXPECT_EQ(png.palette[0], small ? c.colourMap[0] : c.colourMap[0] >> 8);
        }
        const auto pixels = [&](const char* format, int fields) {
            const ToolRun run =
                RunTool(std::string("convert --format ") + format + " " + input + " -");
            EXPECT_EQ(run.exitCode, 0) << run.err;
            return PnmPixels(Bytes(run.out.begin(), run.out.end()), fields);
        };
        EXPECT_EQ(pixels("pbm", 3), c.pbm);
        EXPECT_EQ(pixels("PGM", 4), c.pgm);
        if (!c.ppm.empty()) {
            EXPECT_EQ(pixels("ppm", 4), c.ppm);
        }
    }
}

TEST(ConvertPixels, RefusedWhereTheyWouldComeOutWrong) {
    struct Case {
        uint16_t bits, samples, photometric;
        const char* reason;
    };
    for (const Case& c : {Case{8, 3, 6, "YCbCr"}, Case{8, 3, 8, "L*a*b*"},
                          Case{4, 2, 1, "2 samples of 4 bits"}, Case{24, 1, 1, "24 bits"},
                          Case{16, 1, 1, "Color format"}, Case{8, 1, 3, "Indispensable tags"}}) {
        SCOPED_TRACE(c.reason);
        const std::string input = FileOf(
            BuildTiff({SimpleImage(4, 4, c.bits, c.samples, 1, c.photometric, 4, {Bytes(96)})}),
            "odd.tif");
        const std::string out = NewPath("odd.png");
        const ToolRun run = RunTool(Words({"convert", input, out}));
        EXPECT_EQ(run.exitCode, 2);
        EXPECT_NE(run.err.find("odd.tif: image 1: "), std::string::npos) << run.err;
        EXPECT_NE(run.err.find(c.reason), std::string::npos) << run.err;
        EXPECT_FALSE(Exists(out));
    }
}

uint32_t Field(const Bytes& bytes, size_t offset) {
    return bytes[offset] | uint32_t{bytes[offset + 1]} << 8U | uint32_t{bytes[offset + 2]} << 16U |
           uint32_t{bytes[offset + 3]} << 24U;
}

// 3,000 rows of 1,001 bytes: many blocks, the last one not full, and padding to four bytes.
TEST(ConvertBmp, RowsStandBottomUpInFilesAndTopDownInPipes) {
    constexpr uint32_t kWidth = 8008;
    constexpr uint32_t kHeight = 3000;
    Bytes pixels(size_t{1001} * kHeight);
    for (size_t i = 0; i < pixels.size(); ++i)
        pixels[i] = static_cast<uint8_t>(i * i >> 7U);
    ImageSpec image = SimpleImage(kWidth, kHeight, 1, 1, 1, 1, 100, {});
    std::vector<Bytes> strips;
    for (size_t i = 0; i < pixels.size(); i += 100100) {
        strips.emplace_back(pixels.begin() + static_cast<ptrdiff_t>(i),
                            pixels.begin() + static_cast<ptrdiff_t>(i + 100100));
    }
    image.strips = strips;
    image.tags.push_back(RationalTag(282, 200, 1));
    image.tags.push_back(RationalTag(283, 100, 1));
    const std::string input = FileOf(BuildTiff({image}), "tall.tif");
    const std::string path = NewPath("tall.bmp");
    const std::string piped = NewPath("piped.bmp");
    ASSERT_EQ(RunTool("convert " + input + " " + path).exitCode, 0);
    ASSERT_EQ(RunTool("convert --format bmp " + input + " - | cat >" + piped + "; true").exitCode,
              0);
    const Bytes file = ReadFile(path);
    const Bytes stream = ReadFile(piped);
    constexpr size_t kRows = 14 + 40 + 8;
    ASSERT_EQ(file.size(), kRows + size_t{1004} * kHeight);
    ASSERT_EQ(stream.size(), file.size());
    EXPECT_EQ(Field(file, 2), file.size());
    EXPECT_EQ(Field(file, 10), kRows);
    EXPECT_EQ(Field(file, 18), kWidth);
    EXPECT_EQ(Field(file, 22), kHeight);
    EXPECT_EQ(Field(stream, 22), 0U - kHeight);
    EXPECT_EQ(Field(file, 38), 7874U);
    EXPECT_EQ(Field(file, 42), 3937U);
    EXPECT_EQ(Field(file, 54), 0U);
    EXPECT_EQ(Field(file, 58), 0xFFFFFFU);
    for (size_t y = 0; y < kHeight; ++y) {
        const uint8_t* row = pixels.data() + y * 1001;
        ASSERT_TRUE(std::equal(row, row + 1001, file.data() + kRows + (kHeight - 1 - y) * 1004))
            << "row " << y;
        ASSERT_TRUE(std::equal(row, row + 1001, stream.data() + kRows + y * 1004)) << "row " << y;
    }
}

TEST(ConvertBmp, RgbIsBlueGreenRedWithPaddedRows) {
    const std::string input =
        FileOf(BuildTiff({SimpleImage(1, 2, 8, 3, 1, 2, 2, {{1, 2, 3, 4, 5, 6}})}), "two.tif");
    const std::string path = NewPath("two.bmp");
    ASSERT_EQ(RunTool("convert " + input + " " + path).exitCode, 0);
    const Bytes file = ReadFile(path);
    ASSERT_EQ(file.size(), 62U);
    EXPECT_EQ(Bytes(file.begin() + 54, file.end()), (Bytes{6, 5, 4, 0, 3, 2, 1, 0}));
}

struct ResolutionCase {
    uint32_t x, y;
    uint16_t unit;
    uint32_t pelsX, pelsY;
    int pngUnit;
};

TEST(ConvertPng, CarriesTheResolution) {
    for (const ResolutionCase& c : {ResolutionCase{204, 98, 2, 8031, 3858, PNG_RESOLUTION_METER},
                                    ResolutionCase{60, 120, 3, 6000, 12000, PNG_RESOLUTION_METER},
                                    ResolutionCase{2, 1, 1, 79, 39, PNG_RESOLUTION_UNKNOWN}}) {
        SCOPED_TRACE(c.unit);
        ImageSpec image = SimpleImage(8, 1, 1, 1, 1, 1, 1, {{0xFF}});
        image.tags.push_back(RationalTag(282, c.x, 1));
        image.tags.push_back(RationalTag(283, c.y, 1));
        image.tags.push_back(ShortTag(296, {c.unit}));
        const std::string out = NewPath("dpi.png");
        ASSERT_EQ(RunTool("convert " + FileOf(BuildTiff({image}), "dpi.tif") + " " + out).exitCode,
                  0);
        const Png png = ReadPng(out);
        EXPECT_EQ(png.pelsX, c.pelsX);
        EXPECT_EQ(png.pelsY, c.pelsY);
        EXPECT_EQ(png.unit, c.pngUnit);
    }
}

Png Squared(ImageSpec image, uint32_t x, uint32_t y, const char* arguments = "--square") {
    image.tags.push_back(RationalTag(282, x, 1));
    image.tags.push_back(RationalTag(283, y, 1));
    const std::string out = NewPath("square.png");
    const ToolRun run = RunTool(std::string("convert ") + arguments + " " +
                                FileOf(BuildTiff({image}), "square.tif") + " " + out);
    EXPECT_EQ(run.exitCode, 0) << run.err;
    return ReadPng(out);
}

TEST(ConvertSquare, RepeatsTheLinesOfAFaxByTheExactRatio) {
    Bytes lines(49);
    for (size_t i = 0; i < lines.size(); ++i)
        lines[i] = static_cast<uint8_t>(i + 1);
    const Png png = Squared(SimpleImage(8, 49, 1, 1, 1, 1, 49, {lines}), 204, 98);
    ASSERT_EQ(png.height, 102U);
    EXPECT_EQ(png.pelsX, png.pelsY);
    for (size_t y = 0; y < png.height; ++y) {
        const auto source = static_cast<size_t>((static_cast<double>(y) + 0.5) * 49 / 102);
        EXPECT_EQ(png.rows[y], Bytes{lines[source]}) << "row " << y;
    }
}

TEST(ConvertSquare, RepeatsColumnsWhereTheirResolutionIsLower) {
    const Png png = Squared(SimpleImage(5, 1, 1, 1, 1, 1, 1, {{0xA8}}), 100, 200);
    EXPECT_EQ(png.width, 10U);
    EXPECT_EQ(png.rows, (std::vector<Bytes>{{0xCC, 0xC0}}));
}

TEST(ConvertSquare, InterpolatesGreyAndColourBetweenPixelCentres) {
    const Png down = Squared(SimpleImage(1, 2, 8, 1, 1, 1, 2, {{0, 100}}), 200, 100);
    EXPECT_EQ(down.rows, (std::vector<Bytes>{{0}, {25}, {75}, {100}}));
    const Png across = Squared(SimpleImage(2, 1, 4, 1, 1, 1, 1, {{0x0F}}), 100, 200);
    EXPECT_EQ(across.depth, 8);
    EXPECT_EQ(across.rows, (std::vector<Bytes>{{0, 64, 191, 255}}));
    const Png rgb = Squared(SimpleImage(2, 1, 8, 3, 1, 2, 1, {{0, 100, 200, 100, 0, 200}}), 1, 2);
    EXPECT_EQ(rgb.rows, (std::vector<Bytes>{{0, 100, 200, 25, 75, 200, 75, 25, 200, 100, 0, 200}}));
    ImageSpec colours = SimpleImage(1, 2, 8, 1, 1, 3, 2, {{0, 1}});
    colours.tags.push_back(ShortTag(320, ColourMap(256, {{0, 0, 0}, {0xFF00, 0x6400, 0}})));
    const Png palette = Squared(colours, 200, 100);
    EXPECT_EQ(palette.colourType, PNG_COLOR_TYPE_RGB);
    EXPECT_EQ(palette.rows,
              (std::vector<Bytes>{{0, 0, 0}, {64, 25, 0}, {191, 75, 0}, {255, 100, 0}}));
}

TEST(ConvertSquare, LeavesWhatHasNoSensibleShape) {
    const std::string out = NewPath("none.png");
    const std::string input =
        FileOf(BuildTiff({SimpleImage(8, 1, 1, 1, 1, 1, 1, {{0xFF}})}), "none.tif");
    const ToolRun run = RunTool("convert --square " + input + " " + out);
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_NE(run.err.find("no resolution"), std::string::npos);
    EXPECT_EQ(ReadPng(out).height, 1U);
    EXPECT_EQ(Squared(SimpleImage(8, 1, 1, 1, 1, 1, 1, {{0xFF}}), 4000000000U, 1).height, 1U);
}

// The samples were written by other programs, and ImageMagick reads them by another library.
TEST(ConvertSamples, AreThePixelsThatAnotherReaderSees) {
    if (std::system("convert -version >/dev/null 2>&1") != 0) GTEST_SKIP() << "no ImageMagick";
    for (const char* name : {"letter.tif", "fax.tif", "drawing.tif", "colour.tif", "palette.tif"}) {
        SCOPED_TRACE(name);
        const std::string theirs = NewPath("theirs.ppm");
        const std::string command =
            "convert '" + Sample(name) + "[0]' -depth 8 " + theirs + " 2>/dev/null";
        ASSERT_EQ(std::system(command.c_str()), 0);
        const ToolRun ours = RunTool("convert --pages 1 --format ppm " + Sample(name) + " -");
        ASSERT_EQ(ours.exitCode, 0) << ours.err;
        const Bytes bytes(ours.out.begin(), ours.out.end());
        const Bytes pixels = PnmPixels(bytes, 4);
        const Bytes judged = PnmPixels(ReadFile(theirs), 4);
        // A ColorMap's 16 bits are cut to 8 here and rounded there.
        EXPECT_TRUE(std::equal(pixels.begin(), pixels.end(), judged.begin(), judged.end(),
                               [](int a, int b) { return std::abs(a - b) <= 1; }));
    }
}

}  // namespace
}  // namespace vellim::test
