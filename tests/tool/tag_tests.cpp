// Tags listed, shown, set and deleted in files.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

#include "run_tool.h"

namespace vellim::test {
namespace {

namespace fs = std::filesystem;

ImageSpec Picture(uint8_t n) {
    return With(SimpleImage(3, 2, 8, 1, 1, 1, 1, {{n, 1, 2}, {3, 4, n}}),
                {ShortTag(284, {1}), AsciiTag(305, "a scanner")});
}

// A file of its own in a folder of its own, so that what is left beside it shows.
std::string Alone(const Bytes& bytes, const std::string& folder = "alone") {
    std::string path = NewFolder(folder) / "scan.tif";
    fs::copy_file(FileOf(bytes, "original.tif"), path);
    return path;
}

TEST(Tag, IsSetReadBackAndDeleted) {
    const std::string path = Alone(BuildTiff({Picture(1), Picture(2), Picture(3)}, true));
    const auto strips = StoredStrips(path);
    struct Case {
        const char* words;  // behind "set"
        const char* tag;
        const char* shown;  // by "get"
        const char* judge;  // by tiffinfo
    };
    bool bigEndian = true;
    for (const Case& c : {Case{"Artist \"J. D\xC3\xB6\"", "315", "J. D\xC3\xB6", "Artist: J. D"},
                          Case{"software '[new]'", "Software", "[new]", "Software: [new]"},
                          Case{"XResolution 2.54", "282", "127/50", ""},
                          Case{"YResolution 300", "YResolution", "300/1", ""},
                          Case{"PageNumber 1 0x10", "297", "1 16", "Page Number: 1-16"},
                          Case{"306 '2024:02:29 12:00:00'", "DateTime", "2024:02:29 12:00:00",
                               "DateTime: 2024:02:29 12:00:00"},
                          Case{"65000 --type SLONG -- -70000 5", "65000", "-70000 5", ""},
                          Case{"65001 --type DOUBLE 0.5 1e300", "65001", "0.5 1e+300", ""},
                          Case{"65002 --type SRATIONAL -- -2.5", "65002", "-5/2", ""},
                          Case{"ImageWidth --force 70000", "256", "70000", "Image Width: 70000"},
                          Case{"ImageWidth --force 3", "256", "3", "Image Width: 3"}}) {
        SCOPED_TRACE(c.words);
        const ToolRun run = ExpectTool("tag " + path + " --image 2 set " + c.words, 0, " set");
        EXPECT_EQ(run.err.rfind("vellim: " + path + ": image 2: ", 0), 0U) << run.err;
        EXPECT_EQ(run.err.find("byte order is II") != std::string::npos, bigEndian) << run.err;
        EXPECT_EQ(run.err.find("plain ASCII") != std::string::npos, bigEndian) << "first case";
        bigEndian = false;
        EXPECT_EQ(RunTool("tag " + path + " get --image 2 " + c.tag).out,
                  std::string(c.shown) + "\n");
        EXPECT_NE(Shell("tiffinfo " + path).find(c.judge), std::string::npos);
    }
    EXPECT_NE(Shell("tiffinfo " + path).find("Resolution: 2.54, 300"), std::string::npos);
    EXPECT_EQ(StoredStrips(path), strips);
    ExpectTool("tag " + path + " delete SOFTWARE --image 2", 0);
    EXPECT_NE(RunTool("tag " + path + " list").out.find("image 3:\n"), std::string::npos);
    ExpectTool("tag " + path + " --image 2 get Software", 2);
    EXPECT_EQ(RunTool("tag " + path + " --image 1 get Software").out, "a scanner\n");
    EXPECT_EQ(Names(fs::path(path).parent_path()).size(), 1U);
}

TEST(Tag, TrueWidthsAndLongPaths) {
    const std::string path = Alone(BuildTiff({Picture(1)}), std::string(200, 'a'));
    ExpectTool("tag " + path + " set 65001 --type DOUBLE 0.5 2", 0);
    EXPECT_EQ(ExpectTool("tag " + path + " set Make x", 0).err,
              "vellim: " + path + ": image 1: Make (271) set\n");
    ExpectTool("tag " + path + " set 65002 --type SSHORT -- -5 7", 0);
    const std::string listed = RunTool("tag " + path + " list").out;
    EXPECT_NE(listed.find(" 0.5 2\n"), std::string::npos) << listed;
    EXPECT_NE(listed.find(" -5 7\n"), std::string::npos) << listed;
    EXPECT_NE(Shell("tiffinfo " + path).find("Tag 65001: 0.500000,2.000000"), std::string::npos);
    EXPECT_EQ(Names(fs::path(path).parent_path()).size(), 1U);
}

TEST(Tag, ARefusalLeavesTheFileAsItIs) {
    const Bytes sound = BuildTiff({Picture(1), Picture(2)}), one = BuildTiff({Picture(1)});
    const Bytes nested = BuildTiff({Picture(1), With(Picture(2), {LongTag(330, {8, 9})})});
    const Bytes wide = BuildTiff({SimpleImage(1, 1, 16, 1, 1, 1, 1, {{1, 2}})}, true);
    struct Case {
        Bytes file;
        const char* arguments;
        int exitCode;
        const char* words;
    };
    for (const Case& c :
         {Case{one, "set ImageWidth 4", 2, "--force"},
          Case{one, "set 273 9", 2, "--force"},
          Case{one, "set ExifIFD 8", 2, "--force"},
          Case{one, "delete Compression", 2, "--force"},
          Case{one, "delete 262", 2, "readers need"},
          Case{one, "delete 273 --force", 2, "Such tag"},
          Case{one, "set DateTime 2024-02-29", 2, "has the form"},
          Case{one, "set XResolution 300 300", 2, "takes 1 value"},
          Case{one, "set Orientation 9", 2, "from 1 to 8"},
          Case{one, "set Orientation 70000", 64, "no value of the type SHORT"},
          Case{one, "set Orientation 1x", 64, "no value"},
          Case{one, "set 282 3/0", 64, "no value"},
          Case{one, "set 65000 5", 64, "--type"},
          Case{one, "set Artst x", 64, "Artst"},
          Case{one, "set Artist", 64, "new value"},
          Case{one, "get", 64, "one tag"},
          Case{one, "get Artist --image 0", 64, "range 1 to 1000"},
          Case{one, "get Artist --image 2", 2, "no image 2"},
          Case{sound, "set Artist x", 64, "--image"},
          Case{one, "delete Artist", 0, "nothing was"},
          Case{nested, "set Artist x --image 1", 2, "image 2: SubIFDs (330) points to"},
          Case{BrokenChain(Picture(1)), "set Artist x --image 1", 2, "broken behind image 1"},
          Case{BuildTiff({Picture(1), Tiled(Picture(2))}), "set Artist x --image 1", 2, "in tiles"},
          Case{wide, "set Artist x", 2, "byte order"},
          Case{BuildTiff(std::vector<ImageSpec>(1001, Picture(1))), "set Artist x --image 1", 2,
               "more than 1000 images"}}) {
        const std::string path = Alone(c.file);
        ExpectTool("tag " + path + " " + c.arguments, c.exitCode, c.words);
        EXPECT_EQ(ReadFile(path), c.file) << c.arguments;
    }
    const std::string path = Alone(nested);
    ExpectTool("tag " + path + " set Artist x --image 1 --accept-loss", 0,
               "image 2: SubIFDs (330) deleted");
    ExpectTool("tag " + path + " get 330 --image 2", 2);
    EXPECT_EQ(RunTool("tag " + path + " get 315 --image 1").out, "x\n");
}

TEST(Tag, AnEditTouchesItsOwnFileAlone) {
    const fs::path folder = NewFolder("beside"), path = folder / "my.d/scan";
    const Bytes one = BuildTiff({Picture(1)});
    fs::create_directory(folder / "my.d");
    fs::copy_file(FileOf(one, "one.tif"), path);
    for (const fs::path& other : {folder / "my.~~~", folder / "my.d/scan.~~~"})
        fs::copy_file(FileOf({1, 2}, "other"), other);
    {
        const int held = open(path.c_str(), O_RDONLY);
        flock(held, LOCK_EX);
        ExpectTool("tag " + path.string() + " set Artist x", 2, "written to by another");
        close(held);
    }
    // Room for a copy of the file, but not for the new value.
    const std::string command = path.string() + " set Artist " + std::string(9000, 'x');
    const std::string full = Shell(
        "(trap '' XFSZ; ulimit -f 8; " VELLIM_BINARY_DIR "/bin/vellim tag " + command + ") 2>&1");
    EXPECT_NE(full.find("File too large"), std::string::npos) << full;
    EXPECT_EQ(ReadFile(path), one);
    ExpectTool("tag " + path.string() + " set Artist x", 0);
    EXPECT_EQ(Names(folder / "my.d").size() + Names(folder).size(), 4U);
    EXPECT_EQ(ReadFile(folder / "my.~~~").size() + ReadFile(folder / "my.d/scan.~~~").size(), 4U);
}

}  // namespace
}  // namespace vellim::test
