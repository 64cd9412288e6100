// Where pages come from and go to: pages and their names, pipes, long paths, damaged images, and
// what is left when something fails.
#include <gtest/gtest.h>

#include "run_tool.h"

namespace vellim::test {
namespace {

namespace fs = std::filesystem;

// Pages of one pixel, page n holding the byte n.
Bytes Pages(uint8_t pages) {
    std::vector<ImageSpec> images;
    for (uint8_t page = 1; page <= pages; ++page)
        images.push_back(SimpleImage(1, 1, 8, 1, 1, 1, 1, {{page}}));
    return BuildTiff(images);
}

// An uncompressed 8-bit image of 4 x 10, white at 0, whose strip begins `bytes` bytes before the
// file's end.
Bytes CutShort(uint32_t bytes) {
    const ImageSpec image = SimpleImage(4, 10, 8, 1, 1, 0, 10, {});
    const size_t size = BuildTiff({With(image, {LongTag(273, {0})})}).size();
    return BuildTiff({With(image, {LongTag(273, {static_cast<uint32_t>(size) - bytes})})});
}

TEST(ConvertPages, GoToNumberedFilesThatSortOrToAPipe) {
    setenv("IN", FileOf(Pages(12), "twelve.tif").c_str(), 1);
    struct Case {
        const char* pages;
        std::vector<std::string> names;
    };
    for (const Case& c : {Case{"3-4,12,3", {"p.x-03.pgm", "p.x-04.pgm", "p.x-12.pgm"}},
                          Case{"11-", {"p.x-11.pgm", "p.x-12.pgm"}}, Case{"5", {"p.x.pgm"}}}) {
        const std::string folder = NewFolder("pages");
        setenv("DIR", folder.c_str(), 1);
        EXPECT_EQ(RunTool(std::string("convert $IN $DIR/p.x.pgm --pages ") + c.pages).exitCode, 0);
        EXPECT_EQ(Names(folder), c.names);
        EXPECT_EQ(PnmPixels(ReadText(folder + "/" + c.names.back()), 4),
                  Bytes{static_cast<uint8_t>(c.names.size() == 1 ? 5 : 12)});
    }
    EXPECT_EQ(RunTool("convert --format pgm --pages=-2 $IN -").out,
              "P5\n1 1\n255\n\1P5\n1 1\n255\n\2");
    EXPECT_EQ(RunTool("convert $IN -").exitCode, 64) << "no PNG holds two pages";
}

TEST(Usage, IsToldByExitCode64AndFailureBy2) {
    const std::string folder = NewFolder("usage");
    setenv("IN", FileOf(Pages(3), "three.tif").c_str(), 1);
    setenv("DIR", folder.c_str(), 1);
    const std::pair<const char*, int> cases[] = {{"", 64},
                                                 {"info", 64},
                                                 {"frobnicate x", 64},
                                                 {"convert --format gif $IN $DIR/x.png", 64},
                                                 {"convert --pages 0 $IN $DIR/x.png", 64},
                                                 {"convert --pages 3-1 $IN $DIR/x.png", 64},
                                                 {"convert --pages 1,,2 $IN $DIR/x.png", 64},
                                                 {"convert --pages 2-4 $IN $DIR/x.png", 2},
                                                 {"convert $IN $DIR/none/x.png", 2},
                                                 {"info $DIR", 2},
                                                 {"convert --help", 0}};
    for (const auto& [arguments, exitCode] : cases)
        EXPECT_EQ(ExpectTool(arguments, exitCode).err.rfind("vellim: ", 0),
                  exitCode == 0 ? std::string::npos : 0U)
            << arguments;
    // What goes to a full disk is no success, even if it fits the buffers.
    for (const std::string arguments : {"info $IN", "check $IN", "convert --pages 1 $IN -"}) {
        const std::string shell = "--version >/dev/null; " VELLIM_BINARY_DIR "/bin/vellim " +
                                  arguments + " >/dev/full 2>/dev/null; exit $?; true";
        EXPECT_EQ(RunTool(shell).exitCode, 2) << arguments;
    }
    EXPECT_EQ(Names(folder).size(), 0U);
    EXPECT_NE(RunTool("--version").out.find("Version 6.14"), std::string::npos);
}

TEST(Input, MayBeAPipeOrHaveALongPath) {
    const Bytes bytes = ReadFile(Sample("fax.tif"));
    const std::string expected = RunTool("convert --format pbm " + Sample("fax.tif") + " -").out;
    ASSERT_GT(expected.size(), 200000U);
    EXPECT_TRUE(RunTool("convert --format pbm - -", bytes).out == expected);
    const std::string path = NewFolder("long/" + std::string(200, 'a')) / "fax.tif";
    fs::copy_file(Sample("fax.tif"), path);
    EXPECT_TRUE(RunTool("convert --format pbm " + path + " -").out == expected);
    EXPECT_EQ(RunTool("check - " + path, bytes).out,
              "standard input: image 1: 1098 of 1098 lines good\n" + path +
                  ": image 1: 1098 of 1098 lines good\n");
    EXPECT_EQ(ExpectTool("info -", 2).err, "vellim: standard input: it is empty\n");
}

TEST(Damage, KeepsTheLinesThatCameOnWhitePaper) {
    const Bytes file = CutShort(26);
    const std::string input = FileOf(file, "cut.tif");
    const std::string out = NewPath("cut.pgm");
    ExpectTool("convert " + input + " " + out, 1,
               "Unexpected end of file in reading data. (6 of 10 lines came)\n");
    Bytes expected(40, 0xFF);
    for (size_t i = 0; i < 24; ++i)
        expected[i] = static_cast<uint8_t>(~file[file.size() - 26 + i]);
    EXPECT_EQ(PnmPixels(ReadText(out), 4), expected);
    ExpectTool("check " + input, 1, input + ": image 1: 6 of 10 lines good: Unexpected end");
}

TEST(Failure, LeavesWhatWasThereAndNothingElse) {
    const std::string folder = NewFolder("kept");
    const std::string input = FileOf(CutShort(0), "nothing.tif");
    const std::string out = folder + "/old.png";
    fs::copy_file(Sample("README.md"), out);
    ExpectTool("convert --force " + input + " " + out, 2, "(0 of 10 lines came)");
    EXPECT_EQ(ReadFile(out), ReadFile(Sample("README.md")));
    EXPECT_EQ(Names(folder), std::vector<std::string>{"old.png"});
    EXPECT_EQ(RunTool("check " + input).exitCode, 2);
}

// A line of a million pixels, sixteen million times: one line comes, petabytes are missing.
TEST(Failure, AHugeEmptyPageDoesNotFillTheDisk) {
    const ImageSpec image =
        SimpleImage(1048576, 16777216, 1, 1, 4, 0, 0, {{0x80, 0x08, 0x00, 0x80}});
    const std::string out = NewPath("huge.png");
    ExpectTool("convert " + FileOf(BuildTiff({image}), "huge.tif") + " " + out, 2,
               "too many lines are missing");
    EXPECT_FALSE(fs::exists(out));
}

TEST(Output, ReplacesTheFileBehindALink) {
    const fs::path folder = NewFolder("links"), target = folder / "target.pgm";
    const std::string link = folder / "link.pgm";
    fs::copy_file(Sample("README.md"), target);
    fs::permissions(target, fs::perms{0600});
    fs::create_symlink("target.pgm", link);
    ExpectTool("convert --force " + FileOf(Pages(1), "one.tif") + " " + link, 0);
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_EQ(PnmPixels(ReadText(target), 4), Bytes{1});
    EXPECT_EQ(fs::status(target).permissions(), fs::perms{0600});
}

}  // namespace
}  // namespace vellim::test
