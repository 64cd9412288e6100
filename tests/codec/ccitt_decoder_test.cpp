// The CCITT decoders beside the plain reference decoder, on sound and on damaged data: the same
// lines and the same code, whatever comes.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "container/streams.h"
#include "platform/guards.h"
#include "support/reference_ccitt.h"
#include "support/tiff_builder.h"
#include "vellim/vellim.h"

namespace vellim::test {
namespace {

// mt19937 in 32 bits, as it is meant.
class Random {
  public:
    explicit Random(uint32_t seed) : engine_(seed) {}
    uint32_t operator()() { return static_cast<uint32_t>(engine_()); }

  private:
    std::mt19937 engine_;
};

constexpr CompressionKey kKeys[] = {
    TIFF_KEY_CCITT_1D,  TIFF_KEY_CCITT_1D_BARE,  TIFF_KEY_GROUP3_1D, TIFF_KEY_GROUP3_1D_FILL,
    TIFF_KEY_GROUP3_2D, TIFF_KEY_GROUP3_2D_FILL, TIFF_KEY_GROUP4,
};

uint32_t KeepLine(uint8_t* line, uint32_t lineNumber, uintptr_t callbackData) {
    auto& into = *reinterpret_cast<std::pair<DecodedLines, size_t>*>(callbackData);
    EXPECT_EQ(lineNumber, into.first.lines.size());
    into.first.lines.emplace_back(line, line + into.second);
    return TIFF_LINE_GO_ON;
}

DecodedLines Decode(CompressionKey key, const Bytes& stream, int32_t width, int32_t height) {
    std::pair<DecodedLines, size_t> into{{}, static_cast<size_t>(width + 7) / 8};
    OwnedBlock block(BlockOf(stream));
    const OpenStream open(mOpen(block.Get(), static_cast<int32_t>(stream.size())));
    const int32_t done = DecodeCcittImage(open.Get(), width, height, key,
                                          reinterpret_cast<uintptr_t>(&into), KeepLine);
    into.first.code = static_cast<uint32_t>(TiffError());
    EXPECT_EQ(done != 0, into.first.code == 0);
    return std::move(into.first);
}

// Decodes both ways; the message tells where they part.
void ExpectAsReference(CompressionKey key, const Bytes& stream, int32_t width, int32_t height,
                       const std::string& what) {
    const DecodedLines expected = DecodeReference(key, stream, width, height);
    const DecodedLines got = Decode(key, stream, width, height);
    ASSERT_EQ(got.code, expected.code) << what << ", key " << std::hex << key;
    ASSERT_EQ(got.lines.size(), expected.lines.size()) << what << ", key " << std::hex << key;
    for (size_t y = 0; y < got.lines.size(); ++y) {
        ASSERT_EQ(got.lines[y], expected.lines[y]) << what << ", line " << y << ", key " << key;
    }
}

// The code of a picture with room behind it: a code that begins in the last seven bits of a stream
// can't be read, and lines on byte boundaries may end in such a one.
Bytes EncodeWithRoom(CompressionKey key, const Picture& picture, int32_t k = 4) {
    Bytes stream = EncodeReference(key, picture, k);
    stream.push_back(0);
    return stream;
}

Bytes Truncated(const Bytes& bytes, size_t size) {
    return {bytes.begin(), bytes.begin() + static_cast<ptrdiff_t>(size)};
}

TEST(CcittDecoder, EverySmallPicture) {
    for (const CompressionKey key : kKeys) {
        for (int32_t width = 1; width <= 5; ++width) {
            for (uint32_t bits = 0; bits < 1U << (2 * width); ++bits) {
                const auto row = [&](uint32_t part) {
                    return Bytes{static_cast<uint8_t>((part & ((1U << width) - 1)) << (8 - width))};
                };
                const Picture picture{width, {row(bits), row(bits >> width)}};
                const DecodedLines got = Decode(key, EncodeWithRoom(key, picture, 2), width, 2);
                ASSERT_EQ(got.lines, picture.rows) << key << " " << width << " " << bits;
                ASSERT_EQ(got.code, 0U) << key << " " << width << " " << bits;
            }
        }
    }
}

TEST(CcittDecoder, EveryRunLengthOfEitherColor) {
    constexpr int32_t kWidth = 5210;
    for (const CompressionKey key : {TIFF_KEY_CCITT_1D, TIFF_KEY_GROUP3_1D, TIFF_KEY_GROUP4}) {
        for (int32_t first = 0; first <= 5200; first += 400) {
            Picture picture{kWidth, {}};
            for (int32_t run = first; run < first + 400; ++run) {
                Bytes black((kWidth + 7) / 8);
                for (int32_t x = 0; x < run && x < kWidth; ++x) {
                    black[static_cast<size_t>(x) / 8] |= static_cast<uint8_t>(0x80 >> (x % 8));
                }
                Bytes white = black;
                for (uint8_t& byte : white)
                    byte = static_cast<uint8_t>(~byte);
                white.back() &= 0xC0;
                picture.rows.push_back(run % 2 == 0 ? black : white);
                picture.rows.push_back(run % 2 == 0 ? white : black);
            }
            const DecodedLines got = Decode(key, EncodeWithRoom(key, picture), kWidth, 800);
            ASSERT_EQ(got.code, 0U);
            ASSERT_EQ(got.lines, picture.rows) << "from " << first << ", key " << key;
        }
    }
}

TEST(CcittDecoder, PicturesComeBackAcrossBuffers) {
    struct Case {
        int32_t width, height;
        double meanRun;
    };
    for (const Case& size : {Case{1, 40, 1}, Case{31, 50, 3}, Case{64, 50, 9}, Case{1728, 400, 4},
                             Case{2480, 300, 12}, Case{9000, 120, 900}, Case{33, 40000, 8}}) {
        const Picture picture = RandomPicture(7, size.width, size.height, size.meanRun);
        for (const CompressionKey key : kKeys) {
            const DecodedLines got =
                Decode(key, EncodeWithRoom(key, picture), size.width, size.height);
            ASSERT_EQ(got.code, 0U) << size.width << " key " << key;
            ASSERT_EQ(got.lines, picture.rows) << size.width << " key " << key;
        }
    }
}

TEST(CcittDecoder, TruncatedAtEveryByte) {
    for (const CompressionKey key : kKeys) {
        for (const int32_t width : {5, 24, 100}) {
            const Picture picture = RandomPicture(static_cast<uint32_t>(width), width, 40, 6);
            const Bytes stream = EncodeReference(key, picture);
            for (size_t size = 1; size < stream.size(); ++size) {
                ExpectAsReference(key, Truncated(stream, size), width, 40,
                                  "cut at " + std::to_string(size));
            }
        }
    }
}

// What was in hand at a buffer's end decides what can be read at the stream's: cut streams that
// have crossed from one buffer into the next, with codes of all lengths there.
TEST(CcittDecoder, TruncatedBehindABufferCrossing) {
    for (const CompressionKey key : kKeys) {
        Picture picture = RandomPicture(3, 600, 1200, 5);
        const Bytes white((600 + 7) / 8);
        for (int i = 0; i < 90; ++i)
            picture.rows.push_back(white);
        Bytes stream = EncodeReference(key, picture);
        const auto height = static_cast<int32_t>(picture.rows.size());
        ASSERT_GT(stream.size(), 32767U + 10);
        for (const size_t behind : {0U, 1U, 2U, 3U, 5U, 8U, 9U}) {
            ExpectAsReference(key, Truncated(stream, 32767 + behind), 600, height,
                              "cut behind " + std::to_string(behind));
        }
        for (size_t before = 1; before < 40; ++before) {
            ExpectAsReference(key, Truncated(stream, stream.size() - before), 600, height,
                              "cut before " + std::to_string(before));
        }
    }
}

TEST(CcittDecoder, FlippedBits) {
    Random random(11);
    for (const CompressionKey key : kKeys) {
        for (int round = 0; round < 400; ++round) {
            const auto width = static_cast<int32_t>(1 + random() % 300);
            const Picture picture = RandomPicture(random(), width, 30, 1.0 + random() % 20);
            Bytes stream = EncodeReference(key, picture);
            for (uint32_t flips = 1 + random() % 4; flips != 0; --flips) {
                stream[random() % stream.size()] ^= static_cast<uint8_t>(1U << random() % 8);
            }
            ExpectAsReference(key, stream, width, 30, "round " + std::to_string(round));
        }
    }
}

TEST(CcittDecoder, NoiseOfAnyDensity) {
    Random random(5);
    for (const CompressionKey key : kKeys) {
        for (int round = 0; round < 400; ++round) {
            Bytes stream(1 + random() % 600);
            const uint32_t ones = random() % 5;
            for (uint8_t& byte : stream) {
                byte = static_cast<uint8_t>(random());
                if (ones == 0) byte &= static_cast<uint8_t>(random() & random());
                if (ones == 1) byte |= static_cast<uint8_t>(random() | random());
            }
            const auto width = static_cast<int32_t>(1 + random() % 200);
            ExpectAsReference(key, stream, width, 50, "round " + std::to_string(round));
        }
    }
}

// Vertical modes alone, with all pages of phases: the white page that ends with its data.
TEST(CcittDecoder, Group4WhitePageWithoutClosingCode) {
    for (size_t lead = 0; lead < 40; ++lead) {
        for (const size_t bytes : {12U, 33000U}) {
            Bytes stream(bytes, 0xFF);
            // 3 + 4 + 2 bits of a horizontal mode, and ones from there on, begin at a bit of
            // choice.
            for (size_t bit = 0; bit < 7; ++bit) {
                const size_t at = lead + bit;
                const bool one = bit == 2 || bit == 4;
                if (!one) stream[at / 8] &= static_cast<uint8_t>(~(0x80U >> at % 8));
            }
            const auto height = static_cast<int32_t>(bytes * 8);
            ExpectAsReference(TIFF_KEY_GROUP4, stream, 9, height, "lead " + std::to_string(lead));
        }
    }
}

TEST(CcittDecoder, StripsStartAfresh) {
    constexpr int32_t kWidth = 203;
    constexpr int32_t kRows = 17;
    const Picture picture = RandomPicture(23, kWidth, 5 * kRows + 3, 7);
    struct Case {
        CompressionKey key;
        uint16_t compression;
        uint32_t options;
    };
    for (const Case& kind : {Case{TIFF_KEY_CCITT_1D, 2, 0}, Case{TIFF_KEY_GROUP3_1D, 3, 0},
                             Case{TIFF_KEY_GROUP3_2D, 3, 1}, Case{TIFF_KEY_GROUP4, 4, 0}}) {
        std::vector<Bytes> strips;
        std::vector<uint32_t> offsets;
        Bytes all(8);
        for (size_t row = 0; row < picture.rows.size(); row += kRows) {
            const size_t end = std::min(row + kRows, picture.rows.size());
            const Picture part{kWidth,
                               {picture.rows.begin() + static_cast<ptrdiff_t>(row),
                                picture.rows.begin() + static_cast<ptrdiff_t>(end)}};
            strips.push_back(EncodeReference(kind.key, part));
            offsets.push_back(static_cast<uint32_t>(all.size()));
            all.insert(all.end(), strips.back().begin(), strips.back().end());
        }
        ImageSpec image = SimpleImage(kWidth, static_cast<uint32_t>(picture.rows.size()), 1, 1,
                                      kind.compression, 0, kRows, strips);
        if (kind.options != 0) image.tags.push_back(LongTag(TIFF_TAG_T4_OPTIONS, {kind.options}));
        const Bytes bytes = BuildTiff({image});
        const OwnedBlock block(BlockOf(bytes));
        const TiffFileHandle file =
            OpenTiffInMemory(block.Get(), static_cast<int32_t>(bytes.size()), T_READ);
        ASSERT_EQ(GetTiffImage(file, 0), 1);
        std::pair<DecodedLines, size_t> into{{}, static_cast<size_t>(kWidth + 7) / 8};
        DecodeTiffImage(file, 0, 0, 0, reinterpret_cast<uintptr_t>(&into), KeepLine);
        into.first.code = static_cast<uint32_t>(TiffError());
        CloseTiffFile(file);

        const DecodedLines expected = DecodeReference(
            kind.key, bytes, kWidth, static_cast<int32_t>(picture.rows.size()), kRows, offsets);
        EXPECT_EQ(into.first, expected) << kind.key;
        // Each strip of two-dimensional Group 3 begins with a code that the strip before has used
        // up, so its lines come one late; the others come back as they were.
        if (kind.key == TIFF_KEY_GROUP3_2D) continue;
        EXPECT_EQ(into.first.lines, picture.rows) << kind.key;
    }
}

TEST(CcittDecoder, RunsWithoutPixelsHaveABound) {
    // A horizontal mode of two empty runs goes nowhere: 21 bits, 8 times, are 21 bytes.
    const std::string mode = std::string("001") + "00110101" + "0000110111";
    Bytes stream(21 * 10000);
    for (size_t bit = 0; bit < stream.size() * 8; ++bit) {
        if (mode[bit % mode.size()] == '1') {
            stream[bit / 8] |= static_cast<uint8_t>(0x80U >> bit % 8);
        }
    }
    const DecodedLines group4 = Decode(TIFF_KEY_GROUP4, stream, 100, 100);
    EXPECT_TRUE(group4.lines.empty());
    EXPECT_EQ(group4.code, static_cast<uint32_t>(TIFF_BAD_CODE));

    const DecodedLines bare = Decode(TIFF_KEY_CCITT_1D, Bytes(400000), 100, 100);
    EXPECT_TRUE(bare.lines.empty());
    EXPECT_EQ(bare.code, static_cast<uint32_t>(TIFF_UNEXPECTED_END));
}

}  // namespace
}  // namespace vellim::test
