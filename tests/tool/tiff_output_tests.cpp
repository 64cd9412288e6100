// `convert` writing TIFF: pixels by way of the library and by way of libtiff, tags, pages added to
// files, and what is left of a file that couldn't be finished.
#include <gtest/gtest.h>

#include "run_tool.h"

namespace vellim::test {
namespace {

namespace fs = std::filesystem;

// An uncompressed image with runs, edges and noise, in strips of three rows, of 200 dots an inch.
ImageSpec Drawn(uint32_t width, uint32_t height, uint16_t bits, uint16_t samples,
                uint16_t photometric) {
    const size_t rowBytes = (size_t{width} * bits * samples + 7) / 8;
    std::vector<Bytes> strips;
    for (uint32_t y = 0; y < height; ++y) {
        if (y % 3 == 0) strips.emplace_back();
        for (size_t x = 0; x < rowBytes; ++x)
            strips.back().push_back(static_cast<uint8_t>(y % 5 == 0 ? 0
                                                         : y % 5 == 1
                                                             ? 0xFF
                                                             : x * x * 7 + size_t{y} * 13));
    }
    ImageSpec image =
        WithDots(SimpleImage(width, height, bits, samples, 1, photometric, 3, strips), 200, 200);
    if (photometric == 3) {
        std::vector<uint16_t> map(size_t{3} << bits);
        for (size_t i = 0; i < map.size(); ++i)
            map[i] = static_cast<uint16_t>(i * 0x0101 * 37);
        image.tags.push_back(ShortTag(320, map));
    }
    return image;
}

std::string Pixels(const std::string& path, const std::string& more = "--format ppm") {
    return ExpectTool("convert " + path + " - " + more, 0).out;
}

// `in` made into `out`, which libtiff reads without a warning and as the same pixels.
void ExpectSame(const std::string& in, const std::string& out, const std::string& options,
                const std::string& form, const std::string& words = {}) {
    const std::string plain = NewPath("plain.tif"), expected = Pixels(in, form);
    ExpectTool("convert " + in + " " + out + " " + options, 0, words);
    EXPECT_TRUE(Pixels(out, form) == expected) << options;
    EXPECT_EQ(Shell("tiffinfo -D " + out).find("arning"), std::string::npos) << options;
    EXPECT_EQ(Shell("tiffcp -c none " + out + " " + plain), "");
    EXPECT_TRUE(Pixels(plain, form) == expected) << options;
}

struct Depth {
    const char* name;
    uint16_t bits, samples, photometric;
};

TEST(TiffOutput, EveryCompressionOfEveryDepthIsReadHereAndByLibtiff) {
    const char* const options[] = {"none --byte-order mm",  "packbits",
                                   "lzw --byte-order mm",   "lzw-diff",
                                   "g3 --fill-order 2",     "g3-eol --byte-order mm",
                                   "g3-eol --fill-order 2", "g3-2d --k 4",
                                   "g3-2d --fill-order 2",  "g4 --byte-order MM --fill-order 2",
                                   "none --fill-order 2"};
    for (const Depth& depth :
         {Depth{"white is zero", 1, 1, 0}, Depth{"black is zero", 1, 1, 1},
          Depth{"two colours", 1, 1, 3}, Depth{"16 greys", 4, 1, 0}, Depth{"16 colours", 4, 1, 3},
          Depth{"greys", 8, 1, 1}, Depth{"palette", 8, 1, 3}, Depth{"RGB", 8, 3, 2}}) {
        SCOPED_TRACE(depth.name);
        const auto drawn = [&](uint32_t width, uint32_t height) {
            return Drawn(width, height, depth.bits, depth.samples, depth.photometric);
        };
        const std::string input = FileOf(BuildTiff({drawn(71, 500), drawn(1728, 20)}), "drawn.tif");
        for (const std::string option : options)
            ExpectSame(input, NewPath("out.tif"), "--dither threshold --compression " + option,
                       option[0] == 'g' ? "--dither threshold --format pbm" : "--format ppm",
                       "out.tif: 2 pages\n");
        // As it comes, and through formats that are read as well.
        const std::string one = FileOf(BuildTiff({drawn(333, 1000)}), "one.tif");
        const std::string expected = Pixels(one);
        for (const std::string name : {"way.png", "way.bmp", "way.ppm", "way.tif"}) {
            const std::string way = NewPath(name), back = NewPath("back.tif");
            ExpectTool(Words({"convert", one, way}), 0);
            ExpectTool(Words({"convert", way, back}), 0);
            EXPECT_TRUE(Pixels(back) == expected) << name;
            const char* const dots = name == "way.ppm" ? "" : "200, 200 pixels/inch";
            EXPECT_NE(Shell("tiffinfo " + back).find(dots), std::string::npos) << name;
        }
        EXPECT_TRUE(RunTool("convert - - --format tif", ReadFile(one)).out ==
                    Pixels(one, "--format tiff"));
    }
}

// A white line of eight pixels by T.4, table 2: code 10011. The strip counts its closing codes, but
// for the last one's bits that fill no byte.
TEST(TiffOutput, Group3StripsCountTheirClosingCodes) {
    const std::string in = FileOf({'P', '4', ' ', '8', ' ', '1', '\n', 0}, "white.pbm");
    const std::string out = NewPath("white.tif");
    const std::pair<const char*, Bytes> cases[] = {
        {"g3", {0x98}},
        {"g3-eol", {0x00, 0x19, 0x80, 0x08, 0x00, 0x80, 0x08, 0x00, 0x80}},
        {"g3-2d", {0x00, 0x1C, 0xC0, 0x04, 0x00, 0x18, 0x00, 0xC0, 0x06, 0x00, 0x30, 0x01, 0x80}}};
    for (const auto& [name, strip] : cases) {
        ExpectTool(Words({"convert --force", in, out, "--compression", name}), 0);
        EXPECT_EQ(StoredStrips(out).at(0), std::vector<Bytes>{strip}) << name;
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
        const std::string input = pbm(sides, sides[0] == '8' ? 70000 : 30000);
        for (const std::string option : {"", "--compression packbits", "--compression g3-eol"})
            ExpectSame(input, NewPath("long.tif"), option, "--format pbm");
    }
    const std::string out = NewPath("never.tif");
    ExpectTool("convert --compression g4 " + pbm("40000 4", 20000) + " " + out, 2,
               "lines of more than 33280 pixels");
    EXPECT_FALSE(fs::exists(out));
}

TEST(TiffOutput, CarriesWhatWasSaidOfThePage) {
    const ImageSpec image =
        With(Drawn(64, 8, 8, 3, 2), {AsciiTag(269, "Deed"), AsciiTag(270, "Of sale"),
                                     AsciiTag(306, "1994:03:14 12:00:00"), AsciiTag(315, "J. Doe"),
                                     ShortTag(274, {6}), ShortTag(297, {2, 7}), LongTag(254, {2})});
    const std::string input = FileOf(BuildTiff({image}), "deed.tif");
    const std::string out = NewPath("deed-g4.tif");
    ASSERT_EQ(RunTool("convert --compression g4 --dpi 96 " + input + " " + out).exitCode, 0);
    const std::string info = Shell("tiffinfo " + out);
    for (const char* words :
         {"DocumentName: Deed\n", "ImageDescription: Of sale\n", "DateTime: 1994:03:14 12:00:00\n",
          "Artist: J. Doe\n", "Orientation: row 0 rhs", "Page Number: 2-7\n", "multi-page document",
          "Resolution: 96, 96 pixels/inch\n", "min-is-white"})
        EXPECT_NE(info.find(words), std::string::npos) << words << info;
    const std::string bare = FileOf({'P', '4', '\n', '8', ' ', '1', '\n', 0x55}, "bare.pbm");
    ASSERT_EQ(RunTool("convert --force " + bare + " " + out).exitCode, 0);
    EXPECT_EQ(Shell("tiffinfo " + out).find("Resolution"), std::string::npos);
}

TEST(TiffAppend, KeepsWhatIsThereAndItsByteOrder) {
    const std::string out = NewPath("grown.tif");
    const std::string input = FileOf(BuildTiff({Drawn(40, 9, 8, 3, 2)}), "one.tif");
    ASSERT_EQ(RunTool("convert --append --byte-order mm " + input + " " + out).exitCode, 0);
    fs::permissions(out, fs::perms{0600});
    const std::string first = Pixels(out);
    ExpectTool("convert --append --byte-order ii " + input + " " + out, 2, "other byte order");
    ExpectTool("convert --append --compression g3-2d " + Sample("letter.tif") + " " + out, 0,
               "3 pages added, 4 in all");
    EXPECT_EQ(ReadFile(out).at(0), 'M');
    EXPECT_EQ(fs::status(out).permissions(), fs::perms{0600});
    EXPECT_TRUE(Pixels(out, "--pages 1 --format ppm") == first);
    EXPECT_TRUE(Pixels(out, "--pages 2- --format pbm") ==
                Pixels(Sample("letter.tif"), "--format pbm"));
    EXPECT_EQ(Shell("tiffinfo -D " + out).find("arning"), std::string::npos);
}

TEST(TiffAppend, RefusesFilesWhoseImagesItWouldLose) {
    const std::string input = FileOf(BuildTiff({Drawn(8, 1, 1, 1, 0)}), "one.tif");
    const ImageSpec tiny = SimpleImage(8, 1, 1, 1, 1, 0, 1, {{0x55}});
    Bytes chain;
    for (int i = 0; i < 1001; ++i)
        chain.insert(chain.end(), {'P', '4', ' ', '8', ' ', '1', '\n', 0x55});
    const std::string many = FileOf(chain, "many.pbm");
    struct Case {
        Bytes there;
        std::string input, words;
    };
    for (const Case& c :
         {Case{BrokenChain(tiny), input, "chain of images is broken"},
          Case{BuildTiff(std::vector<ImageSpec>(1000, tiny)), input, "it is full"},
          Case{BuildTiff(std::vector<ImageSpec>(998, tiny)), Sample("letter.tif"), "one of 1001"},
          Case{{'n', 'o', 't', 'i', 'f', 'f'}, input, "Invalid byte order"},
          Case{{}, many, "1001"}}) {
        const std::string out = FileOf(c.there, "there.tif");
        ExpectTool("convert --append " + c.input + " " + out, 2, c.words);
        EXPECT_EQ(ReadFile(out), c.there);
    }
    const std::string out = NewPath("thousand.tif");
    ExpectTool("convert --pages -1000 " + many + " " + out, 0);
    EXPECT_EQ(Pixels(out, "--format pbm").size(), 1000 * std::string("P4\n8 1\nx").size());
}

// In a folder whose path the library doesn't take.
TEST(Overwriting, NeedsForceAndAnInterruptedRunLeavesNothing) {
    const fs::path folder = NewFolder(std::string(200, 'b'));
    const std::string letter = "convert " + Sample("letter.tif") + " " + folder.string();
    const Bytes old = {'o', 'l', 'd'};
    for (const char* const name : {"/a.tif", "/a-2.png"})
        fs::copy_file(FileOf(old, "old"), folder.string() + name);
    for (const std::string name : {"/a.tif", "/a.png"})
        ExpectTool(letter + name, 2, "with --force it is replaced");
    EXPECT_EQ(Names(folder), (std::vector<std::string>{"a-2.png", "a.tif"}));
    EXPECT_EQ(ReadFile(folder / "a.tif"), old);
    ExpectTool(letter + "/a.tif --force", 0);
    ExpectTool(letter + "/a.tif --append", 0);
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
        const Bytes bits = PnmPixels(run.out, 3);
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

TEST(TiffAppend, RunsAtTheSameTimeLoseNothing) {
    const std::string in = FileOf(BuildTiff({Drawn(8, 1, 1, 1, 0)}), "one.tif");
    const std::string out = FileOf(ReadFile(in), "grown.tif");
    Shell("for i in 1 2 3 4 5 6 7 8; do " VELLIM_BINARY_DIR "/bin/vellim convert " + in + " " +
          out + " --append & done; wait");
    EXPECT_EQ(StoredStrips(out).size(), 9U);
}

TEST(Overwriting, KeepsAnInputThatCannotBeReadWhole) {
    const ImageSpec good = With(Drawn(8, 1, 1, 1, 0), {ShortTag(297, {0, 3}), LongTag(274, {1})});
    const ImageSpec bad = SimpleImage(8, 1, 1, 1, 99, 0, 1, {{0x55}});
    const std::pair<Bytes, const char*> cases[] = {{BuildTiff({good, bad, good}), "2 of 3 pages\n"},
                                                   {BrokenChain(good), "1 page\n"}};
    for (const auto& [there, words] : cases) {
        const std::string in = FileOf(there, "in.tif"), self = Words({"convert", in, in});
        ExpectTool(self + " --force", 2, "--accept-loss");
        EXPECT_EQ(ReadFile(in), there);
        ExpectTool(Words({"convert", in, NewPath("other.tif")}), 1, words);
        ExpectTool(self + " --force --accept-loss", 1);
        ExpectTool(Words({"convert --force", in, in + "f --pages 1,1"}), 0, "2 pages\n");
        const std::string info = Shell("tiffinfo " + in + "f");
        for (const char* const tag : {"Page Number", "Orientation"})
            EXPECT_EQ(info.find(tag), std::string::npos) << info;
    }
    const std::string two = FileOf({'P', '5', ' ', '1', ' ', '1', ' ', '9', ' ', 1,
                                    'P', '5', ' ', '1', ' ', '1', ' ', '9', ' ', 9},
                                   "two.pgm");
    ExpectTool("convert --pages 2,1-2 " + two + " " + two + ".tif", 0, "3 pages\n");
    EXPECT_EQ(Pixels(two + ".tif", "--format pgm").substr(11),
              "\xFFP5\n1 1\n255\n\x1CP5\n1 1\n255\n\xFF");
}

}  // namespace
}  // namespace vellim::test
