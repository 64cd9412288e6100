// PNG, BMP and PNM as they are read: forms that the tool itself doesn't write, and bad files.
#include <gtest/gtest.h>
#include <png.h>

#include "run_tool.h"

namespace vellim::test {
namespace {

Bytes Text(const std::string& text) {
    return {text.begin(), text.end()};
}

Bytes PpmOf(const Bytes& file) {
    const ToolRun run = ExpectTool("convert " + FileOf(file, "raster") + " - --format ppm", 0);
    return PnmPixels(run.out, 4);
}

struct PngForm {
    int colourType, depth, channels;
    int interlace = PNG_INTERLACE_NONE;
};

Bytes EncodePng(const PngForm& form, uint32_t width, const std::vector<Bytes>& rows) {
    Bytes file;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_set_write_fn(
        png, &file,
        [](png_structp p, png_bytep bytes, size_t count) {
            auto* to = static_cast<Bytes*>(png_get_io_ptr(p));
            to->insert(to->end(), bytes, bytes + count);
        },
        nullptr);
    png_set_IHDR(png, info, width, static_cast<uint32_t>(rows.size()), form.depth, form.colourType,
                 form.interlace, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    if (form.colourType == PNG_COLOR_TYPE_PALETTE) {
        const png_color colours[] = {{10, 20, 30}, {40, 50, 60}, {70, 80, 90}, {0, 0, 0}};
        const png_byte alphas[] = {255, 0, 128};
        png_set_PLTE(png, info, colours, 4);
        png_set_tRNS(png, info, alphas, 3, nullptr);
    }
    std::vector<png_bytep> lines;
    lines.reserve(rows.size());
    for (const Bytes& row : rows)
        lines.push_back(const_cast<png_bytep>(row.data()));
    png_set_rows(png, info, lines.data());
    png_write_png(png, info, PNG_TRANSFORM_IDENTITY, nullptr);
    png_destroy_write_struct(&png, &info);
    return file;
}

uint8_t OverWhite(unsigned sample, unsigned alpha) {
    return static_cast<uint8_t>((sample * alpha + 255 * (255 - alpha) + 127) / 255);
}

TEST(PngInput, DepthsAlphaAndInterlacing) {
    constexpr uint32_t kWidth = 11, kHeight = 9;
    for (const int interlace : {PNG_INTERLACE_NONE, PNG_INTERLACE_ADAM7}) {
        for (const PngForm& form :
             {PngForm{PNG_COLOR_TYPE_GRAY, 16, 1}, PngForm{PNG_COLOR_TYPE_GRAY_ALPHA, 8, 2},
              PngForm{PNG_COLOR_TYPE_RGB_ALPHA, 8, 4}, PngForm{PNG_COLOR_TYPE_RGB_ALPHA, 16, 4}}) {
            std::vector<Bytes> rows;
            Bytes expected;
            for (uint32_t y = 0; y < kHeight; ++y) {
                Bytes row;
                for (uint32_t x = 0; x < kWidth; ++x) {
                    uint8_t samples[4] = {};
                    for (int i = 0; i < form.channels; ++i) {
                        samples[i] = static_cast<uint8_t>(x * 23 + y * 29 + 71U * unsigned(i));
                        row.push_back(samples[i]);
                        if (form.depth == 16) row.push_back(samples[i]);
                    }
                    const unsigned alpha =
                        form.channels % 2 == 0 ? samples[form.channels - 1] : 255;
                    for (int i = 0; i < 3; ++i)
                        expected.push_back(OverWhite(samples[form.channels > 2 ? i : 0], alpha));
                }
                rows.push_back(row);
            }
            PngForm made = form;
            made.interlace = interlace;
            EXPECT_EQ(PpmOf(EncodePng(made, kWidth, rows)), expected) << form.colourType;
        }
        const PngForm four{PNG_COLOR_TYPE_PALETTE, 2, 1, interlace};
        EXPECT_EQ(PpmOf(EncodePng(four, 5, {{0x1B, 0x40}})),
                  (Bytes{10, 20, 30, 255, 255, 255, OverWhite(70, 128), OverWhite(80, 128),
                         OverWhite(90, 128), 0, 0, 0, 255, 255, 255}));
        const PngForm greys{PNG_COLOR_TYPE_GRAY, 2, 1, interlace};
        EXPECT_EQ(PpmOf(EncodePng(greys, 4, {{0x1B}})),
                  (Bytes{0, 0, 0, 85, 85, 85, 170, 170, 170, 255, 255, 255}));
    }
}

TEST(PnmInput, AllSixKindsAndHighestValues) {
    const Bytes bits = {0, 0, 0, 255, 255, 255, 0, 0, 0, 255, 255, 255, 0, 0, 0, 255, 255, 255};
    EXPECT_EQ(PpmOf(Text("P1\n# note\n3 2\n101\n0 1 0")), bits);
    EXPECT_EQ(PpmOf(Text("P4 3 #note\n2\n\xBF\x5F")), bits);
    EXPECT_EQ(PpmOf(Text("P2 2 1 9 4\n9")), (Bytes{113, 113, 113, 255, 255, 255}));
    EXPECT_EQ(PpmOf(Text("P3 1 1 1000 0 500 1000")), (Bytes{0, 128, 255}));
    EXPECT_EQ(PpmOf(Text("P5 2 1 3 \x02\x03")), (Bytes{170, 170, 170, 255, 255, 255}));
    EXPECT_EQ(PpmOf(Text("P6 1 1 65535\n\x12\x34\x80\x80\xFF\xFF")), (Bytes{18, 128, 255}));
}

// A header of 40 bytes, or one of OS/2, and what follows it.
Bytes Bmp(uint32_t header, int32_t width, int32_t height, uint8_t bits, uint8_t compression,
          const Bytes& rest, uint8_t rowsAt) {
    Bytes file = {'B', 'M', 0, 0, 0, 0, 0, 0, 0, 0, rowsAt, 0, 0, 0, static_cast<uint8_t>(header),
                  0,   0,   0};
    const auto put = [&](int32_t number, int bytes) {
        for (int i = 0; i < bytes; ++i)
            file.push_back(static_cast<uint8_t>(static_cast<uint32_t>(number) >> 8 * i));
    };
    const int side = header == 12 ? 2 : 4;
    put(width, side);
    put(height, side);
    put(1, 2);
    put(bits, 2);
    if (header == 40) {
        put(compression, 4);
        file.resize(file.size() + 20);
    }
    file.insert(file.end(), rest.begin(), rest.end());
    return file;
}

TEST(BmpInput, HeadersOrdersAndMasks) {
    // Top down, 32 bits; bottom up with masks; OS/2 with colours of three bytes.
    EXPECT_EQ(PpmOf(Bmp(40, 1, -2, 32, 0, {3, 2, 1, 0, 6, 5, 4, 9}, 54)),
              (Bytes{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(PpmOf(Bmp(40, 1, 2, 32, 3,
                        {0xFF, 0, 0, 0, 0, 0xFF, 0, 0, 0, 0, 0xFF, 0, 4, 5, 6, 0, 1, 2, 3, 0}, 66)),
              (Bytes{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(PpmOf(Bmp(12, 2, 1, 1, 0, {30, 20, 10, 60, 50, 40, 0x40, 0, 0, 0}, 32)),
              (Bytes{10, 20, 30, 40, 50, 60}));
    ExpectTool("convert " + FileOf(Bmp(40, 4, 4, 8, 1, Bytes(2000), 54), "rle.bmp") + " -", 2,
               "compression");
}

// Cut at every byte, and with sides out of all measure.
TEST(BadRasterFiles, AreToldAndLeaveNoFile) {
    const Bytes png = EncodePng({PNG_COLOR_TYPE_RGB, 8, 3}, 2, {{1, 2, 3, 4, 5, 6}});
    const Bytes laced = EncodePng({PNG_COLOR_TYPE_GRAY, 8, 1, PNG_INTERLACE_ADAM7}, 2, {{1, 2}});
    std::vector<Bytes> bad;
    for (const Bytes& file :
         {png, laced, Bmp(40, 1, -2, 32, 0, {3, 2, 1, 0, 6, 5, 4, 9}, 54), Text("P5 2 2 255 abcd"),
          Text("P3 1 2 9 1 2 3 4 5 "), Text("P1 2 1 11")}) {
        for (size_t size = 0; size < file.size(); ++size)
            bad.emplace_back(file.begin(), file.begin() + static_cast<ptrdiff_t>(size));
    }
    Bytes huge = laced;
    huge[16] = huge[20] = 0x7F;
    bad.push_back(huge);
    for (const char* text : {"P5 4000000000 4000000000 255 a", "P4 0 5 a", "P5 1 1 65536 ab",
                             "P6 1 1 0 abc", "P2 1 1 9 x", "P7\nWIDTH 1\n", "GIF89a....."})
        bad.push_back(Text(text));
    bad.push_back(Bmp(40, 2000000000, 2000000000, 24, 0, Bytes(64), 54));
    bad.push_back(Bmp(40, -1, 1, 24, 0, Bytes(64), 54));
    for (const Bytes& file : bad) {
        const std::string out = NewPath("none.tif");
        const ToolRun run = RunTool("convert " + FileOf(file, "bad") + " " + out);
        const bool told = run.exitCode == 2 && run.err.rfind("vellim: ", 0) == 0;
        EXPECT_TRUE(told && !std::filesystem::exists(out))
            << std::string(file.begin(), file.end()) << "\n"
            << run.exitCode << run.err;
    }
}

}  // namespace
}  // namespace vellim::test
