// What `vellim paint` shows, held against what `vellim convert` makes of the same page.
#include <gtest/gtest.h>

#include "run_tool.h"

namespace vellim::test {
namespace {

// A picture of three bytes a pixel, and white where there is none.
struct View {
    size_t width = 0, height = 0;
    Bytes rgb;

    [[nodiscard]] uint32_t At(size_t x, size_t y) const {
        if (x >= width || y >= height) return 0xFFFFFF;
        const uint8_t* pixel = rgb.data() + (y * width + x) * 3;
        return static_cast<uint32_t>(pixel[0] << 16 | pixel[1] << 8 | pixel[2]);
    }
};

View ReadPpm(const std::string& path) {
    const std::string text = ReadText(path);
    View view;
    if (std::sscanf(text.c_str(), "P6\n%zu %zu\n255\n", &view.width, &view.height) != 2) {
        ADD_FAILURE() << path << " is no PPM";
    }
    view.rgb = PnmPixels(text, 4);
    view.rgb.resize(view.width * view.height * 3);
    return view;
}

View Painted(const std::string& file, const std::string& options, int exitCode = 0,
             const std::string& words = {}) {
    const std::string out = NewPath("view.ppm");
    ExpectTool(Words({"paint", file, out, options}), exitCode, words);
    return ReadPpm(out);
}

View Page(const std::string& file, const std::string& page = "1") {
    const std::string out = NewPath("page.ppm");
    RunTool(Words({"convert --pages", page, file, out}));
    return ReadPpm(out);
}

std::string CalsLetter() {
    std::string path = NewPath("letter.cal");
    ExpectTool(Words({"convert --pages 1", Sample("letter.tif"), path}), 0);
    return path;
}

// Expects that pixel (x, y) of `view` is what `wanted` gives for it.
template <typename Wanted>
void ExpectPixels(const View& view, size_t width, size_t height, const Wanted& wanted) {
    ASSERT_EQ(view.width, width);
    ASSERT_EQ(view.height, height);
    for (size_t y = 0; y < height; ++y)
        for (size_t x = 0; x < width; ++x)
            ASSERT_EQ(view.At(x, y), wanted(x, y)) << "x " << x << ", y " << y;
}

TEST(Paint, ShowsPixelsScrolledTurnedAndInverted) {
    // The page's pixel at a place of the turned page.
    using Turn = uint32_t (*)(const View& page, size_t x, size_t y);
    const Turn upright = [](const View& p, size_t x, size_t y) { return p.At(x, y); };
    const Turn quarter = [](const View& p, size_t x, size_t y) {
        return p.At(y, p.height - 1 - x);
    };
    const Turn half = [](const View& p, size_t x, size_t y) {
        return p.At(p.width - 1 - x, p.height - 1 - y);
    };
    const Turn threeQuarters = [](const View& p, size_t x, size_t y) {
        return p.At(p.width - 1 - y, x);
    };
    struct Case {
        std::string file, options;
        Turn turn;
        size_t left, top;
        uint32_t exchanged;
    };
    const std::string cals = CalsLetter();
    const std::vector<Case> cases = {
        {Sample("letter.tif"), "", upright, 0, 0, 0},
        {Sample("letter.tif"), "--actual --scroll 150,90", upright, 150, 90, 0},
        {Sample("letter.tif"), "--scroll 99999,2147483647", upright, 1354, 2139, 0},
        {Sample("letter.tif"), "--rotate 90 --scroll 1900,80", quarter, 1900, 80, 0},
        {Sample("drawing.tif"), "--rotate 180 --scroll 9,8 --invert", half, 9, 8, 0xFFFFFF},
        {Sample("drawing.tif"), "--rotate 90", quarter, 0, 0, 0},
        {Sample("colour.tif"), "--rotate 270 --scroll 999,0 ", threeQuarters, 0, 0, 0},
        {Sample("colour.tif"), "--scroll 20,40 --invert", upright, 20, 40, 0xFFFFFF},
        {Sample("palette.tif"), "--rotate 180 --dpi 300", half, 0, 0, 0},
        {cals, "--scroll 150,90", upright, 150, 90, 0},
        {cals, "--rotate 270 --invert --scroll 0,1200", threeQuarters, 0, 1200, 0xFFFFFF}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.file + " " + c.options);
        const View page = Page(c.file);
        const bool onSide = c.turn == quarter || c.turn == threeQuarters;
        const size_t right = onSide ? page.height : page.width;
        const size_t bottom = onSide ? page.width : page.height;
        ExpectPixels(Painted(c.file, "--window 300x200 " + c.options), 300, 200,
                     [&](size_t x, size_t y) {
                         if (x + c.left >= right || y + c.top >= bottom) return 0xFFFFFFU;
                         return c.turn(page, x + c.left, y + c.top) ^ c.exchanged;
                     });
    }
}

// Doubled, each pixel stands four times; a window without the picture's shape draws it out.
TEST(Paint, ZoomsByResolutionAndFits) {
    const View small = Page(Sample("palette.tif"));  // 200 x 240, 300 dots an inch
    for (const char* options : {"--window 500x300 --zoom 2 --dpi 300 --scroll 0,100",
                                "--window 500x300 --zoom 1/2 --dpi 1200 --scroll 0,100"}) {
        ExpectPixels(Painted(Sample("palette.tif"), options), 500, 300, [&](size_t x, size_t y) {
            return x < 400 ? small.At(x / 2, (y + 100) / 2) : 0xFFFFFFU;
        });
    }
    ExpectPixels(Painted(Sample("palette.tif"), "--window 400x720 --fit"), 400, 720,
                 [&](size_t x, size_t y) { return small.At(x / 2, y / 3); });

    // A fax of 204 x 98 dots an inch takes its true shape: 1728 x 1098 become 813 x 1076.
    const View fax = Painted(Sample("fax.tif"), "--window 900x1200 --zoom 1 --invert");
    const auto isEdge = [&fax](size_t x, size_t y) {
        return fax.At(x - 1, y - 1) == 0 && fax.At(x, y - 1) == 0xFFFFFF &&
               fax.At(x - 1, y) == 0xFFFFFF;
    };
    EXPECT_TRUE(isEdge(813, 1076));
}

TEST(Paint, WritesPicturesWithTheDisplaysResolution) {
    const std::string file = Sample("letter.tif"), out = NewPath("view.png");
    ExpectTool(Words({"paint --page 2 --window 30x20 --dpi 200", file, out}), 0);
    const Png png = ReadPng(out);
    EXPECT_EQ(png.width, 30U);
    EXPECT_EQ(png.height, 20U);
    EXPECT_EQ(png.pelsX, 7874U);
    const View second = Page(file, "2");
    ExpectPixels(Painted(file, "--window 900x300 --page 2"), 900, 300,
                 [&](size_t x, size_t y) { return second.At(x, y); });
    const Bytes bytes = ReadFile(Sample("fax.tif"));
    const ToolRun piped = RunTool("paint - - --window 30x20", bytes);
    ExpectTool("paint --window 30x20 --force " + Sample("fax.tif") + " " + out, 0);
    EXPECT_EQ(piped.out, ReadText(out));
}

// The lines that came are there, and the rest is paper.
TEST(Paint, KeepsWhatCameOfADamagedPage) {
    const std::string cut = CalsLetter();
    std::filesystem::resize_file(cut, 8000);
    const std::string tiff =
        FileOf(BuildTiff({SimpleImage(4, 10, 8, 1, 1, 1, 4, {Bytes(16, 7)})}), "cut.tif");
    for (const std::string& file : {cut, tiff}) {
        const View page = Page(file);
        const std::string came = file == cut ? " of 2339 lines came)" : "(4 of 10 lines came)";
        ExpectPixels(Painted(file, "--window 300x1500", 1, came), 300, 1500,
                     [&](size_t x, size_t y) { return page.At(x, y); });
    }
}

TEST(Paint, ReadsCalsRecordsWithLineEnds) {
    const std::string plain = CalsLetter();
    Bytes bytes = ReadFile(plain);
    for (size_t end = 128; end <= 2048; end += 128)
        bytes[end - 1] = '\n';
    const View expected = Painted(plain, "--window 200x300 --fit");
    EXPECT_EQ(Painted(FileOf(bytes, "lines.cal"), "--window 200x300 --fit").rgb, expected.rgb);
}

TEST(Paint, RefusesWhatItCantShowAndLeavesNothing) {
    const std::string folder = NewFolder("painted");
    const std::string png = FileOf({0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'}, "some.png");
    const std::string fax = Sample("fax.tif");
    const std::string empty =
        FileOf(BuildTiff({SimpleImage(16, 10, 1, 1, 99, 0, 10, {Bytes(9)})}), "unknown.tif");
    struct Case {
        std::string file, options;
        int exitCode;
        const char* words;
    };
    for (const Case& c :
         {Case{png, "--window 9x9", 2, "of the kind PNG; TIFF and CALS alone can be painted"},
          Case{Sample("README.md"), "--window 9x9", 2, "it is no TIFF or CALS file"},
          Case{FileOf({'I', 'I', 43, 0}, "big.tif"), "--window 9x9", 2, "valid TIFF format"},
          Case{empty, "--window 9x9", 2, "image 1: Image compression type is not known."},
          Case{folder + "/none.tif", "--window 9x9", 2, "No such file"},
          Case{fax, "--window 9x9 --page 2", 2, "no page 2: the last one is page 1"},
          Case{fax, "", 64, "--window is required"},
          Case{fax, "--window 0x9", 64, "--window: takes WxH"},
          Case{fax, "--window 9x32768", 64, "--window: takes WxH"},
          Case{fax, "--window 9x9 --zoom 1/0", 64, "--zoom: takes a fraction"},
          Case{fax, "--window 9x9 --zoom -2", 64, "--zoom: takes a fraction"},
          Case{fax, "--window 9x9 --scroll -1,0", 64, "--scroll: takes X,Y"},
          Case{fax, "--window 9x9 --dpi 4801", 64, "--dpi: "},
          Case{fax, "--window 9x9 --rotate 45", 64, "--rotate: "},
          Case{fax, "--window 9x9 --fit --zoom 2", 64, "excludes"}}) {
        ExpectTool(Words({"paint", c.file, folder + "/view.png", c.options}), c.exitCode, c.words);
    }
    ExpectTool(Words({"paint", fax, folder + "/view.tif --window 9x9"}), 64, "served are png");
    EXPECT_EQ(Names(folder).size(), 0U);

    const std::string input = folder + "/fax.png", link = folder + "/link.png";
    std::filesystem::copy_file(fax, input);
    std::filesystem::create_hard_link(input, link);
    ExpectTool(Words({"paint --window 9x9", fax, input}), 2, "with --force it is replaced");
    for (const std::string& out : {input, link})
        ExpectTool(Words({"paint --window 9x9 --force", input, out}), 2, "it is the input too");
    EXPECT_EQ(ReadFile(input), ReadFile(fax));
}

}  // namespace
}  // namespace vellim::test
