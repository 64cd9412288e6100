// Notes of images set, shown, deleted, burned in and painted.
#include <gtest/gtest.h>

#include "run_tool.h"

namespace vellim::test {
namespace {

namespace fs = std::filesystem;

constexpr size_t kWidth = 240, kHeight = 100;

ImageSpec Grey() {
    return With(SimpleImage(kWidth, kHeight, 8, 1, 1, 1, kHeight, {Bytes(kWidth * kHeight, 200)}),
                {ShortTag(284, {1}), AsciiTag(305, "a scanner")});
}

std::string Alone(const Bytes& bytes, const std::string& folder = "alone") {
    std::string path = NewFolder(folder) / "scan.tif";
    fs::copy_file(FileOf(bytes, "original.tif"), path);
    return path;
}

// The tags of an image that tell nothing of where and how its data is stored.
Directory Kept(const std::string& path, size_t image) {
    Directory kept = Directories(ReadFile(path)).at(image);
    for (const uint16_t tag : std::initializer_list<uint16_t>{273, 278, 279, 316})
        kept.erase(tag);
    return kept;
}

bool operator==(const Directory& a, const Directory& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const auto& x, const auto& y) {
        return x.first == y.first && x.second.type == y.second.type &&
               x.second.value == y.second.value;
    });
}

struct Rgb {
    size_t width = 0, height = 0;
    Bytes bytes;

    [[nodiscard]] uint64_t At(size_t x, size_t y) const {
        return Number(bytes, (y * width + x) * 3, 3, true);
    }
};

Rgb ReadPpm(const std::string& path) {
    const std::string text = ReadText(path);
    Rgb rgb;
    EXPECT_EQ(std::sscanf(text.c_str(), "P6\n%zu %zu\n255\n", &rgb.width, &rgb.height), 2) << path;
    rgb.bytes = PnmPixels(text, 4);
    return rgb;
}

Rgb Page(const std::string& file, const std::string& page = "1") {
    const std::string out = NewPath("page.ppm");
    ExpectTool(Words({"convert --pages", page, file, out}), 0);
    return ReadPpm(out);
}

// Counts pixels that differ, and expects them inside the box.
size_t Changed(const Rgb& before, const Rgb& after, size_t left, size_t top, size_t right,
               size_t bottom) {
    size_t changed = 0;
    EXPECT_EQ(before.bytes.size(), after.bytes.size());
    for (size_t i = 0; i + 2 < std::min(before.bytes.size(), after.bytes.size()); i += 3) {
        const size_t x = i / 3 % before.width, y = i / 3 / before.width;
        if (before.At(x, y) == after.At(x, y)) continue;
        EXPECT_TRUE(x >= left && x < right && y >= top && y < bottom) << x << ", " << y;
        ++changed;
    }
    return changed;
}

TEST(Note, IsSetShownAndDeletedInPlaceAndInACopy) {
    const std::string path = Alone(BuildTiff({Grey(), Grey(), Grey()}, true));
    const std::string copy = fs::path(path).parent_path() / "copy.tif";
    const auto strips = StoredStrips(path);
    const Directory tags = Kept(path, 1);
    const std::string text =
        "'Gepr\xC3\xBC"
        "ft, 5 \xE2\x82\xAC\n\n  J. D\xC3\xB6'";
    ExpectTool("note " + path + " --image 2 set " + text + " --at 7,9 --opaque", 0, "(316) set");
    ExpectTool("note " + path + " --image 2 set --at 0,0 -o " + copy + " -- -x", 0, "note set");
    const std::string shown = RunTool("note " + path + " show").out;
    int right = 0, bottom = 0;
    const std::string stored = RunTool("tag " + path + " --image 2 get 316").out;
    ASSERT_EQ(std::sscanf(stored.c_str(), "~,1,O,7,9,%d,%d,", &right, &bottom), 2) << stored;
    EXPECT_GT(right, 60);
    EXPECT_EQ(bottom, 9 + 3 * 16);
    EXPECT_EQ(shown, path + ": image 2: opaque note at 7,9, " + std::to_string(right - 7) +
                         " x 48 pixels\n    Gepr\xC3\xBC"
                         "ft, 5 \xE2\x82\xAC\n    \n      J. D\xC3\xB6\n");
    EXPECT_NE(Shell("tiffinfo " + path)
                  .find(",24,Gepr\xFC"
                        "ft, 5 \x80\r\n\r\n  J. D\xF6"),
              std::string::npos);
    EXPECT_NE(RunTool("note - show", ReadFile(copy)).out.find("transparent note at 0,0"),
              std::string::npos);
    for (const std::string& file : {path, copy}) {
        EXPECT_EQ(StoredStrips(file), strips);
        EXPECT_TRUE(Kept(file, 1) == tags);
    }
    ExpectTool("note " + path + " --image 2 delete", 0);
    ExpectTool("note " + path + " --image 2 delete", 0, "nothing was changed");
    ExpectTool("note " + path + " --image 2 show", 2, "there is no note in it");
    EXPECT_EQ(Directories(ReadFile(path)).at(1).count(316), 0U);
    EXPECT_EQ(Names(fs::path(path).parent_path()).size(), 2U);
}

