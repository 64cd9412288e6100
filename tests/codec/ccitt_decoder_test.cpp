// The CCITT decoders beside the plain reference decoder, on sound and on damaged data: the same
// lines and the same code, whatever comes.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "container/streams.h"
#include "platform/guards.h"
#include "support/reference_ccitt.h"
#include "support/tiff_builder.h"
#include "vellim/vellim.h"

namespace vellim::test {
namespace {

constexpr CompressionKey kKeys[] = {
    TIFF_KEY_CCITT_1D,  TIFF_KEY_CCITT_1D_BARE,  TIFF_KEY_GROUP3_1D, TIFF_KEY_GROUP3_1D_FILL,
    TIFF_KEY_GROUP3_2D, TIFF_KEY_GROUP3_2D_FILL, TIFF_KEY_GROUP4,
};

// What came of a run, and the bytes of its lines.
using Taken = std::pair<DecodedLines, size_t>;

uint32_t KeepLine(uint8_t* line, uint32_t lineNumber, uintptr_t callbackData) {
    auto& [decoded, lineBytes] = *reinterpret_cast<Taken*>(callbackData);
    EXPECT_EQ(lineNumber, decoded.lines.size());
    decoded.lines.emplace_back(line, line + lineBytes);
    return TIFF_LINE_GO_ON;
}

DecodedLines Decode(CompressionKey key, const Bytes& stream, int32_t width, int32_t height) {
    Taken taken{{}, (static_cast<size_t>(width) + 7) / 8};
    const OwnedBlock block(BlockOf(stream));
    const OpenStream open(mOpen(block.Get(), static_cast<int32_t>(stream.size())));
    const int32_t done = DecodeCcittImage(open.Get(), width, height, key,
                                          reinterpret_cast<uintptr_t>(&taken), KeepLine);
    taken.first.code = static_cast<uint32_t>(TiffError());
    EXPECT_EQ(done != 0, taken.first.code == 0);
    return std::move(taken.first);
}

// `place` tells one check of a test from another.
void ExpectAsReference(CompressionKey key, const Bytes& stream, int32_t width, int32_t height,
                       size_t place) {
    const DecodedLines expected = DecodeReference(key, stream, width, height);
    const DecodedLines got = Decode(key, stream, width, height);
    ASSERT_EQ(got.code, expected.code) << "key " << key << ", at " << place;
    ASSERT_TRUE(got.lines == expected.lines) << "key " << key << ", at " << place;
}

// A code that begins in the last seven bits of a stream can't be read, and lines on byte boundaries
// may end in such a one: they need room behind them.
void ExpectRoundTrip(CompressionKey key, const Picture& picture, int32_t k = 4) {
    Bytes stream = EncodeReference(key, picture, k);
    stream.push_back(0);
    const DecodedLines got =
        Decode(key, stream, picture.width, static_cast<int32_t>(picture.rows.size()));
    ASSERT_EQ(got.code, 0U) << "key " << key << ", width " << picture.width;
    ASSERT_TRUE(got.lines == picture.rows) << "key " << key << ", width " << picture.width;
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
                ASSERT_NO_FATAL_FAILURE(ExpectRoundTrip(key, picture, 2)) << bits;
            }
        }
    }
}

TEST(CcittDecoder, EveryRunLengthOfEitherColor) {
    constexpr int32_t kWidth = 5208;
    for (const CompressionKey key : {TIFF_KEY_CCITT_1D, TIFF_KEY_GROUP3_1D, TIFF_KEY_GROUP4}) {
        Picture picture{kWidth, {}};
        for (int32_t run = 0; run <= kWidth; ++run) {
            Bytes row(kWidth / 8);
            std::fill_n(row.begin(), run / 8, uint8_t{0xFF});
            if (run % 8 != 0)
                row[static_cast<size_t>(run) / 8] = static_cast<uint8_t>(~(0xFF >> run % 8));
            picture.rows.push_back(row);
            for (uint8_t& byte : row)
                byte = static_cast<uint8_t>(~byte);
            picture.rows.push_back(row);
        }
        ASSERT_NO_FATAL_FAILURE(ExpectRoundTrip(key, picture));
    }
}

