// Whole files of every compression, cut at every byte and with bits flipped: what came before the
// damage is kept, the rest is a failure, just as the reference decoders have it.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "codec/decode_file.h"
#include "codec/engines.h"
#include "container/streams.h"
#include "support/reference_ccitt.h"
#include "support/reference_lzw.h"

namespace vellim::test {
namespace {

constexpr uint32_t kHeight = 21;
constexpr uint32_t kRowsPerStrip = 8;

struct Kind {
    uint16_t compression;
    uint16_t options;  // T4Options, or Predictor
    uint16_t bits, samples;
    uint32_t width;
    Engine encode;
};
constexpr Kind kKinds[] = {
    {1, 0, 1, 1, 77, EncodeRaw},          {1, 0, 8, 3, 19, EncodeRaw},
    {2, 0, 1, 1, 77, Encode1D},           {3, 0, 1, 1, 77, Encode1D},
    {3, 4, 1, 1, 77, Encode1D},           {3, 1, 1, 1, 77, EncodeGroup3TwoD},
    {4, 0, 1, 1, 77, EncodeGroup4},       {5, 1, 1, 1, 77, EncodeLzw},
    {5, 2, 4, 1, 41, EncodeLzw},          {5, 2, 8, 1, 33, EncodeLzw},
    {5, 2, 8, 3, 19, EncodeLzw},          {32773, 0, 1, 1, 77, EncodePackBits},
    {32773, 0, 8, 1, 33, EncodePackBits},
};

CompressionKey KeyOf(const Kind& kind) {
    if (kind.compression == 5) return kind.options == 2 ? TIFF_KEY_LZW_DIFFERENCING : TIFF_KEY_LZW;
    return kind.compression | uint32_t{kind.compression == 3 ? kind.options : 0U} << 16;
}

// A file whose directory comes first, so that a cut through the strips leaves it readable.
struct StoredFile {
    EngineRun run;  // the stream is the file, but for the order of bits in the strips
    size_t firstStrip = 0;
    bool lsbFirst = false;

    [[nodiscard]] Bytes Stored() const {
        Bytes bytes = run.stream;
        if (lsbFirst) ReverseBits(&bytes[firstStrip], bytes.size() - firstStrip);
        return bytes;
    }
};

StoredFile Store(const Kind& kind, bool bigEndian, bool lastStripFirst) {
    const auto bits = static_cast<uint16_t>(kind.bits * kind.samples);
    StoredFile file{.run{.width = kind.width,
                         .height = kHeight,
                         .rowsPerStrip = kRowsPerStrip,
                         .bits = bits,
                         .key = KeyOf(kind)},
                    .lsbFirst = bigEndian};
    const auto wide = static_cast<int32_t>(kind.width * bits);
    const Picture picture = RandomPicture(kind.width, wide, kHeight, 9);
    ImageSpec image = SimpleImage(kind.width, kHeight, kind.bits, kind.samples, kind.compression, 1,
                                  kRowsPerStrip, {});
    image.tags.push_back(ShortTag(TIFF_TAG_FILL_ORDER, {static_cast<uint16_t>(1 + bigEndian)}));
    image.tags.push_back(
        ShortTag(kind.compression == 5 ? TIFF_TAG_PREDICTOR : TIFF_TAG_T4_OPTIONS, {kind.options}));
    const auto table = [&](const std::vector<uint32_t>& offsets) {
        return bigEndian ? ShortTag(TIFF_TAG_STRIP_OFFSETS, {offsets.begin(), offsets.end()})
                         : LongTag(TIFF_TAG_STRIP_OFFSETS, offsets);
    };
    image.tags.push_back(table({0, 0, 0}));
    file.firstStrip = BuildTiff({image}, bigEndian).size();
    Bytes strips;
    for (uint32_t row = 0; row < kHeight; row += kRowsPerStrip) {
        EngineRun part = file.run;
        part.height = std::min(kRowsPerStrip, kHeight - row);
        Bytes strip = RunEncoder(kind.encode, part, [&](uint8_t* line, uint32_t number) {
                          std::ranges::copy(picture.rows[row + number], line);
                          return 0U;
                      }).stream;
        strip.push_back(0);  // look-ahead wants a byte behind the last code
        for (uint32_t& offset : file.run.offsets)
            offset += lastStripFirst ? static_cast<uint32_t>(strip.size()) : 0;
        const size_t at = lastStripFirst ? 0 : strips.size();
        file.run.offsets.push_back(static_cast<uint32_t>(file.firstStrip + at));
        strips.insert(strips.begin() + static_cast<ptrdiff_t>(at), strip.begin(), strip.end());
    }
    image.tags.back() = table(file.run.offsets);
    file.run.stream = BuildTiff({image}, bigEndian);
    file.run.stream.insert(file.run.stream.end(), strips.begin(), strips.end());
    return file;
}

class DamagedFiles : public testing::TestWithParam<Kind> {};

TEST_P(DamagedFiles, KeepWhatCameBeforeACut) {
    for (const bool bigEndian : {false, true}) {
        const StoredFile file = Store(GetParam(), bigEndian, false);
        const Bytes bytes = file.Stored();
        const Outcome whole = DecodeFile(bytes);
        ASSERT_TRUE(whole.code == 0 && whole.lines.size() == kHeight);
        for (size_t cut = 0; cut < bytes.size(); ++cut) {
            const auto end = bytes.begin() + static_cast<ptrdiff_t>(cut);
            const Outcome part = DecodeFile({bytes.begin(), end});
            ASSERT_EQ(part.code == 0, part.lines.size() == kHeight) << "cut at " << cut;
            ASSERT_TRUE(std::equal(part.lines.begin(), part.lines.end(), whole.lines.begin()))
                << "cut at " << cut;
        }
    }
}

TEST_P(DamagedFiles, EndInOrderWhateverBitsAreFlipped) {
    std::mt19937 random(GetParam().compression);
    const auto flip = [&](Bytes& bytes, size_t from) {
        bytes[from + random() % (bytes.size() - from)] ^= static_cast<uint8_t>(1U << random() % 8);
    };
    for (int round = 0; round < 300; ++round) {
        StoredFile file = Store(GetParam(), round % 2 != 0, round % 4 < 2);
        for (int i = 0; i < round % 5; ++i)
            flip(file.run.stream, file.firstStrip);
        Bytes bytes = file.Stored();
        const Outcome got = DecodeFile(bytes);
        if (GetParam().compression == 5) {
            ASSERT_EQ(got, ReferenceLzw(file.run)) << round;
        } else if (GetParam().compression != 1 && GetParam().compression != 32773) {
            ASSERT_EQ(got, ReferenceCcitt(file.run)) << round;
        }
        for (int i = 0; i < 1 + round % 5; ++i)
            flip(bytes, 0);
        SetTiffSizeLimits(1U << 16, 1U << 12);
        ASSERT_LE(DecodeFile(bytes).lines.size(), 1U << 12);
        SetTiffSizeLimits(1U << 20, 1U << 24);
    }
}

INSTANTIATE_TEST_SUITE_P(EveryCompression, DamagedFiles, testing::ValuesIn(kKinds));

}  // namespace
}  // namespace vellim::test