TEST(Note, TheNameOfAComputerIsNoNote) {
    const std::string path = Alone(BuildTiff({With(Grey(), {AsciiTag(316, "PC-7")})}));
    ExpectTool("note " + path + " show", 0, "there are no notes");
    ExpectTool("note " + path + " delete", 0, "nothing was changed");
    ExpectTool("note " + path + " set x --at 1,1", 2, "\"PC-7\" by another program");
    EXPECT_EQ(RunTool("tag " + path + " get 316").out, "PC-7\n");
    ExpectTool("note " + path + " set x --at 1,1 --force", 0);
    ExpectTool("tag " + path + " set 316 '~,1,O,1,1'", 0);
    ExpectTool("note " + path + " show", 1, "damaged");
    ExpectTool("note " + path + " delete", 0, "(316) deleted");
}

// Of each depth and compression: ink in the box alone, the nearest that the page has, and page and
// tags otherwise as they were.
TEST(Note, BurnsIntoItsBoxAlone) {
    const std::string fax = NewPath("fax.tif");
    ExpectTool("convert --compression g3-2d --fill-order 2 " + Sample("fax.tif") + " " + fax, 0);
    struct Case {
        std::string source;
        const char* page;
        const char* options;
    };
    for (const Case& c :
         {Case{Sample("letter.tif"), "2", ""}, Case{fax, "1", "--opaque"},
          Case{Sample("drawing.tif"), "1", ""}, Case{Sample("drawing.tif"), "1", "--opaque"},
          Case{Sample("colour.tif"), "1", "--opaque"}, Case{Sample("palette.tif"), "1", ""}}) {
        SCOPED_TRACE(c.source + " " + c.options);
        const std::string noted = NewPath("noted.tif"), burned = NewPath("burned.tif");
        const std::string image = Words({"--image", c.page});
        ExpectTool(Words({"note", c.source, image, "set 'Two\nlines' --at 150,60", c.options, "-o",
                          noted}),
                   0);
        ExpectTool(Words({"note", noted, image, "burn"}), 64, "--force");
        ExpectTool(Words({"note", noted, image, "burn -o", burned}), 0, "note burned in");
        ExpectTool(Words({"note", burned, image, "show"}), 2);
        const std::string stored = RunTool(Words({"tag", noted, image, "get 316"})).out;
        size_t right = 0, bottom = 0;
        ASSERT_EQ(std::sscanf(stored.c_str() + 6, "150,60,%zu,%zu", &right, &bottom), 2) << stored;
        const Rgb before = Page(c.source, c.page), after = Page(burned, c.page);
        const size_t area = (right - 150) * (bottom - 60);
        const size_t changed = Changed(before, after, 150, 60, right, bottom);
        EXPECT_GT(changed, 20U);
        EXPECT_LT(changed, c.options[0] == 0 ? area / 3 : area + 1);
        const size_t index = std::stoul(c.page) - 1;
        EXPECT_TRUE(Kept(burned, index) == Kept(noted, index));
        auto others = StoredStrips(burned), wanted = StoredStrips(noted);
        others.at(index) = wanted.at(index) = {};
        EXPECT_EQ(others, wanted);
        EXPECT_EQ(Shell("tiffinfo " + burned + " >/dev/null"), "");
    }
    const std::string path = Alone(BuildTiff({Grey()}, true));
    ExpectTool("note " + path + " set XXX --at 230,90 --opaque", 0);  // beyond both edges
    ExpectTool("note " + path + " burn --force", 0);
    const Rgb page = Page(path);
    EXPECT_EQ(page.At(229, 95), 0xC8C8C8U);
    EXPECT_EQ(page.At(239, 99), 0xFFFFFFU);
}

