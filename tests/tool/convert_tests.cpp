// Pixels in the right sense and form, in every format.
#include <gtest/gtest.h>
#include <png.h>

#include "run_tool.h"

namespace vellim::test {
namespace {

Bytes Hex(const std::string& digits) {
    Bytes bytes;
    for (size_t i = 0; i < digits.size(); i += 2)
        bytes.push_back(static_cast<uint8_t>(std::stoi(digits.substr(i, 2), nullptr, 16)));
    return bytes;
}

// The first colours, as red, green and blue; the others are black.
TagSpec ColourMap(unsigned bits, const std::vector<std::array<uint16_t, 3>>& first) {
    std::vector<uint16_t> map(size_t{3} << bits, 0);
    for (size_t i = 0; i < first.size(); ++i)
        for (size_t part = 0; part < 3; ++part)
            map[(part << bits) + i] = first[i][part];
    return ShortTag(320, map);
}

// A line of pixels, its PNG form, and its pixels in the three PNM forms, in hexadecimal.
struct PixelCase {
    const char* name;
    uint32_t width;
    uint16_t bits, samples, photometric;
    const char* stored;
    int colourType;
    const char *png, *pbm, *pgm, *ppm;
};

TEST(ConvertPixels, HaveTheirSenseInEveryFormat) {
    constexpr int kGrey = PNG_COLOR_TYPE_GRAY, kPalette = PNG_COLOR_TYPE_PALETTE;
    const std::vector<PixelCase> cases = {
        {"bilevel, white is zero", 5, 1, 1, 0, "A5", kGrey, "58", "A0", "00FF00FFFF",
         "000000FFFFFF000000FFFFFFFFFFFF"},
        {"16 greys, white is zero", 3, 4, 1, 0, "0F8F", kGrey, "F070", "60", "FF0077",
         "FFFFFF000000777777"},
        {"grey at half of white", 3, 8, 1, 1, "007F80", kGrey, "007F80", "C0", "007F80",
         "0000007F7F7F808080"},
        {"two colours", 3, 1, 1, 3, "5F", kPalette, "40", "E0", "4C1D4C", "FF00000000FFFF0000"},
        {"8-bit colours", 3, 4, 1, 3, "102F", kPalette, "1020", "C0", "1202D0",
         "0A141E010203C8D2DC"},
        {"RGB", 2, 8, 3, 2, "FF00000AFA1E", PNG_COLOR_TYPE_RGB, "FF00000AFA1E", "80", "4C99",
         "FF00000AFA1E"}};
    for (const PixelCase& c : cases) {
        SCOPED_TRACE(c.name);
        ImageSpec image =
            SimpleImage(c.width, 1, c.bits, c.samples, 1, c.photometric, 1, {Hex(c.stored)});
        if (c.colourType == kPalette) {
            image.tags.push_back(c.bits == 1
                                     ? ColourMap(1, {{0xFF00, 0, 0}, {0, 0, 0xFFFF}})
                                     : ColourMap(4, {{1, 2, 3}, {10, 20, 30}, {200, 210, 220}}));
        }
        const std::string input = FileOf(BuildTiff({image}), "line.tif");
        const std::string out = NewPath("line.png");
        ASSERT_EQ(RunTool(Words({"convert", input, out})).exitCode, 0);
        const Png png = ReadPng(out);
        EXPECT_EQ(png.depth, c.bits);
        EXPECT_EQ(png.colourType, c.colourType);
        EXPECT_EQ(png.rows, std::vector<Bytes>{Hex(c.png)});
        EXPECT_EQ(png.unit, -1) << "a resolution from nowhere";
        EXPECT_TRUE(c.colourType != kPalette || png.palette.at(0) == (c.bits == 1 ? 255 : 1));
        const auto pixels = [&](const std::string& format, int fields) {
            const ToolRun run =
                RunTool(Words({"convert", input, "- --dither threshold --format", format}));
            return PnmPixels(run.out, fields);
        };
        EXPECT_EQ(pixels("pbm", 3), Hex(c.pbm));
        EXPECT_EQ(pixels("PGM", 4), Hex(c.pgm));
        EXPECT_EQ(pixels("ppm", 4), Hex(c.ppm));
    }
}

TEST(ConvertPixels, RefusedWhereTheyWouldComeOutWrong) {
    struct Case {
        uint16_t bits, samples, photometric;
        const char* reason;
    };
    for (const Case& c : {Case{8, 3, 6, "YCbCr"}, Case{4, 2, 1, "2 samples of 4 bits"},
                          Case{24, 1, 1, "24 bits"}, Case{8, 1, 3, "Indispensable tags"}}) {
        const ImageSpec image =
            SimpleImage(4, 4, c.bits, c.samples, 1, c.photometric, 4, {Bytes(96)});
        const std::string out = NewPath("odd.png");
        ExpectTool("convert " + FileOf(BuildTiff({image}), "odd.tif") + " " + out, 2, c.reason);
        EXPECT_FALSE(std::filesystem::exists(out));
    }
}

// 3,000 rows of 1,001 bytes: many blocks, the last one not full, and padding to four bytes.
TEST(ConvertBmp, RowsStandBottomUpInFilesAndTopDownInPipes) {
    constexpr uint32_t kWidth = 8008;
    constexpr uint32_t kHeight = 3000;
    Bytes pixels(size_t{1001} * kHeight);
    for (size_t i = 0; i < pixels.size(); ++i)
        pixels[i] = static_cast<uint8_t>(i * i >> 7U);
    const ImageSpec image = SimpleImage(kWidth, kHeight, 1, 1, 1, 1, kHeight, {pixels});
    const std::string input = FileOf(BuildTiff({WithDots(image, 200, 100)}), "tall.tif");
    const std::string path = NewPath("tall.bmp");
    const std::string piped = NewPath("piped.bmp");
    ASSERT_EQ(RunTool("convert " + input + " " + path).exitCode, 0);
    RunTool("convert --format bmp " + input + " - | cat >" + piped + "; true");
    const Bytes file = ReadFile(path);
    const Bytes stream = ReadFile(piped);
    constexpr size_t kRows = 14 + 40 + 8;
    ASSERT_EQ(file.size(), kRows + size_t{1004} * kHeight);
    ASSERT_EQ(stream.size(), file.size());
    const std::pair<size_t, size_t> fields[] = {{2, file.size()}, {10, kRows}, {22, kHeight},
                                                {38, 7874},       {42, 3937},  {54, 0},
                                                {58, 0xFFFFFF}};
    for (const auto& [offset, number] : fields)
        EXPECT_EQ(Number(file, offset, 4), number) << offset;
    EXPECT_EQ(Number(stream, 22, 4), 0U - kHeight);
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

Png Squared(const ImageSpec& image, uint32_t x, uint32_t y) {
    const std::string out = NewPath("square.png");
    const std::string input = FileOf(BuildTiff({WithDots(image, x, y)}), "square.tif");
    EXPECT_EQ(RunTool("convert --square " + input + " " + out).exitCode, 0);
    return ReadPng(out);
}

TEST(ConvertSquare, RepeatsTheLinesOfAFaxByTheExactRatio) {
    const Bytes lines = Counted(49);
    const Png png = Squared(SimpleImage(8, 49, 1, 1, 1, 1, 49, {lines}), 204, 98);
    ASSERT_EQ(png.height, 102U);
    EXPECT_EQ(png.pelsX, 8031U);
    EXPECT_EQ(png.pelsY, 8031U);
    EXPECT_EQ(png.unit, PNG_RESOLUTION_METER);
    for (size_t y = 0; y < png.height; ++y) {
        const auto source = static_cast<size_t>((static_cast<double>(y) + 0.5) * 49 / 102);
        EXPECT_EQ(png.rows[y], Bytes{lines[source]}) << "row " << y;
    }
}

TEST(ConvertSquare, RepeatsColumnsAndInterpolatesBetweenPixelCentres) {
    const Png bilevel = Squared(SimpleImage(5, 1, 1, 1, 1, 1, 1, {{0xA8}}), 100, 200);
    EXPECT_EQ(bilevel.rows, (std::vector<Bytes>{{0xCC, 0xC0}}));
    const Png across = Squared(SimpleImage(2, 1, 4, 1, 1, 1, 1, {{0x0F}}), 100, 200);
    EXPECT_EQ(across.rows, (std::vector<Bytes>{{0, 64, 191, 255}}));
    const Png palette = Squared(With(SimpleImage(1, 2, 8, 1, 1, 3, 2, {{0, 1}}),
                                     {ColourMap(8, {{0, 0, 0}, {0xFF00, 0x6400, 0}})}),
                                200, 100);
    EXPECT_EQ(palette.colourType, PNG_COLOR_TYPE_RGB);
    EXPECT_EQ(palette.rows,
              (std::vector<Bytes>{{0, 0, 0}, {64, 25, 0}, {191, 75, 0}, {255, 100, 0}}));
    // No sensible shape: each line four thousand million times.
    EXPECT_EQ(Squared(SimpleImage(8, 1, 1, 1, 1, 1, 1, {{0xFF}}), 4000000000U, 1).height, 1U);
}

}  // namespace
}  // namespace vellim::test
