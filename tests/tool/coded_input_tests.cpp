// `convert` reading CALS files and bare streams of fax code: what their heads may look like, what
// is found out of streams that have none, and where a page ends whose height nobody states.
#include <gtest/gtest.h>

#include "container/streams.h"
#include "run_tool.h"

namespace vellim::test {
namespace {

constexpr uint32_t kWidth = 203, kHeight = 31;
constexpr size_t kHeadBytes = 2048, kRecordBytes = 128;

// The rows of a page of runs of all lengths, of which the last three are white.
Bytes Rows() {
    Bytes rows;
    for (uint32_t y = 0; y < kHeight; ++y) {
        for (uint32_t x = 0; x < kWidth; x += 8) {
            const bool white = y % 9 == 0 || y + 3 >= kHeight;
            const uint32_t pixels = white ? 0 : y % 9 == 1 ? 0xFF : x * (x + y / 4) / 9;
            rows.push_back(static_cast<uint8_t>(pixels & (kWidth - x < 8 ? 0xE0 : 0xFF)));
        }
    }
    return rows;
}

Bytes PbmOf(const Bytes& rows) {
    const std::string head = "P4\n203 31\n";
    Bytes file(head.begin(), head.end());
    file.insert(file.end(), rows.begin(), rows.end());
    return file;
}

struct Stream {
    std::string options;  // that tell what it is
    size_t closing = 0;   // bytes of its closing codes that can be missing without harm
    bool tellsWidth = false;
};

const Stream kStreams[] = {
    {"--coding g3", 0, false},    {"--coding g3 --fill-order 2", 0, false},
    {"--coding g3-eol", 6, true}, {"--coding g3-eol --fill-order 2", 6, true},
    {"--coding g3-2d", 8, true},  {"--coding g3-2d --fill-order 2", 8, true},
    {"--coding g4", 2, false},    {"--coding mmr", 8, true},
};

Bytes Encoded(const Stream& stream) {
    const std::string out = NewPath("encoded.fax");
    ExpectTool(Words({"convert", FileOf(PbmOf(Rows()), "page.pbm"), out, stream.options}), 0);
    return ReadFile(out);
}

// What is read of a stream; nothing where there is no picture.
Bytes Read(const Bytes& file, const std::string& options, int exitCode = 0) {
    const ToolRun run =
        RunTool(Words({"convert", FileOf(file, "read.fax"), "- --format pbm", options}));
    EXPECT_EQ(run.exitCode, exitCode) << options << " " << run.err;
    return run.exitCode == exitCode ? PnmPixels(run.out, 3) : Bytes();
}

TEST(BareStreams, HeightIsThatOfTheLinesBeforeTheClosingCodes) {
    for (const Stream& stream : kStreams) {
        Bytes file = Encoded(stream);
        const std::string told = Words({stream.options, "--width 203"});
        EXPECT_TRUE(Read(file, told) == Rows()) << told;
        // With zeros behind the closing codes, and with next to none of them.
        Bytes longer = file;
        longer.resize(file.size() + 40);
        if (stream.closing != 0) {
            EXPECT_TRUE(Read(longer, told) == Rows()) << told;
        }
        file.resize(file.size() - stream.closing);
        EXPECT_TRUE(Read(file, told) == Rows()) << told;
    }
}

TEST(BareStreams, WidthAndCodingAreFoundOut) {
    for (const Stream& stream : kStreams) {
        const std::string file = FileOf(Encoded(stream), "found.fax");
        if (stream.tellsWidth) {
            EXPECT_TRUE(Read(ReadFile(file), "") == Rows()) << stream.options;
        } else {
            ExpectTool(Words({"convert", file, NewPath("none.pbm")}), 2, "give --width");
        }
    }
}

TEST(BareStreams, CutsGiveNothingButLinesThatCame) {
    const Bytes rows = Rows();
    for (const Stream& stream : kStreams) {
        const Bytes whole = Encoded(stream);
        size_t before = 0;
        for (size_t cut = 12; cut < whole.size(); cut += 41) {
            const Bytes file(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(cut));
            const ToolRun run = RunTool(Words({"convert", FileOf(file, "cut.fax"),
                                               "- --format pbm --width 203", stream.options}));
            if (run.exitCode == 2) continue;  // before the first line's end
            const Bytes came = PnmPixels(run.out, 3);
            EXPECT_TRUE(came.size() <= rows.size() &&
                        std::equal(came.begin(), came.end(), rows.begin()))
                << stream.options << " cut at " << cut;
            EXPECT_GE(came.size(), before);
            before = came.size();
        }
        EXPECT_GT(before, rows.size() / 2);
    }
}

TEST(BareStreams, DamageIsToldAndLinesBeforeItStay) {
    // Lines of a 1 bit each, and then a mode that there is none of.
    const Bytes file = {0xFF, 0xFF, 0x01, 0xFF, 0xFF};
    const std::string damaged = FileOf(file, "damaged.g4"), out = NewPath("damaged.pbm");
    ExpectTool(Words({"convert --width 40", damaged, out}), 1, "behind 16 lines");
    EXPECT_TRUE(ReadText(out).starts_with("P4\n40 16\n"));
    ExpectTool(Words({"convert --width 40 --height 20 --force", damaged, out}), 1,
               "16 of 20 lines");
}

Bytes Twice(Bytes file) {
    const size_t size = file.size();
    file.resize(2 * size);
    std::copy_n(file.begin(), size, file.begin() + static_cast<ptrdiff_t>(size));
    return file;
}

Bytes Damaged(Bytes file, size_t at, uint8_t bits) {
    file[at] ^= bits;
    return file;
}

Bytes Cut(Bytes file, size_t size) {
    file.resize(size);
    return file;
}

TEST(BareStreams, WhatShowsDamageIsTold) {
    const Bytes g3 = Encoded({"--coding g3-eol"}), twoD = Encoded({"--coding g3-2d"}),
                g4 = Encoded({"--coding g4"}), mmr = Encoded({"--coding mmr"});
    const struct {
        Bytes file;
        std::string options;
        int exitCode;
        std::string words;
    } told[] = {
        {Twice(g3), "--coding g3-eol --width 203", 1, "bytes behind its end"},
        {Twice(g4), "--coding g4 --width 203", 1, "bytes behind its end"},
        {Twice(g4), "--coding g4 --width 203 --height 31", 1, "bytes behind its end"},
        {Twice(mmr), "--coding mmr", 1, "bytes behind its end"},
        {Cut(g4, g4.size() / 2), "--coding g4 --width 203", 1, "ends within a line"},
        {Damaged(g3, g3.size() / 2, 0x10), "--coding g3-eol", 1, "lines"},
        {Damaged(twoD, twoD.size() / 2, 0xFF), "--coding g3-2d", 1, "end-of-line codes tell of"},
        {g3, "--coding g3-eol --width 300", 1, "its lines end at 203 pixels"},
        {twoD, "--coding g3-2d --width 300 --height 31", 1, "its lines end at 203 pixels"},
        {mmr, "--coding mmr --width 300", 1, "its lines end at 203 pixels"},
        {g4, "--coding mmr --width 203", 2, "a block of MMR code"},
        {Bytes(5000, 0xFF), "--coding g4 --width 1048576", 2, "give --height"},
    };
    for (const auto& one : told) {
        ExpectTool(Words({"convert --force", FileOf(one.file, "told.fax"), NewPath("told.pbm"),
                          one.options}),
                   one.exitCode, one.words);
    }
    ExpectTool("check --width 8 " + FileOf({'a', 'b', 'c'}, "short.mmr"), 2, "a block of MMR code");
}

TEST(BareStreams, TheToldFillOrderAndWidthHold) {
    Bytes mmr = Encoded({"--coding mmr"});
    ReverseBits(mmr.data() + 4, mmr.size() - 4);
    EXPECT_TRUE(Read(mmr, "--coding mmr --fill-order 2 --width 203") == Rows());
    // A line whose code, read from each byte's other end, has lines that agree on a width.
    const std::string head = "P4\n59296 1\n";
    Bytes rows(59296 / 8);
    for (size_t x = 0; x < 59296; ++x)
        rows[x / 8] |= static_cast<uint8_t>(x % 703 < 3 ? 0 : 0x80U >> x % 8);
    Bytes page(head.begin(), head.end());
    page.insert(page.end(), rows.begin(), rows.end());
    const std::string out = NewPath("wide.fax"), coding = "--coding g3-eol";
    ExpectTool(Words({"convert", FileOf(page, "wide.pbm"), out, coding}), 0);
    EXPECT_TRUE(Read(ReadFile(out), Words({coding, "--width 59296 --height 1"})) == rows);
}

TEST(ImageMagick, WritesWhatIsReadHere) {
    const std::string page = FileOf(PbmOf(Rows()), "page.pbm"), folder = NewFolder("written");
    const std::string cals = folder + "/a.cal", g4 = folder + "/a.g4", fax = folder + "/a.fax";
    for (const auto& [kind, path] :
         {std::pair{"cals:", cals}, std::pair{"group4:", g4}, std::pair{"fax:", fax}}) {
        EXPECT_EQ(Shell(Words({"convert", page, std::string(kind) + path})), "");
    }
    EXPECT_TRUE(Read(ReadFile(cals), "") == Rows());
    EXPECT_TRUE(Read(ReadFile(g4), "--coding g4 --width 203") == Rows());
    // It draws lines out to 1728 pixels.
    const Bytes wide = Read(ReadFile(fax), "");
    const Bytes rows = Rows();
    ASSERT_EQ(wide.size(), size_t{kHeight} * 1728 / 8);
    for (size_t y = 0; y < kHeight; ++y) {
        EXPECT_TRUE(std::equal(rows.begin() + static_cast<ptrdiff_t>(y * 26),
                               rows.begin() + static_cast<ptrdiff_t>(y * 26 + 26),
                               wide.begin() + static_cast<ptrdiff_t>(y * 216)))
            << y;
    }
}

Bytes CalsFile(const std::vector<std::string>& records, char filler = ' ',
               const std::string& end = {}) {
    Bytes file(kHeadBytes, static_cast<uint8_t>(filler));
    for (size_t i = 0; i < records.size(); ++i) {
        const auto record = file.begin() + static_cast<ptrdiff_t>(i * kRecordBytes);
        std::copy(records[i].begin(), records[i].end(), record);
        std::copy(end.begin(), end.end(),
                  record + static_cast<ptrdiff_t>(kRecordBytes - end.size()));
    }
    const Bytes code = Encoded({"--coding g4"});
    file.insert(file.end(), code.begin(), code.end());
    return file;
}

TEST(CalsInput, LooseHeadersAreRead) {
    const std::vector<std::string> usual = {"srcdocid: NONE", "rtype: 1", "rorient: 000,270",
                                            "rpelcnt: 000203,000031", "rdensty: 0300"};
    const std::vector<std::string> loose = {"rdensity: 300", "own: thing", "rpelcnt: 203 31\r\n",
                                            "rorient: 0 270", "dtype: 1"};
    EXPECT_TRUE(Read(CalsFile(usual), "") == Rows());
    EXPECT_TRUE(Read(CalsFile(usual, '\0'), "") == Rows());
    EXPECT_TRUE(Read(CalsFile(usual, ' ', "\r\n"), "") == Rows());
    Bytes padded = CalsFile(usual);
    padded.resize(padded.size() + 900, ' ');
    EXPECT_TRUE(Read(padded, "") == Rows());
    const Bytes file = CalsFile(loose);
    EXPECT_TRUE(Read(file, "") == Rows());
    const std::string info = ExpectTool("info " + FileOf(file, "loose.cal"), 0).out;
    EXPECT_NE(info.find("203 x 31, 300 x 300 dpi"), std::string::npos) << info;
    EXPECT_NE(info.find("own: thing"), std::string::npos) << info;
}

TEST(CalsInput, WhatIsRefusedHasItsReason) {
    const std::string type = "rtype: 1", orient = "rorient: 0,270", size = "rpelcnt: 203,31",
                      density = "rdensty: 200";
    const struct {
        Bytes file;
        int exitCode;
        std::string words;
    } refused[] = {
        {CalsFile({"rtype: 2", orient, size, density}), 2, "raster type 2"},
        {CalsFile({type, orient, density}), 2, "no rpelcnt record"},
        {CalsFile({type, orient, "rpelcnt: 203,0", density}), 2, "no pixels"},
        {CalsFile({type, orient, "rpelcnt: 1048577,31", density}), 2, "above 1048576"},
        {CalsFile({type, orient, "rpelcnt: 1048576,16777216", density}), 2, "too many lines"},
        {CalsFile({type, orient, "rpelcnt: 203,40", density}), 1, "31 of 40 lines"},
        {CalsFile({type, orient, size, density}, 'x'), 2, "is no TIFF, CALS"},
    };
    for (const auto& one : refused) {
        ExpectTool(Words({"convert", FileOf(one.file, "refused.cal"), NewPath("refused.pbm")}),
                   one.exitCode, one.words);
    }
}

}  // namespace
}  // namespace vellim::test
