// `convert` writing CALS, IOCA, MO:DCA and bare streams: pixels by way of the tool itself, of
// ImageMagick and of libtiff, what their heads say, and what can't be written.
#include <gtest/gtest.h>

#include <map>

#include "run_tool.h"

namespace vellim::test {
namespace {

namespace fs = std::filesystem;

// A PBM with runs of all lengths, white lines and black ones.
std::string Drawn(uint32_t width, uint32_t height, const std::string& name = "drawn.pbm") {
    const std::string header = "P4\n" + std::to_string(width) + " " + std::to_string(height) + "\n";
    Bytes file(header.begin(), header.end());
    for (uint32_t y = 0; y < height; ++y) {
        for (uint32_t x = 0; x < width; x += 8) {
            const uint32_t pixels = y % 7 == 0 ? 0 : y % 7 == 1 ? 0xFF : x * x / 9 + y / 3 * 13;
            const uint32_t unused = width - x < 8 ? 8 - (width - x) : 0;
            file.push_back(static_cast<uint8_t>(pixels & 0xFFU << unused));
        }
    }
    return FileOf(file, name);
}

std::string Pixels(const std::string& path, const std::string& more = {}) {
    return ExpectTool(Words({"convert", path, "- --format pbm", more}), 0).out;
}

// The value of a record of a CALS file, without the blanks behind it.
std::string Record(const std::string& file, size_t number, const std::string& key) {
    std::string record = file.substr(number * 128, 128);
    EXPECT_EQ(record.substr(0, key.size()), key);
    record.erase(record.find_last_not_of(' ') + 1);
    return record.substr(std::min(record.size(), key.size()));
}

TEST(CalsOutput, IsReadByImageMagickAndHere) {
    constexpr size_t kUnused = size_t{11} * 128;  // records behind the last key
    for (const uint32_t width : {1U, 71U, 1728U, 5000U}) {
        const std::string in = Drawn(width, 60), out = NewPath("out.cal");
        ExpectTool(Words({"convert", in, out, "--dpi 300"}), 0);
        EXPECT_EQ(Shell(Words({"convert", out, "pbm:- | cmp -", in})), "") << width;
        EXPECT_TRUE(Pixels(out) == ReadText(in)) << width;
        const std::string file = ReadText(out);
        EXPECT_EQ(Record(file, 0, "srcdocid: "), "NONE");
        EXPECT_EQ(Record(file, 6, "rtype: "), "1");
        EXPECT_EQ(Record(file, 7, "rorient: "), "000,270");
        EXPECT_EQ(Record(file, 8, "rpelcnt: ").substr(7), "000060");
        EXPECT_EQ(Record(file, 9, "rdensty: "), "0300");
        EXPECT_EQ(file.substr(kUnused, 2048 - kUnused), std::string(2048 - kUnused, ' '));
        EXPECT_TRUE(
            ExpectTool(Words({"convert - - --format cal --dpi 300"}), 0, {}, ReadFile(in)).out ==
            file);
    }
    const std::string in = Drawn(8, 2), out = NewPath("unknown.mil");
    ExpectTool(Words({"convert", in, out}), 0, "200 dots an inch, unless --dpi");
    EXPECT_EQ(Record(ReadText(out), 9, "rdensty: "), "0200");
    ExpectTool(Words({"convert --force", Sample("fax.tif"), out}), 0, "--square");
}

TEST(CalsOutput, TextRecordsAreSetCarriedAndTakenOut) {
    const std::string in = Drawn(8, 2), first = NewPath("a.cal"), second = NewPath("b.ct1");
    const std::string longText(121, 'x');
    const ToolRun run = ExpectTool(
        Words({"convert", in, first, "--note 'srcdocid=Pl\xC3\xA4ne' --note dstdocid=S=7 --note",
               "'scrgph=two\nlines' --note notes=" + longText, "--note figid=1 --note figid=2"}),
        0);
    for (const char* const words :
         {"question marks in the text of srcdocid", "blanks in the text of scrgph",
          "the text of notes is cut to the 120 characters"})
        EXPECT_NE(run.err.find(words), std::string::npos) << run.err;
    std::string file = ReadText(first);
    EXPECT_EQ(Record(file, 0, "srcdocid: "), "Pl?ne");
    EXPECT_EQ(Record(file, 1, "dstdocis: "), "S=7");
    EXPECT_EQ(Record(file, 2, "txtfileid: "), "NONE");
    EXPECT_EQ(Record(file, 3, "figid: "), "2");
    EXPECT_EQ(Record(file, 4, "scrgph: "), "two lines");
    EXPECT_EQ(Record(file, 10, "notes: "), longText.substr(1));
    file.replace(7 * 128 + 9, 7, "000,090");
    ExpectTool(Words({"convert", FileOf({file.begin(), file.end()}, "turned.cal"), second,
                      "--note figid=3 --note scrgph="}),
               0);
    file = ReadText(second);
    EXPECT_EQ(Record(file, 1, "dstdocis: "), "S=7");
    EXPECT_EQ(Record(file, 3, "figid: "), "3");
    EXPECT_EQ(Record(file, 4, "scrgph: "), "NONE");
    EXPECT_EQ(Record(file, 7, "rorient: "), "000,090");
    for (const char* const name : {"c.tif", "c.png", "c.g4"})
        ExpectTool(Words({"convert", second, NewPath(name)}), 0, "text records aren't carried");
    ExpectTool(Words({"convert", in, first, "--force"}), 0);
    EXPECT_EQ(ExpectTool(Words({"convert", first, NewPath("d.png")}), 0).err, "");
}

// A white line of eight pixels as MMR code: EOL and tag 1, 10011 (T.4, table 2), EOL and tag 0, six
// EOLs with tag 1, of which bits that fill no byte are left out.
TEST(WrappedOutput, HeadCodeAndTailByteForByte) {
    const std::string in = Drawn(8, 1);
    const auto ioca = [](uint8_t high, uint8_t low) {
        return Bytes{0x70, 0x00, 0x91, 0x01, 0xFF, 0x94, 0x09, 0x00, high, low,  high, low,
                     0x00, 0x08, 0x00, 0x01, 0x95, 0x02, 0x01, 0x01, 0x96, 0x01, 0x01, 0x97,
                     0x01, 0x00, 0xFE, 0x92, 0x00, 0x0D, 0x00, 0x1C, 0xC0, 0x04, 0x00, 0x30,
                     0x01, 0x80, 0x0C, 0x00, 0x60, 0x03, 0x00, 0x93, 0x00, 0x71, 0x00};
    };
    const std::string out = NewPath("white.ica");
    for (const auto& [dots, high, low] :
         {std::tuple{"", 0, 0}, {"--dpi 204", 0x07, 0xF8}, {"--dpi 6554", 0xFF, 0xFF}}) {
        ExpectTool(Words({"convert --force", in, out, dots}), 0);
        EXPECT_EQ(ReadFile(out), ioca(static_cast<uint8_t>(high), static_cast<uint8_t>(low)));
    }
    Bytes modca = ioca(0, 0);
    modca.insert(modca.begin(), {0xD3, 0xEE, 0xFB});
    modca.insert(modca.end(), {0xD3, 0xA9, 0xC7});
    const std::string piped = RunTool(Words({"convert", in, "- --format afp"})).out;
    EXPECT_EQ(Bytes(piped.begin(), piped.end()), modca);
    for (const char* const name : {"back.ica", "back.mda"}) {
        const std::string tall = Drawn(1728, 3000, "tall.pbm"), back = NewPath(name);
        ExpectTool(Words({"convert", tall, back}), 0);
        EXPECT_TRUE(Pixels(back) == ReadText(tall)) << name;
    }
}

TEST(BareOutput, EveryCodingAndFillOrderComesBack) {
    const std::map<std::string, std::string> libtiffs = {
        {"g3-eol", "-1"}, {"g3-2d", "-2"}, {"g4", "-4"}};
    const std::string in = Drawn(1728, 100), out = NewPath("out.fax"), tiff = NewPath("out.tif");
    for (const std::string coding : {"g3", "g3-eol", "g3-2d", "g4", "mmr", "g3-2d --k 4"}) {
        for (const std::string order : {"1", "2"}) {
            if (coding == "mmr" && order == "2") continue;
            const std::string name = coding.substr(0, coding.find(' '));
            const std::string told =
                Words({"--coding", name, "--fill-order", order, "--width 1728 --height 100"});
            ExpectTool(
                Words({"convert --force", in, out, "--coding", coding, "--fill-order", order}), 0,
                told);
            EXPECT_TRUE(Pixels(out, told) == ReadText(in)) << told;
            ExpectTool(Words({"convert --force", out, tiff, told}), 0);
            EXPECT_EQ(Shell("tiffinfo " + tiff).find("FillOrder"), std::string::npos);
            if (!libtiffs.contains(name)) continue;
            // Which takes the closing codes for a line more.
            Shell(Words({"fax2tiff -M -X 1728 -o", tiff, order == "1" ? "-M" : "-L",
                         libtiffs.at(name), out}));
            const Bytes lines = PnmPixels(ReadText(in), 3);
            Bytes theirs = PnmPixels(Pixels(tiff), 3);
            theirs.resize(std::min(theirs.size(), lines.size()));
            EXPECT_TRUE(theirs == lines) << told;
        }
    }
    // What an ending stands for, in numbered files; one page to a pipe.
    const fs::path folder = NewFolder("bare");
    for (const std::string ending :
         {"g3 --coding g3-eol", "fax --coding g3-eol", "g4 --coding g4", "mmr --coding mmr"}) {
        const std::string name = ending.substr(0, ending.find(' '));
        ExpectTool(Words({"convert", Sample("letter.tif"), folder.string() + "/p." + name}), 0);
        const std::string chosen =
            RunTool(Words({"convert --pages 2", Sample("letter.tif"), "- --format", ending})).out;
        EXPECT_TRUE(ReadText(folder.string() + "/p-2." + name) == chosen) << ending;
    }
}

TEST(CodedOutput, WhatCannotBeWrittenLeavesNoFile) {
    const fs::path folder = NewFolder("none");
    const auto refuse = [&](const std::string& in, const std::string& out, int exitCode,
                            const std::string& words) {
        ExpectTool(Words({"convert", in, folder.string() + "/" + out}), exitCode, words);
        EXPECT_EQ(Names(folder), std::vector<std::string>{}) << out;
    };
    const std::string longLines = Drawn(33281, 2), wide = Drawn(65536, 1, "wide.pbm");
    for (const char* const out :
         {"o.cal", "o.ica", "o.mda", "o.g4", "o.mmr", "o.g3 --coding g3-2d"})
        refuse(longLines, out, 2, "lines of 33281 pixels are too long");
    for (const char* const out : {"o.ica", "o.mda"})
        refuse(wide, out, 2, "65536 x 1 pixels is above the 65535");
    refuse(Drawn(8, 65536, "high.pbm"), "o.ica", 2, "8 x 65536 pixels is above the 65535");
    const std::string fine = Drawn(8, 1, "fine.pbm");
    refuse(fine, "o.cal --note title=x", 64, "srcdocid, dstdocis, txtfileid");
    refuse(fine, "o.cal --note notes", 64, "KEY=TEXT");
    refuse(fine, "o.tif --note notes=x", 64, "--note is for CALS");
    refuse(fine, "o.png --coding g4", 64, "neither IN nor OUT");
    refuse(fine, "o.tif --coding g4", 64, "neither IN nor OUT");
    refuse(fine, "o.cal --fill-order 2", 64, "--fill-order is for TIFF");
    refuse(fine, "o.g4 --width 8", 64, "tell of a bare stream");
    refuse(fine, "o.mmr --fill-order 2", 64, "mmr has the leftmost");
    refuse(fine, "o.g3 --k 4", 64, "--k is for");
    refuse(fine, "o.g4 --compression g4", 64, "are for TIFF files");
    // The hints are of IN here, so that the coding of OUT isn't g3-2d.
    const std::string bare = FileOf({0x98}, "bare.g3");
    refuse(Words({"--coding g3 --width 8", bare}), "o.cal --k 4", 64, "--k is for");
    // Long lines fit one-dimensional code alone; what a full device doesn't take is told.
    const std::string out = NewPath("long.g3");
    ExpectTool(Words({"convert", wide, out}), 0);
    EXPECT_TRUE(Pixels(out, "--fill-order 1 --width 65536") == ReadText(wide));
    ExpectTool("convert " + fine + " /dev/full --format cal", 2, "No space left");
}

}  // namespace
}  // namespace vellim::test