TEST(Note, ARefusalLeavesTheFileAsItIs) {
    const Bytes one = BuildTiff({Grey()}), two = BuildTiff({Grey(), Grey()});
    const Bytes nested = BuildTiff({Grey(), With(Grey(), {LongTag(330, {8, 9})})});
    const Bytes cut = BuildTiff({With(SimpleImage(4, 9, 8, 1, 1, 1, 4, {Bytes(16, 7)}),
                                      {AsciiTag(316, "~,1,T,0,0,9,9,2,x")})});
    const Bytes tiled = BuildTiff({Tiled(Grey())});
    struct Case {
        Bytes file;
        std::string arguments;
        int exitCode;
        const char* words;
    };
    for (const Case& c :
         {Case{one, "set '' --at 1,1", 2, "text is empty"},
          Case{one, "set '\n \n' --at 1,1", 2, "text is empty"},
          Case{one, "set '\xE6\xBC\xA2 x' --at 1,1", 2, "lacks 1 character"},
          Case{one, "set '\xFF' --at 1,1", 2, "isn't UTF-8"},
          Case{one, "set 'a\tb' --at 1,1", 2, "control characters"},
          Case{one, "set " + std::string(1010, 'x') + " --at 1,1", 2, "1024 bytes, and this one"},
          Case{one, "set x --at -1,1", 64, "--at: takes X,Y"},
          Case{one, "set x --at 1,-1", 64, "--at: takes X,Y"},
          Case{one, "set x --at 1", 64, "--at: takes X,Y"},
          Case{one, "set x --at 240,1", 2, "which is 240 x 100"},
          Case{one, "set x", 64, "--at X,Y"}, Case{one, "show x", 64, "go with set"},
          Case{one, "burn --force", 2, "there is no note"},
          Case{one, "delete --image 2", 2, "no image 2"}, Case{two, "delete", 64, "--image"},
          Case{nested, "set x --at 1,1 --image 1", 2, "SubIFDs (330) points to"},
          Case{nested, "set x --at 1,1 --image 1 -o /dev/null", 2, "SubIFDs (330) points to"},
          Case{tiled, "set x --at 1,1", 2, "in tiles"},
          Case{cut, "burn --force", 2, "(4 of 9 lines came)"}}) {
        const std::string path = Alone(c.file);
        ExpectTool("note " + path + " " + c.arguments, c.exitCode, c.words);
        EXPECT_EQ(ReadFile(path), c.file) << c.arguments;
    }
    const std::string path = Alone(cut);
    ExpectTool("note " + path + " burn --force --accept-loss", 1, "(4 of 9 lines came)");
    ExpectTool("note " + path + " delete -o " + path, 2, "with --force it is replaced");
    ExpectTool("note " + Sample("README.md") + " show", 2, "it is no TIFF");
}

// The note stands where its place of the page is seen, in its own size.
TEST(Note, IsPaintedOverThePage) {
    const std::string path = Alone(BuildTiff({Grey()}));
    ExpectTool("note " + path + " set 'Hi there' --at 50,20 --opaque", 0);
    const std::string stored = RunTool("tag " + path + " get 316").out;
    size_t right = 0;
    ASSERT_EQ(std::sscanf(stored.c_str(), "~,1,O,50,20,%zu,36,", &right), 1) << stored;
    const size_t width = right - 50;
    struct Case {
        const char* options;
        size_t left, top, cutLeft;  // of the box in the window
        uint64_t ground;
    };
    for (const Case& c : {Case{"--window 300x120", 50, 20, 0, 0xFFFFFF},
                          Case{"--window 150x60 --scroll 60,15", 0, 5, 10, 0xFFFFFF},
                          Case{"--window 480x200 --zoom 2", 100, 40, 0, 0xFFFFFF},
                          Case{"--window 120x50 --fit", 25, 10, 0, 0xFFFFFF},
                          Case{"--window 300x120 --invert", 50, 20, 0, 0}}) {
        SCOPED_TRACE(c.options);
        const std::string bare = NewPath("bare.ppm"), noted = NewPath("noted.ppm");
        ExpectTool(Words({"paint", path, bare, c.options, "--no-notes"}), 0);
        ExpectTool(Words({"paint", path, noted, c.options}), 0);
        const Rgb after = ReadPpm(noted);
        EXPECT_GT(
            Changed(ReadPpm(bare), after, c.left, c.top, c.left + width - c.cutLeft, c.top + 16),
            300U);
        EXPECT_EQ(after.At(c.left + width - c.cutLeft - 1, c.top), c.ground);
    }
    ExpectTool("paint " + path + " " + NewPath("turned.ppm") + " --window 99x99 --rotate 90", 0,
               "its note isn't shown");
}

}  // namespace
}  // namespace vellim::test
