// Text laid over pages by `vellim stamp`: where it goes, and what stays as it was.
#include <gtest/gtest.h>

#include <array>

#include "run_tool.h"

namespace vellim::test {
namespace {

constexpr const char* kFont = " --font VELLIM --size 12 ";

struct Pixels {
    size_t width = 0, height = 0;
    Bytes rgb;
};

Pixels Page(const std::string& file, const std::string& page = "1") {
    const std::string out = NewPath("page.ppm");
    RunTool(Words({"convert --pages", page, file, out}));
    const std::string text = ReadText(out);
    Pixels pixels;
    EXPECT_EQ(std::sscanf(text.c_str(), "P6\n%zu %zu\n255\n", &pixels.width, &pixels.height), 2);
    pixels.rgb = PnmPixels(text, 4);
    return pixels;
}

struct Change {
    size_t left = SIZE_MAX, top = SIZE_MAX, right = 0, bottom = 0, count = 0;
    bool darker = true;
};

Change Compare(const Pixels& before, const Pixels& after) {
    Change change;
    EXPECT_EQ(before.rgb.size(), after.rgb.size());
    for (size_t i = 0; i < std::min(before.rgb.size(), after.rgb.size()); ++i) {
        if (before.rgb[i] == after.rgb[i]) continue;
        const size_t x = i / 3 % before.width;
        const size_t y = i / 3 / before.width;
        change.left = std::min(change.left, x);
        change.top = std::min(change.top, y);
        change.right = std::max(change.right, x + 1);
        change.bottom = std::max(change.bottom, y + 1);
        change.darker = change.darker && after.rgb[i] < before.rgb[i];
        ++change.count;
    }
    return change;
}

TEST(Stamp, LeavesOtherPagesAndTagsAsTheyWere) {
    const std::string in = NewFolder("in") / "letter.tif";
    const std::string out = NewPath("out.tif");
    std::filesystem::copy_file(Sample("letter.tif"), in);
    ExpectTool("tag " + in + " --image 2 set 65001 --type DOUBLE 0.5 1e300", 0);
    ExpectTool("tag " + in + " --image 2 set 65000 --type SRATIONAL -- -5/2", 0);
    ExpectTool("tag " + in + " --image 2 set 65002 --type SHORT 7", 0);
    ExpectTool(Words({"stamp", in, out, "--text MM --at 900,1800 --page 2", kFont}), 0,
               "3 pages, 1 stamped");
    const auto before = StoredStrips(in), after = StoredStrips(out);
    EXPECT_EQ(after[0], before[0]);
    EXPECT_EQ(after[2], before[2]);
    auto wanted = Directories(ReadFile(in)), found = Directories(ReadFile(out));
    ASSERT_EQ(found.size(), 3U);
    for (size_t i = 0; i < 3; ++i) {
        for (const uint16_t place : std::to_array<uint16_t>({273, 279})) {
            wanted[i].erase(place);
            found[i].erase(place);
        }
        ASSERT_EQ(found[i].size(), wanted[i].size());
        for (const auto& [tag, value] : wanted[i])
            EXPECT_EQ(found[i][tag].value, value.value) << "page " << i + 1 << ", tag " << tag;
    }
    const Change change = Compare(Page(in, "2"), Page(out, "2"));
    EXPECT_EQ(change.left, 900U) << "in pixels of the page, not of the screen";
    EXPECT_GE(change.top, 1800U);
    EXPECT_LT(change.top, 1810U);
    EXPECT_LE(change.right, 980U);
    EXPECT_LE(change.bottom, 1850U);
    EXPECT_TRUE(change.darker);
    EXPECT_EQ(Shell("tiffinfo -D " + out + " 2>&1 >/dev/null | sed '/Unknown field with/d'"), "");
}

TEST(Stamp, KeepsDepthAndCompression) {
    for (const char* name : {"fax.tif", "letter.tif", "colour.tif", "drawing.tif", "palette.tif"}) {
        SCOPED_TRACE(name);
        const std::string out = NewPath("out.tif");
        ExpectTool(Words({"stamp", Sample(name), out, "--text 'A\\nB' --at 5,7 --page 1", kFont}),
                   0);
        auto before = Directories(ReadFile(Sample(name)))[0];
        auto after = Directories(ReadFile(out))[0];
        for (const uint16_t tag :
             std::to_array<uint16_t>({256, 257, 258, 259, 262, 266, 269, 277, 282, 283, 317, 320}))
            EXPECT_EQ(after[tag].value, before[tag].value) << tag;
        const Change change = Compare(Page(Sample(name)), Page(out));
        EXPECT_GT(change.count, 30U);
        EXPECT_GE(change.left, 5U);
        EXPECT_GE(change.top, 7U);
        EXPECT_LT(change.right, 80U);
        EXPECT_LT(change.bottom, 150U);
        EXPECT_TRUE(change.darker);
    }
}

TEST(Stamp, TextIsReadAsItIsMeant) {
    const auto stamped = [](const std::string& text, const std::string& words = {}) {
        const std::string out = NewPath("out.tif");
        ExpectTool(Words({"stamp", Sample("letter.tif"), out, "--at 200,1800 --text", text, kFont}),
                   0, words);
        return StoredStrips(out);
    };
    const auto two = stamped("'A\\nB'");
    EXPECT_EQ(two, stamped("'A\nB'"));
    EXPECT_NE(two, stamped("AB"));
    EXPECT_NE(stamped("'A\\\\nB'"), two) << "a backslash";
    EXPECT_EQ(stamped("'\xE6\x97\xA5!'", "1 character of the text became \"?\""), stamped("'?!'"));
    EXPECT_NE(stamped("'\xE2\x82\xAC'"), stamped("'?'"));
    stamped("'" + std::string(400, 'M') + "'", "runs over the page's edge");
}

TEST(Stamp, RefusesWhatItCantStamp) {
    setenv("LETTER", Sample("letter.tif").c_str(), 1);
    setenv("OUT", NewPath("out.tif").c_str(), 1);
    Bytes damaged = ReadFile(Sample("letter.tif"));
    const uint64_t strip = Element(Directories(damaged)[0].at(273), 0);
    std::fill_n(damaged.begin() + static_cast<ptrdiff_t>(strip) + 4000, 200, uint8_t{0});
    setenv("DAMAGED", FileOf(damaged, "damaged.tif").c_str(), 1);
    setenv("BROKEN",
           FileOf(BrokenChain(SimpleImage(3, 1, 8, 1, 1, 1, 1, {{1, 2, 3}})), "b.tif").c_str(), 1);
    struct Case {
        const char* arguments;
        int exitCode;
        const char* words;
    };
    for (const Case& c : {Case{"$LETTER $OUT.png --at 1,1", 64, "TIFF files alone"},
                          Case{"$LETTER $LETTER --at 1,1", 2, "with --force"},
                          Case{"$LETTER $OUT --at 1654,1", 2, "1654 x 2339 pixels"},
                          Case{"$LETTER $OUT --at 1,-1", 64, "--at"},
                          Case{"$LETTER $OUT --at 1,1 --page 4", 2, "no page 4"},
                          Case{"$DAMAGED $OUT --at 1,1", 2, "of 2339 lines came"},
                          Case{"$BROKEN $OUT --at 1,0", 2, "--accept-loss"}}) {
        ExpectTool(std::string("stamp --text A ") + c.arguments, c.exitCode, c.words);
        EXPECT_FALSE(std::filesystem::exists(std::getenv("OUT"))) << c.arguments;
    }
    ExpectTool("stamp --text A --at 1,1 --page 2 $DAMAGED $OUT", 0, "1 stamped");
    ExpectTool("stamp --text A --at 1,1 --force --accept-loss $DAMAGED $OUT", 1, "lines came");
    ExpectTool("check $OUT", 0, "2339 of 2339 lines good");
}

}  // namespace
}  // namespace vellim::test
