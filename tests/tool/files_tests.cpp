// Where pages come from and go to: pages and their names, pipes, long paths, damaged images, and
// what is left when something fails.
#include <gtest/gtest.h>

#include <filesystem>

#include "run_tool.h"

namespace vellim::test {
namespace {

namespace fs = std::filesystem;

// `pages` pages of 8 x 1, page n holding the byte n.
Bytes Pages(uint8_t pages) {
    std::vector<ImageSpec> images;
    for (uint8_t page = 1; page <= pages; ++page) {
        images.push_back(SimpleImage(1, 1, 8, 1, 1, 1, 1, {{page}}));
    }
    return BuildTiff(images);
}

// An uncompressed 8-bit image of 4 x 10 whose strip begins `bytes` bytes before the file's end.
Bytes CutShort(uint32_t bytes, uint16_t photometric) {
    ImageSpec image = SimpleImage(4, 10, 8, 1, 1, photometric, 10, {});
    image.tags.push_back(LongTag(273, {0}));
    const auto size = static_cast<uint32_t>(BuildTiff({image}).size());
    image.tags.back() = LongTag(273, {size - bytes});
    return BuildTiff({image});
}

std::vector<std::string> Names(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder)) {
        names.push_back(entry.path().filename());
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::string NewFolder(const std::string& name) {
    std::string folder = fs::path(NewPath("anchor")).replace_filename(name);
    fs::remove_all(folder);
    fs::create_directory(folder);
    return folder;
}

TEST(ConvertPages, GoToNumberedFilesThatSort) {
    const std::string input = FileOf(Pages(12), "twelve.tif");
    struct Case {
        const char* arguments;
        std::vector<std::string> names;
    };
    for (const Case& c :
         {Case{"--pages 3-4,12,3", {"p.x-03.pgm", "p.x-04.pgm", "p.x-12.pgm"}},
          Case{"--pages 11-", {"p.x-11.pgm", "p.x-12.pgm"}},
          Case{"--pages=-2", {"p.x-01.pgm", "p.x-02.pgm"}}, Case{"--pages 5", {"p.x.pgm"}}}) {
        SCOPED_TRACE(c.arguments);
        const std::string folder = NewFolder("pages");
        const ToolRun run = RunTool(Words({"convert", c.arguments, input, folder + "/p.x.pgm"}));
        EXPECT_EQ(run.exitCode, 0) << run.err;
        EXPECT_EQ(Names(folder), c.names);
    }
    const std::string folder = NewFolder("pages");
    ASSERT_EQ(RunTool("convert --format pgm " + input + " " + folder + "/p").exitCode, 0);
    EXPECT_EQ(Names(folder).size(), 12U);
    EXPECT_EQ(PnmPixels(ReadFile(folder + "/p-07"), 4), Bytes{7});
}

TEST(ConvertPages, OneAfterTheOtherOnlyWhereTheFormatAllows) {
    const std::string input = FileOf(Pages(2), "two.tif");
    EXPECT_EQ(RunTool("convert --format pgm " + input + " -").out,
              "P5\n1 1\n255\n\1P5\n1 1\n255\n\2");
    const ToolRun png = RunTool("convert " + input + " -");
    EXPECT_EQ(png.exitCode, 64);
    EXPECT_EQ(png.out, "");
}

TEST(Usage, IsToldByExitCode64AndFailureBy2) {
    const std::string input = FileOf(Pages(3), "three.tif");
    const std::string folder = NewFolder("usage");
    setenv("IN", input.c_str(), 1);
    setenv("DIR", folder.c_str(), 1);
    struct Case {
        std::string arguments;  // $IN: an image; $DIR: an empty folder
        int exitCode;
    };
    for (const Case& c : std::initializer_list<Case>{{"", 64},
                                                     {"info", 64},
                                                     {"frobnicate x", 64},
                                                     {"info --nonsense x", 64},
                                                     {"convert $IN $DIR/x.gif", 64},
                                                     {"convert --format gif $IN $DIR/x.png", 64},
                                                     {"convert --pages 0 $IN $DIR/x.png", 64},
                                                     {"convert --pages 3-1 $IN $DIR/x.png", 64},
                                                     {"convert --pages 1,,2 $IN $DIR/x.png", 64},
                                                     {"convert --pages 2x $IN $DIR/x.png", 64},
                                                     {"convert --pages - $IN $DIR/x.png", 64},
                                                     {"convert --pages 2-4 $IN $DIR/x.png", 2},
                                                     {"convert $DIR/none.tif $DIR/x.png", 2},
                                                     {"convert $IN $DIR/none/x.png", 2},
                                                     {"info $DIR", 2},
                                                     {"--help", 0},
                                                     {"convert --help", 0},
                                                     {"--version", 0}}) {
        SCOPED_TRACE(c.arguments);
        const ToolRun run = RunTool(c.arguments);
        EXPECT_EQ(run.exitCode, c.exitCode) << run.err;
        EXPECT_EQ(run.err.rfind("vellim: ", 0), c.exitCode == 0 ? std::string::npos : 0U);
    }
    // What goes to a full disk is no success, even if it fits the buffers.
    for (const char* arguments : {"info $IN", "check $IN", "convert --pages 1 $IN -"}) {
        const std::string shell = Words({"--version >/dev/null; " VELLIM_BINARY_DIR "/bin/vellim",
                                         arguments, ">/dev/full 2>/dev/null; exit $?; true"});
        EXPECT_EQ(RunTool(shell).exitCode, 2) << arguments;
    }
    EXPECT_EQ(Names(folder).size(), 0U);
    EXPECT_NE(RunTool("--version").out.find("Version 6.14"), std::string::npos);
    for (const char* help : {"--help", "info --help", "convert --help", "check --help"}) {
        const std::string text = RunTool(help).out;
        EXPECT_EQ(text.rfind("Examples:", 0), 0U) << help;
        EXPECT_NE(text.find("64  wrong usage"), std::string::npos) << help;
    }
}

TEST(Input, MayBeAPipeOrHaveALongPath) {
    const Bytes bytes = ReadFile(Sample("fax.tif"));
    const std::string expected = RunTool("convert --format pbm " + Sample("fax.tif") + " -").out;
    ASSERT_GT(expected.size(), 200000U);
    EXPECT_TRUE(RunTool("convert --format pbm - -", bytes).out == expected);
    const ToolRun piped =
        RunTool("--version >/dev/null; sh -c 'cat " + Sample("fax.tif") +
                " | " VELLIM_BINARY_DIR "/bin/vellim convert --format pbm /dev/stdin -'");
    EXPECT_TRUE(piped.out == expected) << piped.err;

    fs::path folder = NewFolder("long");
    for (int i = 0; i < 3; ++i)
        folder /= std::string(100, static_cast<char>('a' + i));
    fs::create_directories(folder);
    const std::string path = folder / "fax.tif";
    fs::copy_file(Sample("fax.tif"), path);
    EXPECT_TRUE(RunTool("convert --format pbm " + path + " -").out == expected);
    EXPECT_EQ(RunTool("check - " + path, bytes).out,
              "standard input: image 1: 1098 of 1098 lines good\n" + path +
                  ": image 1: 1098 of 1098 lines good\n");
    const ToolRun empty = RunTool("info -");
    EXPECT_EQ(empty.exitCode, 2);
    EXPECT_EQ(empty.err, "vellim: standard input: it is empty\n");
}

TEST(Damage, KeepsTheLinesThatCameOnWhitePaper) {
    for (const uint16_t photometric : {uint16_t{0}, uint16_t{1}}) {
        const Bytes file = CutShort(26, photometric);
        const std::string input = FileOf(file, "cut.tif");
        const std::string out = NewPath("cut.pgm");
        const ToolRun run = RunTool(Words({"convert", input, out}));
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_EQ(run.err, "vellim: " + input +
                               ": image 1: Unexpected end of file in reading data. "
                               "(6 of 10 lines came)\n");
        Bytes expected(40, 0xFF);
        for (size_t i = 0; i < 24; ++i) {
            const uint8_t stored = file[file.size() - 26 + i];
            expected[i] = photometric == 0 ? static_cast<uint8_t>(~stored) : stored;
        }
        EXPECT_EQ(PnmPixels(ReadFile(out), 4), expected);
        const ToolRun check = RunTool("check " + input);
        EXPECT_EQ(check.exitCode, 1);
        EXPECT_EQ(check.out.rfind(input + ": image 1: 6 of 10 lines good: Unexpected end", 0), 0U);
    }
}

TEST(Damage, OfAPaletteImageIsFilledWithItsWhitestColour) {
    ImageSpec image = SimpleImage(2, 4, 4, 1, 32773, 3, 4, {});
    std::vector<uint16_t> map(48, 0);
    map[9] = map[25] = map[41] = 0xF000;
    image.tags.push_back(ShortTag(320, map));
    image.tags.push_back(LongTag(273, {0}));
    const auto size = static_cast<uint32_t>(BuildTiff({image}).size());
    // The file ends with the link of its only directory: four bytes of 0, two runs of one byte.
    image.tags.back() = LongTag(273, {size - 4});
    const std::string out = NewPath("palette.png");
    EXPECT_EQ(RunTool("convert " + FileOf(BuildTiff({image}), "p.tif") + " " + out).exitCode, 1);
    EXPECT_EQ(ReadPng(out).rows, (std::vector<Bytes>{{0}, {0}, {0x99}, {0x99}}));
}

TEST(Failure, LeavesWhatWasThereAndNothingElse) {
    const std::string folder = NewFolder("kept");
    const std::string input = FileOf(CutShort(0, 1), "nothing.tif");
    const std::string out = folder + "/old.png";
    fs::copy_file(Sample("README.md"), out);
    const ToolRun run = RunTool("convert " + input + " " + out);
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_NE(run.err.find("(0 of 10 lines came)"), std::string::npos) << run.err;
    EXPECT_EQ(ReadFile(out), ReadFile(Sample("README.md")));
    EXPECT_EQ(Names(folder), std::vector<std::string>{"old.png"});
    EXPECT_EQ(RunTool("check " + input).exitCode, 2);
}

// A line of a million pixels, sixteen million times: one line comes, petabytes are missing.
TEST(Failure, AHugeEmptyPageDoesNotFillTheDisk) {
    ImageSpec image = SimpleImage(1048576, 16777216, 1, 1, 4, 0, 0, {{0x80, 0x08, 0x00, 0x80}});
    const std::string out = NewPath("huge.png");
    const ToolRun run = RunTool("convert " + FileOf(BuildTiff({image}), "huge.tif") + " " + out);
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_NE(run.err.find("too many lines are missing"), std::string::npos) << run.err;
    EXPECT_FALSE(Exists(out));
}

TEST(Output, ReplacesTheFileBehindALink) {
    const std::string folder = NewFolder("links");
    fs::copy_file(Sample("README.md"), folder + "/target.pgm");
    fs::permissions(folder + "/target.pgm", fs::perms::owner_read | fs::perms::owner_write);
    fs::create_symlink("target.pgm", folder + "/link.pgm");
    const std::string input = FileOf(Pages(1), "one.tif");
    ASSERT_EQ(RunTool("convert " + input + " " + folder + "/link.pgm").exitCode, 0);
    EXPECT_TRUE(fs::is_symlink(folder + "/link.pgm"));
    EXPECT_EQ(PnmPixels(ReadFile(folder + "/target.pgm"), 4), Bytes{1});
    EXPECT_EQ(fs::status(folder + "/target.pgm").permissions(),
              fs::perms::owner_read | fs::perms::owner_write);
}

}  // namespace
}  // namespace vellim::test
