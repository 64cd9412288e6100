// Pages that `vellim fax` makes of texts, in the library's own font, whose letters are 9 pixels
// wide and 17 high at the size and resolution used here: 21 letters a line, 4 lines a page.
#include <gtest/gtest.h>

#include "run_tool.h"

namespace vellim::test {
namespace {

constexpr const char* kShape =
    "--font VELLIM --size 12 --resolution 100 --paper 60x30mm --margin 5";
constexpr size_t kMargin = 20;
constexpr size_t kLetterWidth = 9;
constexpr size_t kLineStep = 17;

std::string FaxFile(const std::string& text, const std::string& options = kShape,
                    const std::string& words = {}, const std::string& name = "fax.tif") {
    std::string path = NewPath(name);
    ExpectTool(Words({"fax - -o", path, options}), 0, words, Bytes(text.begin(), text.end()));
    return path;
}

// The stored data of each page: pages are the same if it is.
std::vector<std::vector<Bytes>> Pages(const std::string& text, const std::string& options = kShape,
                                      const std::string& words = {}) {
    return StoredStrips(FaxFile(text, options, words));
}

// A page's rows, '#' for black.
std::vector<std::string> Ink(const std::string& path) {
    const std::string pnm = NewPath("ink.pbm");
    RunTool(Words({"convert --pages 1", path, pnm}));
    const std::string text = ReadText(pnm);
    size_t width = 0;
    size_t height = 0;
    EXPECT_EQ(std::sscanf(text.c_str(), "P4\n%zu %zu\n", &width, &height), 2);
    const Bytes bits = PnmPixels(text, 3);
    std::vector<std::string> rows(height, std::string(width, '.'));
    for (size_t i = 0; i < width * height; ++i) {
        const size_t x = i % width;
        const size_t y = i / width;
        if ((bits.at(y * ((width + 7) / 8) + x / 8) & 0x80U >> x % 8) != 0) rows[y][x] = '#';
    }
    return rows;
}

TEST(Fax, TextBeginsAtItsMarginsAndTabStops) {
    const auto rows =
        Ink(FaxFile("MM\r\n\r\nM\tMMMMMMMM\tM", std::string(kShape) + " --tabs 5,10,45"));
    ASSERT_EQ(rows.size(), 118U);
    ASSERT_EQ(rows[0].size(), 236U);
    // Stops lie at 20, 39 and 177 pixels from the margin; the text behind the first passes the
    // next.
    const std::string line1 = std::string(kMargin, '.') + "#......#.#......#.";
    std::string line3(236, '.');
    for (const size_t at : {0U, 20U, 29U, 38U, 47U, 56U, 65U, 74U, 83U, 177U})
        line3.replace(kMargin + at, kLetterWidth, "#......#.");
    std::vector<size_t> inked;
    for (size_t y = 0; y < rows.size(); ++y) {
        if (rows[y].find('#') != std::string::npos) inked.push_back(y);
    }
    ASSERT_EQ(inked.size(), 22U);
    EXPECT_GE(inked.front(), kMargin);
    EXPECT_LT(inked[10], kMargin + kLineStep);
    EXPECT_EQ(inked[11] - inked[0], 2 * kLineStep);
    EXPECT_EQ(rows[inked[0]], line1 + std::string(236 - line1.size(), '.'));
    EXPECT_EQ(rows[inked[11]], line3);
}

TEST(Fax, LinesPagesAndSignsBecomeWhatTheyMean) {
    struct Case {
        std::string text;
        std::vector<std::string> pages;  // each of lines that end with LF alone and fit
        const char* told = "";
    };
    for (const Case& c : {
             Case{"A\r\nB\rC\nD", {"A\nB\nC\nD"}},
             Case{"A\n\nB\r\n\r\n", {"A\n\nB"}},
             Case{"", {""}},
             Case{"A\fB\r\n\f\fC\f\r\n", {"A", "B", "", "C"}},
             Case{"\fA", {"", "A"}},
             Case{"1\n2\n3\n4\n5\f6", {"1\n2\n3\n4", "5", "6"}},
             Case{"one two three four five six", {"one two three four\nfive six"}},
             Case{"twenty letters, a lot", {"twenty letters, a lot"}},
             Case{"twenty letters, a lot,", {"twenty letters, a\nlot,"}},
             Case{"twenty letters, a lots    and", {"twenty letters, a\nlots    and"}},
             Case{"a well-known-expression here", {"a well-known-\nexpression here"}},
             Case{"abcdefghijklmnopqrstuvwxyz", {"abcdefghijklmnopqrstu\nvwxyz"}},
             Case{"\xEF\xBB\xBF\xC3\xA9\xC3\xBC\xC5\x81\xE1\xBA\xBF\xC3\x9F", {"euLess"}},
             Case{"e\xCC\x81t\xC3\xA9 \xE2\x80\x9C\xEF\xAC\x81n\xE2\x80\x9D", {"ete \"fin\""}},
             Case{"\xE2\x80\xA2\xC2\xA0"
                  "5\xE2\x82\xAC\xE2\x80\x94\xE2\x80\xA6",
                  {"* 5EUR--..."}},
             Case{"1\xC2\xBD \xC2\xBC 10\xC2\xB2", {"1 1/2 1/4 10^2"}},
             Case{"\xE2\x94\x8C\xE2\x94\x80\xE2\x94\x90\xE2\x94\x82", {"+-+|"}},
             Case{"a\x08\x7F"
                  "b\x0B"
                  "c",
                  {"ab\nc"}},
             Case{"\xD0\x94\xF0\x9F\x98\x80.", {"??."}, "2 characters became \"?\""},
             Case{"\x93"
                  "caf\xE9\x94 \x80",
                  {"\"cafe\" EUR"},
                  "it isn't UTF-8"},
         }) {
        SCOPED_TRACE(c.text);
        std::vector<std::vector<Bytes>> wanted;
        for (const std::string& page : c.pages)
            wanted.push_back(Pages(page).at(0));
        EXPECT_EQ(Pages(c.text, kShape, c.told), wanted);
    }
    EXPECT_NE(Pages("A"), Pages("B"));
    EXPECT_NE(Pages("A\nB"), Pages("A\n\nB"));
    EXPECT_NE(Pages("A"), Pages("A", std::string(kShape) + " --bold")) << "letters differ";
}

TEST(Fax, PagesSayHowTheyAreToBeSeen) {
    struct Case {
        const char* options;
        size_t x, y, width, height, compression;
    };
    for (const Case& c : {Case{"", 204, 196, 1687, 2291, 4},
                          Case{"--resolution 204x98 --paper letter", 204, 98, 1734, 1078, 4},
                          Case{"--resolution 300 --compression g3-2d", 300, 300, 2481, 3507, 3},
                          Case{"--paper LEGAL --compression lzw", 204, 196, 1734, 2744, 5}}) {
        SCOPED_TRACE(c.options);
        const std::string path = FaxFile("A\fB\fC", std::string("--font VELLIM ") + c.options);
        const auto images = Directories(ReadFile(path));
        ASSERT_EQ(images.size(), 3U);
        for (size_t i = 0; i < images.size(); ++i) {
            const auto number = [&](uint16_t tag, size_t at = 0) {
                return Element(images[i].at(tag), at);
            };
            EXPECT_EQ(number(256), c.width);
            EXPECT_EQ(number(257), c.height);
            EXPECT_EQ(number(259), c.compression);
            EXPECT_EQ(number(262), 0U) << "white is zero";
            EXPECT_EQ(Number(images[i].at(282).value, 0, 4), c.x);
            EXPECT_EQ(Number(images[i].at(283).value, 0, 4), c.y);
            EXPECT_EQ(number(296), 2U) << "inches";
            EXPECT_EQ(number(297), i);
            EXPECT_EQ(number(297, 1), 3U);
        }
        EXPECT_EQ(Shell("tiffinfo -D " + path + " 2>&1 >/dev/null"), "");
        ExpectTool("check " + path, 0, "lines good");
    }
}

TEST(Fax, TextsOfAllPagesLieOverTheForm) {
    const std::string form = FaxFile("FORM", kShape, {}, "form.tif");
    const std::string options = "--font VELLIM --size 12 --margin 5 --form " + form;
    EXPECT_EQ(Pages("\nX\f\nY", options),
              (std::vector{Pages("FORM\nX").at(0), Pages("FORM\nY").at(0)}));
    const std::string colours = FaxFile("A", "--compression lzw --form " + Sample("colour.tif"));
    ExpectTool("info " + colours, 0, "320 x 240, 150 x 150 dpi, 24 bits");
}

TEST(Fax, RefusesWhatItCantMake) {
    const std::string text = FileOf({'A'}, "text.txt");
    setenv("TEXT", text.c_str(), 1);
    setenv("OUT", NewPath("out.tif").c_str(), 1);
    setenv("THERE", FaxFile("A").c_str(), 1);
    struct Case {
        const char* arguments;
        int exitCode;
        const char* words;
    };
    for (const Case& c :
         {Case{"$TEXT -o $OUT.png", 64, "TIFF files alone"},
          Case{"$TEXT -o $THERE", 2, "with --force"},
          Case{"$TEXT -o $TEXT --force", 2, "it is read from"},
          Case{"nowhere.txt -o $OUT", 2, "No such file"}, Case{"$THERE -o $OUT", 2, "zero bytes"},
          Case{"$TEXT -o $OUT --margin 110x5", 2, "no room"},
          Case{"$TEXT -o $OUT --form $TEXT", 2, ""},
          Case{"$TEXT -o $OUT --tabs 30,20", 64, "--tabs"},
          Case{"$TEXT -o $OUT --paper b9", 64, "--paper"},
          Case{"$TEXT -o $OUT --resolution 5", 64, "--resolution"}}) {
        ExpectTool(std::string("fax ") + c.arguments, c.exitCode, c.words);
    }
    const std::string pages(1000, '\f');
    ExpectTool("fax - -o $OUT", 2, "1001 pages, and a TIFF file holds 1000",
               [](std::string all) { return Bytes(all.begin(), all.end()); }(pages + "A"));
    EXPECT_FALSE(std::filesystem::exists(std::getenv("OUT")));
}

}  // namespace
}  // namespace vellim::test