TEST(CcittDecoder, PicturesComeBackAcrossBuffers) {
    struct Case {
        int32_t width, height;
        double meanRun;
    };
    for (const Case& size : {Case{1, 40, 1}, Case{7, 40, 2}, Case{8, 40, 2}, Case{31, 50, 3},
                             Case{1728, 400, 4}, Case{9000, 120, 900}, Case{33, 40000, 8},
                             Case{65535, 4, 200}, Case{1'000'000, 1, 9000}}) {
        const Picture picture = RandomPicture(7, size.width, size.height, size.meanRun);
        for (const CompressionKey key : kKeys)
            ASSERT_NO_FATAL_FAILURE(ExpectRoundTrip(key, picture));
    }
}

// Short streams are cut at every byte. Of a long one, what was in hand at a buffer's end decides
// what can be read at the stream's: it is cut behind a crossing, with codes of all lengths there.
TEST(CcittDecoder, Truncated) {
    for (const CompressionKey key : kKeys) {
        for (const int32_t width : {5, 24, 100}) {
            const Picture picture = RandomPicture(static_cast<uint32_t>(width), width, 40, 6);
            const Bytes stream = EncodeReference(key, picture);
            for (size_t size = 1; size < stream.size(); ++size)
                ExpectAsReference(key, Truncated(stream, size), width, 40, size);
        }
        Picture picture = RandomPicture(3, 600, 1200, 5);
        picture.rows.insert(picture.rows.end(), 90, Bytes(600 / 8));
        const Bytes stream = EncodeReference(key, picture);
        ASSERT_GT(stream.size(), 32767U + 50);
        std::vector<size_t> sizes{32767, 32768, 32769, 32770, 32772, 32775, 32776};
        for (size_t before = 1; before < 40; ++before)
            sizes.push_back(stream.size() - before);
        for (const size_t size : sizes)
            ExpectAsReference(key, Truncated(stream, size), 600, 1290, size);
    }
}

// Where vertical modes alone follow a horizontal one, how many lines the stream's end still gives
// hangs on where that one stood, however long ago.
TEST(CcittDecoder, WhitePagesWithoutAClosingCode) {
    for (const auto& [bytes, leads] : {std::pair{12U, 40U}, std::pair{33000U, 3U}}) {
        for (size_t lead = 0; lead < leads; ++lead) {
            Bytes stream(bytes, 0xFF);
            for (const size_t zero : {0U, 1U, 3U, 5U, 6U}) {
                stream[(lead + zero) / 8] &= static_cast<uint8_t>(~(0x80U >> (lead + zero) % 8));
            }
            const auto height = static_cast<int32_t>(bytes * 8);
            ExpectAsReference(TIFF_KEY_GROUP4, stream, 9, height, lead);
        }
    }
}

// Flipped bits in sound data, and noise of any density.
TEST(CcittDecoder, Damage) {
    std::mt19937 engine(11);
    const auto random = [&] { return static_cast<uint32_t>(engine()); };
    for (const CompressionKey key : kKeys) {
        for (size_t round = 0; round < 400; ++round) {
            const auto width = static_cast<int32_t>(1 + random() % 300);
            const Picture picture = RandomPicture(random(), width, 30, 1.0 + random() % 20);
            Bytes stream = EncodeReference(key, picture);
            for (uint32_t flips = 1 + random() % 4; flips != 0; --flips)
                stream[random() % stream.size()] ^= static_cast<uint8_t>(1U << random() % 8);
            ASSERT_NO_FATAL_FAILURE(ExpectAsReference(key, stream, width, 30, round));

            Bytes noise(1 + random() % 600);
            const uint32_t density = random() % 5;
            for (uint8_t& byte : noise) {
                const uint32_t bits = random(), other = random() & random();
                byte = static_cast<uint8_t>(density == 0   ? bits & other
                                            : density == 1 ? bits | ~other
                                                           : bits);
            }
            ASSERT_NO_FATAL_FAILURE(ExpectAsReference(key, noise, width, 50, round));
        }
    }
}

