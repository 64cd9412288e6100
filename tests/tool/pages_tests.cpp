// Pages put together, taken out, reordered and split, with their data as it is stored.
#include <gtest/gtest.h>

#include "run_tool.h"

namespace vellim::test {
namespace {

namespace fs = std::filesystem;

// Page n of a document: a strip for each of its n rows of 16-bit or 8-bit samples.
ImageSpec PageSpec(uint16_t n, uint16_t bits = 8) {
    std::vector<Bytes> strips;
    for (uint16_t row = 0; row < n; ++row)
        strips.emplace_back(size_t{bits} / 8 * 3, static_cast<uint8_t>(16 * n + row));
    return With(SimpleImage(3, n, bits, 1, 1, 1, 1, std::move(strips)),
                {ShortTag(284, {1}),
                 RationalTag(282, 600, 2),
                 {65000, 12, 1, {0, 0, 0, 0, 0, 0, 0xE0, 0x3F}}});
}

std::string Document(uint16_t pages, const char* name, bool bigEndian = false) {
    std::vector<ImageSpec> images;
    for (uint16_t n = 1; n <= pages; ++n)
        images.push_back(PageSpec(n));
    return FileOf(BuildTiff(images, bigEndian), name);
}

struct Pages : testing::Test {
    Pages() { setenv("DIR", folder.c_str(), 1); }
    const fs::path folder = NewFolder("pages");
};

TEST_F(Pages, AreCopiedInTheOrderAskedForStripByStrip) {
    const std::string ii = Document(4, "ii.tif"), mm = Document(3, "mm.tif", true);
    const auto first = StoredStrips(ii), second = StoredStrips(mm);
    setenv("II", ii.c_str(), 1);
    setenv("MM", mm.c_str(), 1);
    struct Case {
        const char* arguments;
        std::vector<int> pages;  // of the first document; negative: of the second
        char byteOrder;
    };
    for (const Case& c :
         {Case{"$II", {1, 2, 3, 4}, 'I'}, Case{"$II --pages 3,1-2,4-3,3", {3, 1, 2, 4, 3, 3}, 'I'},
          Case{"$MM $II", {-1, -2, -3, 1, 2, 3, 4}, 'M'},
          Case{"$II $MM --pages 3-", {3, 4, -3}, 'I'},
          Case{"$II $MM --pages 4-2 --pages 1", {4, 3, 2, -1}, 'I'},
          Case{"--pages 2 -", {-2}, 'M'}}) {
        SCOPED_TRACE(c.arguments);
        const std::string out = folder / "out.tif";
        const ToolRun run =
            ExpectTool("pages --force -o " + out + " " + c.arguments, 0, "", ReadFile(mm));
        EXPECT_EQ(run.err, "vellim: " + out + ": " + std::to_string(c.pages.size()) +
                               (c.pages.size() == 1 ? " page\n" : " pages\n"));
        std::vector<std::vector<Bytes>> expected;
        for (const int page : c.pages) {
            const auto index = static_cast<size_t>(std::abs(page) - 1);
            expected.push_back(page > 0 ? first[index] : second[index]);
        }
        EXPECT_EQ(StoredStrips(out), expected);
        EXPECT_EQ(ReadFile(out).at(0), c.byteOrder);
        const std::string judge = Shell("tiffinfo " + out);
        EXPECT_EQ(Shell("tiffinfo " + out + " 2>&1 >/dev/null | sed '/Unknown field with/d'"), "");
        EXPECT_NE(judge.find("Tag 65000: 0.500000"), std::string::npos) << judge;
    }
    const std::string out = folder / "out.tif";
    EXPECT_EQ(RunTool("pages $II -o $DIR/out.tif").exitCode, 2) << "it is there";
    const ToolRun added = RunTool("pages $II --pages 4 --append -o " + out);
    EXPECT_EQ(added.err, "vellim: " + out + ": 1 page added, 2 pages in all\n");
    EXPECT_EQ(StoredStrips(out), (std::vector{second[1], first[3]}));
    EXPECT_EQ(RunTool("pages --force $DIR/out.tif --pages 2,1 -o $DIR/out.tif").exitCode, 0);
    EXPECT_EQ(StoredStrips(out), (std::vector{first[3], second[1]})) << "in place";
    EXPECT_EQ(Names(folder), std::vector<std::string>{"out.tif"});
}

TEST_F(Pages, SplitGivesEachAFileNumberedThroughAllInputs) {
    const std::string two = Document(2, "two.tif"), three = Document(3, "three.tif", true);
    setenv("TWO", two.c_str(), 1);
    setenv("THREE", three.c_str(), 1);
    ExpectTool("pages $TWO $THREE --pages 2- --split $DIR/100%%-%03d.tif", 0);
    EXPECT_EQ(Names(folder),
              (std::vector<std::string>{"100%-002.tif", "100%-004.tif", "100%-005.tif"}));
    EXPECT_EQ(StoredStrips(folder / "100%-005.tif").at(0), StoredStrips(three)[2]);
    EXPECT_EQ(ReadFile(folder / "100%-005.tif").at(0), 'M');

    fs::copy_file(two, folder / "p-2.tif");
    const std::pair<const char*, int> cases[] = {
        {"$TWO --split $DIR/p-%d.tif", 2},  // p-2.tif is there
        {"$DIR/p-2.tif --force --split $DIR/p-%d.tif", 2},
        {"$TWO --pages 1,1 --split $DIR/q-%d.tif", 2},
        {"$TWO --split $DIR/q-%s.tif", 64},
        {"$TWO --split $DIR/q-%d%d.tif", 64},
        {"$TWO --split $DIR/q-%0999d.tif", 64},
        {"$TWO --split $DIR/q.tif", 64},
        {"$TWO --split $DIR/q-%d.png", 64},
        {"$TWO", 64},
        {"$TWO -o $DIR/q.tif --pages 1 --pages 2", 64},
        {"$TWO -o $DIR/q.tif --pages 2-3", 2}};
    for (const auto& [arguments, exitCode] : cases)
        ExpectTool(std::string("pages ") + arguments, exitCode);
    EXPECT_EQ(ReadFile(folder / "p-2.tif"), ReadFile(two));
    EXPECT_EQ(Names(folder).size(), 4U);
}

TEST_F(Pages, NothingIsLostUnlessToldSo) {
    const ImageSpec exif = With(PageSpec(1), {LongTag(34665, {8})});
    const ImageSpec typed = With(PageSpec(1), {{40000, 13, 1, {8, 0, 0, 0}}});
    const std::vector<ImageSpec> many(1001, PageSpec(1));
    const Bytes broken = BrokenChain(PageSpec(1));
    Bytes circle = BuildTiff({PageSpec(1), PageSpec(2)});
    std::copy_n(&circle[4], 4, &circle[LinksOf(circle)[0]]);

    struct Case {
        const char* words;
        std::string input;
        const char* pages;
        int exitCode, accepted;  // accepted: with --accept-loss
    };
    const std::string full = FileOf(BuildTiff(many), "many.tif");
    for (const Case& c :
         {Case{"image 2: ExifIFD (34665) points to a directory",
               FileOf(BuildTiff({PageSpec(2), exif}), "exif.tif"), "1-", 2, 0},
          Case{"image 1: tag 40000 points to a directory", FileOf(BuildTiff({typed}), "13.tif"),
               "1-", 2, 0},
          Case{"in tiles", FileOf(BuildTiff({PageSpec(1), Tiled(PageSpec(1))}), "tiled.tif"), "1-",
               2, 2},
          Case{"broken behind image 1", FileOf(broken, "broken.tif"), "1-", 2, 1},
          Case{"", FileOf(broken, "broken.tif"), "1", 0, 0},
          Case{"behind image 1 comes image 1 again", FileOf(circle, "circle.tif"), "1-", 2, 1},
          Case{"more than 1000 images", full, "1-", 2, 1}, Case{"", full, "1000", 0, 0},
          Case{"a file holds no more", full, "1-1000,1", 2, 2}}) {
        const std::string arguments =
            "pages --force " + c.input + " -o $DIR/out.tif --pages " + c.pages;
        fs::remove(folder / "out.tif");
        ExpectTool(arguments, c.exitCode, c.words);
        EXPECT_EQ(Names(folder).size(), c.exitCode == 0 ? 1U : 0U);
        const bool told = c.exitCode == 2 && c.accepted == 0;
        ExpectTool(arguments + " --accept-loss", c.accepted, told ? " was left out" : "");
        const std::string tags = RunTool("info --tags $DIR/out.tif").out;
        EXPECT_EQ(tags.find("34665") & tags.find("40000"), std::string::npos);
        EXPECT_EQ(Names(folder).size(), c.accepted == 2 ? 0U : 1U);
    }
    // Two bytes a sample are in the file's order, and copied as they are.
    setenv("II", Document(1, "ii.tif").c_str(), 1);
    setenv("MM", FileOf(BuildTiff({PageSpec(2, 16)}, true), "mm16.tif").c_str(), 1);
    EXPECT_EQ(RunTool("pages $MM $II -o $DIR/mm.tif").exitCode, 0);
    EXPECT_NE(RunTool("pages $II $MM -o $DIR/ii.tif").err.find("byte order"), std::string::npos);
    EXPECT_NE(RunTool("pages $II --append -o " + full).exitCode, 0) << "it is full";
    EXPECT_EQ(ReadFile(full), BuildTiff(many));
    EXPECT_FALSE(fs::exists(folder / "ii.tif"));
}

}  // namespace
}  // namespace vellim::test
