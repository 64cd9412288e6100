// Tags listed, shown, set and deleted in files.
#include <gtest/gtest.h>

#include <filesystem>

#include "stored_data.h"

namespace vellim::test {
namespace {

namespace fs = std::filesystem;

ImageSpec Picture(uint8_t n) {
    ImageSpec image = SimpleImage(3, 2, 8, 1, 1, 1, 1, {{n, 1, 2}, {3, 4, n}});
    image.tags.push_back(ShortTag(284, {1}));
    image.tags.push_back(AsciiTag(305, "a scanner"));
    return image;
}

// A file of its own in a folder of its own, so that what is left beside it shows.
std::string Alone(const Bytes& bytes, const std::string& name = "scan.tif") {
    const fs::path folder = fs::path(NewPath("anchor")).replace_filename("alone");
    fs::remove_all(folder);
    fs::create_directories((folder / name).parent_path());
    fs::copy_file(FileOf(bytes, "original.tif"), folder / name);
    return folder / name;
}

size_t FilesBeside(const std::string& path) {
    const fs::directory_iterator folder(fs::path(path).parent_path());
    return static_cast<size_t>(std::distance(begin(folder), end(folder)));
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
        const ToolRun run = RunTool("tag " + path + " --image 2 set " + c.words);
        EXPECT_EQ(run.exitCode, 0) << run.err;
        EXPECT_EQ(run.err.rfind("vellim: " + path + ": image 2: ", 0), 0U) << run.err;
        EXPECT_NE(run.err.find(" set"), std::string::npos) << run.err;
        EXPECT_EQ(run.err.find("byte order is II") != std::string::npos, bigEndian) << run.err;
        EXPECT_EQ(run.err.find("plain ASCII") != std::string::npos, bigEndian) << "first case";
        bigEndian = false;
        EXPECT_EQ(RunTool("tag " + path + " get --image 2 " + c.tag).out,
                  std::string(c.shown) + "\n");
        const ToolRun judge = TiffInfo(path);
        EXPECT_NE(judge.out.find(c.judge), std::string::npos) << judge.out;
    }
    EXPECT_NE(TiffInfo(path).out.find("Resolution: 2.54, 300"), std::string::npos);
    EXPECT_EQ(StoredStrips(path), strips);
    EXPECT_EQ(RunTool("tag " + path + " delete SOFTWARE --image 2").exitCode, 0);
    const std::string list = RunTool("tag " + path + " list").out;
    EXPECT_NE(list.find("image 3:\n"), std::string::npos);
    EXPECT_EQ(RunTool("tag " + path + " --image 2 get Software").exitCode, 2);
    EXPECT_EQ(RunTool("tag " + path + " --image 1 get Software").out, "a scanner\n");
    EXPECT_EQ(FilesBeside(path), 1U);
}

TEST(Tag, TrueWidthsAndLongPaths) {
    const std::string path = Alone(BuildTiff({Picture(1)}),
                                   std::string(100, 'a') + "/" + std::string(100, 'b') + ".tif");
    EXPECT_EQ(RunTool("tag " + path + " set 65001 --type DOUBLE 0.5 2").exitCode, 0);
    const ToolRun run = RunTool("tag " + path + " set Make x");
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.err, "vellim: " + path + ": image 1: Make (271) set\n");
    EXPECT_NE(TiffInfo(path).out.find("Tag 65001: 0.500000,2.000000"), std::string::npos);
    EXPECT_EQ(FilesBeside(path), 1U);
}

TEST(Tag, ARefusalLeavesTheFileAsItIs) {
    ImageSpec subimages = Picture(2), typed = Picture(2), tiled = Picture(2);
    subimages.tags.push_back(LongTag(330, {8, 9}));
    tiled.strips.clear();
    for (const uint16_t tag : {uint16_t{322}, uint16_t{323}, uint16_t{324}, uint16_t{325}})
        tiled.tags.push_back(LongTag(tag, {16}));
    const Bytes sound = BuildTiff({Picture(1), Picture(2)}), one = BuildTiff({Picture(1)});
    Bytes broken = sound;
    const size_t directory = broken[4] | size_t{broken[5]} << 8U;
    broken[directory + 2 + size_t{12} * broken[directory] + 2] = 0x70;
    struct Case {
        Bytes file;
        const char* arguments;
        int exitCode;
        const char* words;
    };
    const Bytes nested = BuildTiff({Picture(1), subimages}),
                wide = BuildTiff({[] {
                                     ImageSpec image = SimpleImage(1, 1, 16, 1, 1, 1, 1, {{1, 2}});
                                     return image;
                                 }()},
                                 true);
    for (const Case& c :
         {Case{one, "set ImageWidth 4", 2, "--force"},
          Case{one, "set 273 9", 2, "--force"},
          Case{one, "set ExifIFD 8", 2, "--force"},
          Case{one, "delete Compression", 2, "--force"},
          Case{one, "delete 262", 2, "readers need"},
          Case{one, "delete 273 --force", 2, "Such tag"},
          Case{one, "set DateTime 2024-02-29", 2, "has the form"},
          Case{one, "set XResolution 300 300", 2, "takes 1 value"},
          Case{one, "set Orientation 70000", 64, "no value of the type SHORT"},
          Case{one, "set Orientation 1x", 64, "no value"},
          Case{one, "set 282 3/0", 64, "no value"},
          Case{one, "set 65000 5", 64, "--type"},
          Case{one, "set Artst x", 64, "Artst"},
          Case{one, "set Artist", 64, "new value"},
          Case{one, "get", 64, "one tag"},
          Case{one, "get Artist --image 2", 2, "no image 2"},
          Case{sound, "set Artist x", 64, "--image"},
          Case{one, "delete Artist", 0, "nothing was"},
          Case{nested, "set Artist x --image 1", 2, "image 2: SubIFDs (330) points to"},
          Case{broken, "set Artist x --image 1", 2, "broken behind image 1"},
          Case{BuildTiff({Picture(1), tiled}), "set Artist x --image 1", 2, "in tiles"},
          Case{wide, "set Artist x", 2, "byte order"},
          Case{BuildTiff(std::vector<ImageSpec>(1001, Picture(1))), "set Artist x --image 1", 2,
               "more than 1000 images"}}) {
        SCOPED_TRACE(c.arguments);
        const std::string path = Alone(c.file);
        const ToolRun run = RunTool("tag " + path + " " + c.arguments);
        EXPECT_EQ(run.exitCode, c.exitCode) << run.err;
        EXPECT_NE(run.err.find(c.words), std::string::npos) << run.err;
        EXPECT_EQ(ReadFile(path), c.file);
    }
    const std::string path = Alone(nested);
    const ToolRun run = RunTool("tag " + path + " set Artist x --image 1 --accept-loss");
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_NE(run.err.find("image 2: SubIFDs (330) deleted"), std::string::npos) << run.err;
    EXPECT_EQ(RunTool("tag " + path + " get 330 --image 2").exitCode, 2);
    EXPECT_EQ(RunTool("tag " + path + " get 315 --image 1").out, "x\n");
}

}  // namespace
}  // namespace vellim::test