TEST(CcittDecoder, StripsStartAfresh) {
    constexpr int32_t kWidth = 203;
    constexpr size_t kRows = 17;
    const Picture picture = RandomPicture(23, kWidth, 6 * kRows, 7);
    struct Case {
        CompressionKey key;
        uint16_t compression, options;
        bool backward;
    };
    for (const Case& kind :
         {Case{TIFF_KEY_CCITT_1D, 2, 0, true}, Case{TIFF_KEY_GROUP3_1D, 3, 0, true},
          Case{TIFF_KEY_GROUP3_2D, 3, 1, true}, Case{TIFF_KEY_GROUP4, 4, 0, true},
          Case{TIFF_KEY_GROUP4, 4, 0, false}}) {
        std::vector<Bytes> strips;
        std::vector<uint32_t> offsets;
        uint32_t offset = 8;
        Picture expectedPicture{kWidth, {}};
        for (auto row = picture.rows.begin(); row != picture.rows.end(); row += kRows) {
            const Picture part{kWidth, {row, row + kRows}};
            strips.push_back(EncodeReference(kind.key, part));
            offsets.push_back(offset);
            offset += static_cast<uint32_t>(strips.back().size());
            expectedPicture.rows.insert(
                kind.backward ? expectedPicture.rows.begin() : expectedPicture.rows.end(), row,
                row + kRows);
        }
        if (kind.backward) std::reverse(offsets.begin(), offsets.end());
        ImageSpec image = SimpleImage(kWidth, 6 * kRows, 1, 1, kind.compression, 0, kRows, strips);
        image.tags.push_back(LongTag(TIFF_TAG_T4_OPTIONS, {kind.options}));
        const Bytes bytes = BuildTiff({image});
        const OwnedBlock block(BlockOf(bytes));
        const TiffFileHandle file =
            OpenTiffInMemory(block.Get(), static_cast<int32_t>(bytes.size()), T_READ);
        ASSERT_EQ(GetTiffImage(file, 0), 1);
        DefineTiffImageInfoBuffer(file, 0, TIFF_TAG_STRIP_OFFSETS, offsets.data(), TIFF_TYPE_LONG,
                                  6);
        Taken taken{{}, (kWidth + 7) / 8};
        DecodeTiffImage(file, 0, 0, 0, reinterpret_cast<uintptr_t>(&taken), KeepLine);
        taken.first.code = static_cast<uint32_t>(TiffError());
        CloseTiffFile(file);
        EXPECT_EQ(taken.first, DecodeReference(kind.key, bytes, kWidth, 6 * kRows, kRows, offsets))
            << kind.key;
        // Each strip of two-dimensional Group 3 begins with a code that the strip before has used
        // up, so its lines come one late; the others come back as they were.
        if (kind.key == TIFF_KEY_GROUP3_2D) continue;
        EXPECT_EQ(taken.first.lines, expectedPicture.rows) << kind.key;
    }
}

TEST(CcittDecoder, RunsWithoutPixelsHaveABound) {
    // A horizontal mode of two empty runs goes nowhere: 21 bits, 8 times, are 21 bytes.
    constexpr std::string_view kMode =
        "001"
        "00110101"
        "0000110111";
    Bytes stream(21 * 10000);
    for (size_t bit = 0; bit < stream.size() * 8; ++bit)
        if (kMode[bit % kMode.size()] == '1')
            stream[bit / 8] |= static_cast<uint8_t>(0x80U >> bit % 8);
    EXPECT_EQ(Decode(TIFF_KEY_GROUP4, stream, 100, 100), (DecodedLines{{}, TIFF_BAD_CODE}));
    EXPECT_EQ(Decode(TIFF_KEY_CCITT_1D, Bytes(400000), 100, 100),
              (DecodedLines{{}, TIFF_UNEXPECTED_END}));
}

// With the size limits lifted, lines too wide to be counted are refused and not run over.
TEST(CcittDecoder, TheWidestLines) {
    uint32_t pixels = 0;
    GetTiffSizeLimits(&pixels, nullptr);
    SetTiffSizeLimits(0x7FFFFFFF, 0);
    for (const CompressionKey key : kKeys) {
        for (const int32_t width : {(1 << 28) + 1, 1 << 29, 0x7FFFFFFF})
            EXPECT_EQ(Decode(key, {0x80, 0x80}, width, 1).code, TIFF_NO_MEMORY) << width;
    }
    SetTiffSizeLimits(pixels, 0);
}

}  // namespace
}  // namespace vellim::test
