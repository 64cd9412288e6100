// What info, check and pages make of pages that no TIFF file holds.
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "tool/run_tool.h"

namespace vellim::test {
namespace {

using Json = nlohmann::json;

// The second page of the letter as another file.
std::string PageAs(const char* name) {
    std::string path = NewPath(name);
    ExpectTool(Words({"convert", "--pages", "2", Sample("letter.tif"), path}), 0);
    return path;
}

TEST(CodedInfo, TellsRecordsAndWrapperFields) {
    const std::string cals = NewPath("drawing.cal");
    ExpectTool(
        Words({"convert", "--pages", "2", "--note", "figid=17-4", Sample("letter.tif"), cals}), 0);
    const std::string words = ExpectTool(Words({"info", cals}), 0).out;
    for (const char* part : {"1654 x 2339, 200 x 200 dpi, 1 bit", "CALS, Group 4",
                             "\n  figid: 17-4\n", "\n  rpelcnt: 001654,002339\n"}) {
        EXPECT_NE(words.find(part), std::string::npos) << part << words;
    }
    const Json json = Json::parse(ExpectTool(Words({"info", "--json", cals}), 0).out)["files"][0];
    EXPECT_EQ(json["kind"], "CALS");
    EXPECT_EQ(json["images"][0]["height"], 2339);
    EXPECT_EQ(json["images"][0]["fields"][3], (Json{{"name", "figid"}, {"value", "17-4"}}));

    const std::string wrapped = ExpectTool(Words({"info", PageAs("page.mda")}), 0).out;
    EXPECT_NE(wrapped.find("MO:DCA, MMR"), std::string::npos) << wrapped;
    EXPECT_NE(wrapped.find("compression: 0x01"), std::string::npos) << wrapped;
    ExpectTool(Words({"tag", cals, "list"}), 2, "a CALS file, which has no tags");
}

TEST(CodedCheck, CountsLines) {
    const std::string page = PageAs("page.ica");
    EXPECT_NE(ExpectTool(Words({"check", page}), 0).out.find("2339 of 2339 lines good"),
              std::string::npos);
    std::filesystem::resize_file(page, std::filesystem::file_size(page) / 2);
    ExpectTool(Words({"check", page}), 1);
}

// What can't be read of a file isn't lost by writing the file in its own place.
TEST(CodedConvert, SparesAnInputThatComesInPartOnly) {
    const std::string page = PageAs("page.cal");
    std::filesystem::resize_file(page, std::filesystem::file_size(page) / 2);
    const Bytes before = ReadFile(page);
    ExpectTool(Words({"convert --force", page, page}), 2, "the input too");
    EXPECT_EQ(ReadFile(page), before);
    ExpectTool(Words({"convert --force --accept-loss", page, page}), 1);
    EXPECT_NE(ReadFile(page), before);
}

// Pages of other kinds become images among those of TIFF files, in any order.
TEST(CodedPages, ArePutTogetherWithImages) {
    const std::string stream = PageAs("page.g3");
    const std::string both = NewPath("both.tif");
    ExpectTool(
        Words({"pages", PageAs("page.cal"), Sample("letter.tif"), PageAs("page.ica"), stream,
               "--pages", "1", "--pages", "3,2", "--pages", "1", "--pages", "1", "-o", both}),
        0);
    EXPECT_NE(ExpectTool(Words({"info", both}), 0).out.find("image 5: 1654 x 2339"),
              std::string::npos);
    const std::string expected = NewPath("expected.pbm");
    ExpectTool(Words({"convert", "--pages", "2", Sample("letter.tif"), expected}), 0);
    for (const char* image : {"1", "3", "4", "5"}) {
        const std::string picture = NewPath("image.pbm");
        ExpectTool(Words({"convert", "--force", "--pages", image, both, picture}), 0);
        EXPECT_EQ(ReadFile(picture), ReadFile(expected)) << image;
    }
}

}  // namespace
}  // namespace vellim::test
