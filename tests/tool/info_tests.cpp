// What `info` and `check` tell.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "run_tool.h"

namespace vellim::test {
namespace {

using Json = nlohmann::json;

TEST(Info, TellsTheSamplesInALineEach) {
    struct Case {
        const char* sample;
        const char* words;
    };
    for (const Case& c :
         {Case{"fax.tif",
               "image 1: 1728 x 1098, 204 x 98 dpi, 1 bit, white is zero, Group 3 2-D "
               "with fill bits, low bit first, 1 strip, \"Fax of 14 March\"\n"},
          Case{"drawing.tif",
               "image 1: 480 x 320, 152.4 x 152.4 dpi, 8 bits, black is zero, "
               "PackBits, 10 strips of 32 lines, \"Market hall and tower\"\n"},
          Case{"colour.tif", "24 bits (3 x 8), RGB, LZW with differencing, 6 strips"}}) {
        const ToolRun run = RunTool("info " + Sample(c.sample));
        EXPECT_EQ(run.exitCode, 0);
        EXPECT_NE(run.out.find(c.words), std::string::npos) << run.out;
    }
}

TEST(Info, TagValuesAreWholeInJsonAndShortForPeople) {
    ImageSpec image = SimpleImage(8, 20, 1, 1, 1, 0, 1, std::vector<Bytes>(20, Bytes{0x55}));
    image.tags.push_back(RationalTag(282, 408, 2));
    image.tags.push_back(
        AsciiTag(270, std::string_view("Caf\xE9 \x93x\x94\x1B[31m\n\0page two", 23)));
    image.tags.push_back(AsciiTag(305, "Gr\xC3\xBC\xC3\x9F"));
    image.tags.push_back({700, 6, 2, {0xFF, 0x80}});
    image.tags.push_back({40000, 12, 1, {1}});
    const std::string path = FileOf(BuildTiff({image}, true), "tags.tif");
    const ToolRun plain = RunTool("info --tags " + path);
    EXPECT_EQ(plain.exitCode, 0) << plain.err;
    for (const char* words :
         {"\"Caf\xC3\xA9 \xE2\x80\x9Cx\xE2\x80\x9D\\x1b[31m\\n\"\n",
          "\"Caf\xC3\xA9 \xE2\x80\x9Cx\xE2\x80\x9D\\x1b[31m\\n\" \"page two\"\n", "256 ImageWidth ",
          "408/2\n", "-1 -128\n", "Gr\xC3\xBC\xC3\x9F\"", "40000 - ", "DOUBLE ", " ...\n"}) {
        EXPECT_NE(plain.out.find(words), std::string::npos) << words << "\n" << plain.out;
    }
    const Json json = Json::parse(RunTool("info --json " + path).out);
    const Json& file = json["files"][0];
    EXPECT_EQ(file["byteOrder"], "MM");
    const Json& told = file["images"][0];
    EXPECT_EQ(told["resolution"]["dotsPerInchX"], 204.0);
    std::map<int, Json> tags;
    for (const Json& tag : told["tags"])
        tags[tag["tag"]] = tag;
    EXPECT_EQ(tags[273]["value"].size(), 20U);
    EXPECT_EQ(tags[282]["value"], Json::parse("[[408, 2]]"));
    EXPECT_EQ(tags[270]["value"][0], "Caf\u00e9 \u201cx\u201d\x1B[31m\n");
    EXPECT_EQ(tags[270]["value"][1], "page two");
    EXPECT_EQ(tags[700]["value"], Json::parse("[-1, -128]"));
    EXPECT_TRUE(tags[40000]["name"].is_null());
    EXPECT_TRUE(tags[40000]["value"].is_null()) << "one byte of a DOUBLE is no value";
}

TEST(BrokenChain, IsToldAndCountsAsDamage) {
    // Two images; the link to the second directory leads out of the file.
    const ImageSpec image = SimpleImage(8, 1, 1, 1, 1, 0, 1, {{0x55}});
    Bytes file = BuildTiff({image, image});
    const size_t directory = file[4] | size_t{file[5]} << 8U;
    const size_t link = directory + 2 + size_t{12} * file[directory];
    file[link + 1] = 0x70;
    const std::string path = FileOf(file, "chain.tif");
    const ToolRun info = RunTool("info " + path);
    EXPECT_EQ(info.exitCode, 1);
    EXPECT_EQ(info.err, "vellim: " + path +
                            ": the chain of images is broken behind image 1; what may follow can't "
                            "be reached\n");
    EXPECT_EQ(Json::parse(RunTool("info --json " + path).out)["files"][0]["chainBroken"], true);
    const ToolRun check = RunTool("check " + path);
    EXPECT_EQ(check.exitCode, 1);
    EXPECT_NE(check.out.find("broken behind image 1"), std::string::npos);
    const std::string out = NewPath("chain.png");
    EXPECT_EQ(RunTool("convert " + path + " " + out).exitCode, 1);
    EXPECT_EQ(ReadPng(out).height, 1U);
}

TEST(SeveralFiles, GoOnAfterAFailureAndTheWorstCounts) {
    const std::string bad = FileOf({'n', 'o', 't', 'a', 't', 'i', 'f', 'f'}, "bad.tif");
    const std::string gone = NewPath("gone.tif");
    const std::string files = gone + " " + bad + " " + Sample("fax.tif");
    for (const std::string command : {"info ", "check "}) {
        const ToolRun run = RunTool(command + files);
        EXPECT_EQ(run.exitCode, 2);
        EXPECT_NE(run.err.find("vellim: " + gone + ": No such file or directory\n"),
                  std::string::npos);
        EXPECT_NE(run.err.find("vellim: " + bad + ": Invalid byte order."), std::string::npos);
        EXPECT_EQ(run.out.rfind(Sample("fax.tif") + ": image 1: 1", 0), 0U) << run.out;
    }
}

TEST(Obstacles, AreToldByInfoAndCheck) {
    ImageSpec tiled = SimpleImage(16, 16, 8, 1, 1, 1, 16, {Bytes(256)});
    tiled.tags.push_back(ShortTag(322, {16}));
    tiled.tags.push_back(ShortTag(323, {16}));
    const ImageSpec odd = SimpleImage(16, 16, 8, 1, 99, 1, 16, {Bytes(256)});
    const std::string path = FileOf(BuildTiff({tiled, odd}), "odd.tif");
    const ToolRun info = RunTool("info " + path);
    EXPECT_EQ(info.exitCode, 0) << "it was told all the same";
    EXPECT_NE(info.out.find("tiles of 16 x 16; can't be decoded: it is stored in tiles"),
              std::string::npos)
        << info.out;
    const ToolRun check = RunTool("check " + path);
    EXPECT_EQ(check.exitCode, 2);
    EXPECT_NE(check.out.find("image 2: 0 of 16 lines good: Image compression type is not known."),
              std::string::npos)
        << check.out;
}

}  // namespace
}  // namespace vellim::test
