// `convert` writing TIFF: pixels by way of the library and by way of libtiff, tags, pages added to
// files, and what is left of a file that couldn't be finished.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <numeric>

#include "run_tool.h"

namespace vellim::test {
namespace {

namespace fs = std::filesystem;

// Rows of a pattern with runs, edges and noise.
Bytes Pattern(size_t rowBytes, uint32_t height) {
    Bytes bytes(rowBytes * height);
    for (size_t i = 0; i < bytes.size(); ++i) {
        const size_t y = i / rowBytes;
        const size_t x = i % rowBytes;
        bytes[i] = static_cast<uint8_t>(y % 5 == 0 ? 0 : y % 5 == 1 ? 0xFF : x * x * 7 + y * 13);
    }
    return bytes;
}

// An uncompressed image in strips of three rows, of 200 dots an inch.
ImageSpec Drawn(uint32_t width, uint32_t height, uint16_t bits, uint16_t samples,
                uint16_t photometric) {
    const size_t rowBytes = (size_t{width} * bits * samples + 7) / 8;
    const Bytes all = Pattern(rowBytes, height);
    std::vector<Bytes> strips;
    for (uint32_t y = 0; y < height; y += 3) {
        const auto first = all.begin() + static_cast<ptrdiff_t>(y * rowBytes);
        strips.emplace_back(first,
                            first + static_cast<ptrdiff_t>(std::min(3U, height - y) * rowBytes));
    }
    ImageSpec image = SimpleImage(width, height, bits, samples, 1, photometric, 3, strips);
    if (photometric == 3) {
        std::vector<uint16_t> map(size_t{3} << bits);
        for (size_t i = 0; i < map.size(); ++i)
            map[i] = static_cast<uint16_t>(i * 0x0101 * 37);
        image.tags.push_back(ShortTag(320, map));
    }
    image.tags.push_back(RationalTag(282, 200, 1));
    image.tags.push_back(RationalTag(283, 200, 1));
    return image;
}

// Commands name their files by shell variables.
std::string Named(const char* variable, const std::string& path) {
    setenv(variable, path.c_str(), 1);
    return path;
}

// What a shell command writes; its standard error counts too.
std::string Shell(const std::string& command) {
    const std::string out = NewPath("shell");
    const int status = std::system((command + " >" + out + " 2>&1").c_str());
    const Bytes bytes = ReadFile(out);
    return std::string(bytes.begin(), bytes.end()) + (status == 0 ? "" : " failed");
}

std::string Pixels(const std::string& path, const std::string& more = "--format ppm") {
    const ToolRun run = RunTool("convert " + path + " - " + more);
    EXPECT_EQ(run.exitCode, 0) << run.err;
    return run.out;
}

struct Depth {
    const char* name;
    uint16_t bits, samples, photometric;
};
constexpr Depth kDepths[] = {{"white is zero", 1, 1, 0}, {"black is zero", 1, 1, 1},
                             {"two colours", 1, 1, 3},   {"16 greys", 4, 1, 0},
                             {"16 colours", 4, 1, 3},    {"greys", 8, 1, 1},
                             {"palette", 8, 1, 3},       {"RGB", 8, 3, 2}};

TEST(TiffOutput, EveryCompressionOfEveryDepthIsReadHereAndByLibtiff) {
    const char* const options[] = {"none --byte-order mm",  "packbits",
                                   "lzw --byte-order mm",   "lzw-diff",
                                   "g3 --fill-order 2",     "g3-eol --byte-order mm",
                                   "g3-eol --fill-order 2", "g3-2d --k 4",
                                   "g3-2d --fill-order 2",  "g4 --byte-order MM --fill-order 2",
                                   "none --fill-order 2"};
    for (const Depth& depth : kDepths) {
        SCOPED_TRACE(depth.name);
        const std::string input = Named(
            "IN", FileOf(BuildTiff({Drawn(71, 500, depth.bits, depth.samples, depth.photometric),
                                    Drawn(1728, 20, depth.bits, depth.samples, depth.photometric)}),
                         "drawn.tif"));
        for (const std::string option : options) {
            SCOPED_TRACE(option);
            const std::string out = Named("OUT", NewPath("out.tif"));
            const std::string plain = Named("PLAIN", NewPath("plain.tif"));
            const ToolRun run =
                RunTool("convert $IN $OUT --dither threshold --compression " + option);
            EXPECT_EQ(run.exitCode, 0);
            EXPECT_NE(run.err.find("out.tif: 2 pages\n"), std::string::npos) << run.err;
            const std::string form =
                option[0] == 'g' ? "--dither threshold --format pbm" : "--format ppm";
            const std::string expected = Pixels(input, form);
            EXPECT_TRUE(Pixels(out, form) == expected);
            EXPECT_EQ(Shell("tiffinfo -D $OUT").find("arning"), std::string::npos);
            EXPECT_EQ(Shell("tiffcp -c none $OUT $PLAIN"), "");
            EXPECT_TRUE(Pixels(plain, form) == expected);
        }
        // As it comes, and through formats that are read as well.
        const std::string one = Named(
            "IN",
            FileOf(BuildTiff({Drawn(333, 1000, depth.bits, depth.samples, depth.photometric)}),
                   "one.tif"));
        const std::string expected = Pixels(one);
        for (const char* const name : {"way.png", "way.bmp", "way.ppm", "way.tif"}) {
            const std::string way = Named("WAY", NewPath(name));
            const std::string back = Named("BACK", NewPath("back.tif"));
            EXPECT_EQ(RunTool("convert $IN $WAY").exitCode, 0);
            EXPECT_EQ(RunTool("convert $WAY $BACK").exitCode, 0);
            EXPECT_TRUE(Pixels(back) == expected) << name;
            const char* const dots = std::string(name) == "way.ppm" ? "" : "200, 200 pixels/inch";
            EXPECT_NE(Shell("tiffinfo $BACK").find(dots), std::string::npos) << name;
        }
        const Bytes piped = ReadFile(one);
        EXPECT_TRUE(RunTool("convert - - --format tif", piped).out ==
                    RunTool("convert $IN - --format tiff").out);
    }
}

// A white line of eight pixels by T.4, table 2: code 10011. The strip counts its closing codes, but
// for the last one's bits that fill no byte.
TEST(TiffOutput, Group3StripsCountTheirClosingCodes) {
    Named("IN", FileOf({'P', '4', ' ', '8', ' ', '1', '\n', 0}, "white.pbm"));
    const std::string out = Named("OUT", NewPath("white.tif"));
    const std::pair<const char*, Bytes> cases[] = {
        {"g3", {0x98}},
        {"g3-eol", {0x00, 0x19, 0x80, 0x08, 0x00, 0x80, 0x08, 0x00, 0x80}},
        {"g3-2d", {0x00, 0x1C, 0xC0, 0x04, 0x00, 0x18, 0x00, 0xC0, 0x06, 0x00, 0x30, 0x01, 0x80}}};
    for (const auto& [name, strip] : cases) {
        ASSERT_EQ(RunTool("convert --force $IN $OUT --compression " + std::string(name)).exitCode,
                  0);
        const Bytes file = ReadFile(out);
        const auto data = file.begin() + 8;
        EXPECT_EQ(Bytes(data, data + static_cast<ptrdiff_t>(strip.size())), strip) << name;
        std::string count(8, ' ');
        count.replace(8 - std::to_string(strip.size()).size(), 8, std::to_string(strip.size()));
        const std::string strips = Shell("tiffinfo -s $OUT");
        EXPECT_NE(strips.find("[       8, " + count + "]"), std::string::npos) << strips;
    }
}

TEST(TiffOutput, LongSidesAndLinesTooLongForTwoDimensions) {
    const Bytes pixels(200000, 0x35);
    const auto pbm = [&](const std::string& sides, size_t bytes) {
        const std::string header = "P4 " + sides + "\n";
        Bytes file(header.begin(), header.end());
        file.insert(file.end(), pixels.begin(), pixels.begin() + static_cast<ptrdiff_t>(bytes));
        return FileOf(file, "long.pbm");
    };
    for (const std::string sides : {"70000 3", "8 70000", "40000 4"}) {
        const std::string input = Named("IN", pbm(sides, sides[0] == '8' ? 70000 : 30000));
        for (const std::string option : {"", " --compression packbits", " --compression g3-eol"}) {
            const std::string out = Named("OUT", NewPath("long.tif"));
            EXPECT_EQ(RunTool("convert $IN $OUT" + option).exitCode, 0) << sides;
            EXPECT_TRUE(Pixels(out, "--format pbm") == Pixels(input, "--format pbm")) << sides;
            EXPECT_EQ(Shell("tiffinfo -D $OUT").find("arning"), std::string::npos) << sides;
        }
    }
    const std::string out = NewPath("never.tif");
    const ToolRun run = RunTool("convert --compression g4 " + pbm("40000 4", 20000) + " " + out);
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_NE(run.err.find("lines of more than 33280 pixels"), std::string::npos) << run.err;
    EXPECT_FALSE(fs::exists(out));
}

TEST(TiffOutput, CarriesWhatWasSaidOfThePage) {
    ImageSpec image = Drawn(64, 8, 8, 3, 2);
    image.tags.push_back(AsciiTag(269, "Deed"));
    image.tags.push_back(AsciiTag(270, "Of sale"));
    image.tags.push_back(AsciiTag(306, "1994:03:14 12:00:00"));
    image.tags.push_back(AsciiTag(315, "J. Doe"));
    image.tags.push_back(ShortTag(274, {6}));
    image.tags.push_back(ShortTag(297, {2, 7}));
    image.tags.push_back(LongTag(254, {2}));
    const std::string input = FileOf(BuildTiff({image}), "deed.tif");
    const std::string out = NewPath("deed-g4.tif");
    ASSERT_EQ(RunTool("convert --compression g4 --dpi 96 " + input + " " + out).exitCode, 0);
    const std::string info = Shell("tiffinfo " + out);
    for (const char* words :
         {"DocumentName: Deed\n", "ImageDescription: Of sale\n", "DateTime: 1994:03:14 12:00:00\n",
          "Artist: J. Doe\n", "Orientation: row 0 rhs", "Page Number: 2-7\n", "multi-page document",
          "Resolution: 96, 96 pixels/inch\n", "min-is-white"}) {
        EXPECT_NE(info.find(words), std::string::npos) << words << info;
    }
    const std::string bare = FileOf({'P', '4', '\n', '8', ' ', '1', '\n', 0x55}, "bare.pbm");
    ASSERT_EQ(RunTool("convert --force " + bare + " " + out).exitCode, 0);
    EXPECT_EQ(Shell("tiffinfo " + out).find("Resolution"), std::string::npos);
}

TEST(TiffAppend, KeepsWhatIsThereAndItsByteOrder) {
    const std::string out = NewPath("grown.tif");
    const std::string input = FileOf(BuildTiff({Drawn(40, 9, 8, 3, 2)}), "one.tif");
    ASSERT_EQ(RunTool("convert --append --byte-order mm " + input + " " + out).exitCode, 0);
    fs::permissions(out, fs::perms::owner_read | fs::perms::owner_write);
    const std::string first = Pixels(out);
    const ToolRun refused = RunTool("convert --append --byte-order ii " + input + " " + out);
    EXPECT_EQ(refused.exitCode, 2);
    EXPECT_NE(refused.err.find("other byte order"), std::string::npos) << refused.err;
    const ToolRun run =
        RunTool("convert --append --compression g3-2d " + Sample("letter.tif") + " " + out);
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_NE(run.err.find("3 pages added, 4 in all"), std::string::npos) << run.err;
    EXPECT_EQ(ReadFile(out).at(0), 'M');
    EXPECT_EQ(fs::status(out).permissions(), fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_TRUE(Pixels(out, "--pages 1 --format ppm") == first);
    EXPECT_TRUE(Pixels(out, "--pages 2- --format pbm") ==
                Pixels(Sample("letter.tif"), "--format pbm"));
    EXPECT_EQ(Shell("tiffinfo -D " + out).find("arning"), std::string::npos);
}

TEST(TiffAppend, RefusesFilesWhoseImagesItWouldLose) {
    const std::string input = FileOf(BuildTiff({Drawn(8, 1, 1, 1, 0)}), "one.tif");
    const ImageSpec tiny = SimpleImage(8, 1, 1, 1, 1, 0, 1, {{0x55}});
    Bytes broken = BuildTiff({tiny, tiny});
    const size_t directory = broken[4] | size_t{broken[5]} << 8U;
    broken[directory + 2 + size_t{12} * broken[directory] + 1] = 0x70;
    Bytes chain;
    for (int i = 0; i < 1001; ++i)
        chain.insert(chain.end(), {'P', '4', ' ', '8', ' ', '1', '\n', 0x55});
    const std::string many = FileOf(chain, "many.pbm");
    struct Case {
        Bytes there;
        std::string input, words;
    };
    for (const Case& c :
         {Case{broken, input, "chain of images is broken"},
          Case{BuildTiff(std::vector<ImageSpec>(1000, tiny)), input, "it is full"},
          Case{BuildTiff(std::vector<ImageSpec>(998, tiny)), Sample("letter.tif"), "one of 1001"},
          Case{{'n', 'o', 't', 'i', 'f', 'f'}, input, "Invalid byte order"},
          Case{{}, many, "1001"}}) {
        const std::string out = FileOf(c.there, "there.tif");
        const ToolRun run = RunTool("convert --append " + c.input + " " + out);
        EXPECT_EQ(run.exitCode, 2);
        EXPECT_NE(run.err.find(c.words), std::string::npos) << run.err;
        EXPECT_EQ(ReadFile(out), c.there);
    }
    const std::string out = NewPath("thousand.tif");
    EXPECT_EQ(RunTool("convert --pages -1000 " + many + " " + out).exitCode, 0);
    EXPECT_EQ(Pixels(out, "--format pbm").size(), 1000 * std::string("P4\n8 1\nx").size());
}

std::vector<std::string> Names(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder))
        names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
}

// In a folder whose path the library doesn't take.
TEST(Overwriting, NeedsForceAndAnInterruptedRunLeavesNothing) {
    const fs::path folder = fs::path(NewPath("anchor")).replace_filename(std::string(200, 'b'));
    fs::create_directories(folder);
    const std::string letter = "convert " + Sample("letter.tif") + " " + folder.string();
    const Bytes old = {'o', 'l', 'd'};
    for (const char* const name : {"/a.tif", "/a-2.png"})
        fs::copy_file(FileOf(old, "old"), folder.string() + name);
    for (const std::string name : {"/a.tif", "/a.png"}) {
        const ToolRun run = RunTool(letter + name);
        EXPECT_EQ(run.exitCode, 2);
        EXPECT_NE(run.err.find("with --force it is replaced"), std::string::npos) << run.err;
    }
    EXPECT_EQ(Names(folder), (std::vector<std::string>{"a-2.png", "a.tif"}));
    EXPECT_EQ(ReadFile(folder / "a.tif"), old);
    EXPECT_EQ(RunTool(letter + "/a.tif --force").exitCode, 0);
    EXPECT_EQ(RunTool(letter + "/a.tif --append").exitCode, 0);
    EXPECT_EQ(Pixels(folder / "a.tif", "--format pbm").size(),
              2 * Pixels(Sample("letter.tif"), "--format pbm").size());
    // A picture of many gigabytes, none of them on the disk.
    const std::string tall = FileOf({'P', '4', ' '}, "tall.pbm");
    const std::string shell =
        "--version >/dev/null; echo 1000000 1000000 >>" + tall + "; truncate -s 125000000100 " +
        tall + "; timeout -s TERM 1 " VELLIM_BINARY_DIR "/bin/vellim convert " + tall + " " +
        folder.string() + "/t.tif --compression g3; exit $?; true";
    EXPECT_EQ(RunTool(shell).exitCode, 124);
    EXPECT_EQ(Names(folder), (std::vector<std::string>{"a-2.png", "a.tif"}));
}

TEST(Dither, KeepsTheShareOfBlackAndThresholdDoesNot) {
    Bytes ramp(size_t{256} * 64);
    for (size_t i = 0; i < ramp.size(); ++i)
        ramp[i] = static_cast<uint8_t>(i % 256);
    const std::string input =
        FileOf(BuildTiff({SimpleImage(256, 64, 8, 1, 1, 1, 64, {ramp})}), "ramp.tif");
    const auto whites = [&](const std::string& option, size_t firstByte) {
        const ToolRun run = RunTool("convert " + input + " - --format pbm" + option);
        const Bytes bits = PnmPixels(Bytes(run.out.begin(), run.out.end()), 3);
        EXPECT_EQ(bits.size(), 32U * 64);
        int white = 0;
        for (size_t y = 0; y < 64; ++y)
            for (size_t x = firstByte; x < firstByte + 8; ++x)
                white += 8 - __builtin_popcount(bits[y * 32 + x]);
        return white;
    };
    // Columns 64 n to 64 n + 63, of which the mean shade is 64 n + 31.5 of 255.
    for (size_t n = 0; n < 4; ++n) {
        const double expected = 64 * 64 * (64.0 * static_cast<double>(n) + 31.5) / 255;
        EXPECT_NEAR(whites("", n * 8), expected, 40) << n;
        EXPECT_EQ(whites(" --dither threshold", n * 8), n < 2 ? 0 : 64 * 64) << n;
    }
}

}  // namespace
}  // namespace vellim::test
