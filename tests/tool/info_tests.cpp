// What `info` and `check` tell.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "run_tool.h"

namespace vellim::test {
namespace {

using Json = nlohmann::json;

TEST(Info, TellsTheSamplesInALineEach) {
    const std::pair<const char*, const char*> cases[] = {
        {"fax.tif",
         "image 1: 1728 x 1098, 204 x 98 dpi, 1 bit, white is zero, Group 3 2-D "
         "with fill bits, low bit first, 1 strip, \"Fax of 14 March\"\n"},
        {"drawing.tif",
         "image 1: 480 x 320, 152.4 x 152.4 dpi, 8 bits, black is zero, "
         "PackBits, 10 strips of 32 lines, \"Market hall and tower\"\n"},
        {"colour.tif", "24 bits (3 x 8), RGB, LZW with differencing, 6 strips"}};
    for (const auto& [sample, words] : cases)
        ExpectTool("info " + Sample(sample), 0, words);
}

TEST(Info, TagValuesAreWholeInJsonAndShortForPeople) {
    const ImageSpec image =
        With(SimpleImage(8, 20, 1, 1, 1, 0, 1, std::vector<Bytes>(20, Bytes{0x55})),
             {RationalTag(282, 408, 2),
              AsciiTag(270, std::string_view("Caf\xE9 \x93x\x94\x1B[31m\n\0page two", 23)),
              AsciiTag(305, "Gr\xC3\xBC\xC3\x9F"),
              {700, 6, 2, {0xFF, 0x80}},
              {40000, 12, 1, {1}}});
    const std::string path = FileOf(BuildTiff({image}, true), "tags.tif");
    for (const char* words :
         {"\"Caf\xC3\xA9 \xE2\x80\x9Cx\xE2\x80\x9D\\x1b[31m\\n\"\n",
          "\"Caf\xC3\xA9 \xE2\x80\x9Cx\xE2\x80\x9D\\x1b[31m\\n\" \"page two\"\n", "256 ImageWidth ",
          "408/2\n", "-1 -128\n", "Gr\xC3\xBC\xC3\x9F\"", "40000 - ", "DOUBLE ", " ...\n"})
        ExpectTool("info --tags " + path, 0, words);
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
    const std::string path =
        FileOf(BrokenChain(SimpleImage(8, 1, 1, 1, 1, 0, 1, {{0x55}})), "chain.tif");
    EXPECT_EQ(ExpectTool("info " + path, 1).err,
              "vellim: " + path +
                  ": the chain of images is broken behind image 1; what may follow can't "
                  "be reached\n");
    EXPECT_EQ(Json::parse(RunTool("info --json " + path).out)["files"][0]["chainBroken"], true);
    ExpectTool("check " + path, 1, "broken behind image 1");
    const std::string out = NewPath("chain.png");
    EXPECT_EQ(RunTool("convert " + path + " " + out).exitCode, 1);
    EXPECT_EQ(ReadPng(out).height, 1U);
}

TEST(SeveralFiles, GoOnAfterAFailureAndTheWorstCounts) {
    const std::string bad = FileOf({'n', 'o', 't', 'a', 't', 'i', 'f', 'f'}, "bad.tif");
    const std::string gone = NewPath("gone.tif");
    const std::string files = gone + " " + bad + " " + Sample("fax.tif");
    const std::string reasons =
        "vellim: " + gone + ": No such file or directory\nvellim: " + bad + ": it is no TIFF";
    for (const std::string command : {"info ", "check "}) {
        const ToolRun run = ExpectTool(command + files, 2);
        EXPECT_EQ(run.err.find(reasons), 0U) << run.err;
        EXPECT_EQ(run.out.rfind(Sample("fax.tif") + ": image 1: 1", 0), 0U) << run.out;
    }
}

TEST(Obstacles, AreToldByInfoAndCheck) {
    const ImageSpec tiled = Tiled(SimpleImage(16, 16, 8, 1, 1, 1, 16, {}));
    const ImageSpec odd = SimpleImage(16, 16, 8, 1, 99, 1, 16, {Bytes(256)});
    const std::string path = FileOf(BuildTiff({tiled, odd}), "odd.tif");
    ExpectTool("info " + path, 0, "tiles of 16 x 16; can't be decoded: it is stored in tiles");
    ExpectTool("check " + path, 2,
               "image 2: 0 of 16 lines good: Image compression type is not known.");
}

}  // namespace
}  // namespace vellim::test
