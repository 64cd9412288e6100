// Whole files of every compression, cut at every byte and with bits flipped: what came before the
// damage is kept, the rest is a failure, just as the reference decoders have it.
#include <gtest/gtest.h>

#include <random>

#include "codec/decode_file.h"
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
};
constexpr Kind kKinds[] = {
    {1, 0, 1, 1, 77},     {1, 0, 8, 3, 19}, {2, 0, 1, 1, 77}, {3, 0, 1, 1, 77},
    {3, 4, 1, 1, 77},     {3, 1, 1, 1, 77}, {4, 0, 1, 1, 77}, {5, 1, 1, 1, 77},
    {5, 2, 4, 1, 41},     {5, 2, 8, 1, 33}, {5, 2, 8, 3, 19}, {32773, 0, 1, 1, 77},
    {32773, 0, 8, 1, 33},
};

Bytes Flatten(const Picture& part) {
    Bytes all;
    for (const Bytes& row : part.rows)
        all.insert(all.end(), row.begin(), row.end());
    return all;
}

// Literal packets and repeats by turns, as they come.
Bytes PackBits(const Picture& part) {
    Bytes out;
    for (const Bytes& row : part.rows) {
        for (size_t i = 0; i < row.size(); ++i) {
            const bool repeats = i + 1 < row.size() && row[i] == row[i + 1];
            out.insert(out.end(), {static_cast<uint8_t>(repeats ? 0xFF : 0x00), row[i]});
            if (repeats) ++i;
        }
    }
    return out;
}

CompressionKey KeyOf(const Kind& kind) {
    if (kind.compression == 5) return kind.options == 2 ? TIFF_KEY_LZW_DIFFERENCING : TIFF_KEY_LZW;
    return kind.compression | uint32_t{kind.compression == 3 ? kind.options : 0U} << 16;
}

Bytes EncodeStrip(const Kind& kind, const Picture& part) {
    if (kind.compression == 1) return Flatten(part);
    if (kind.compression == 5) return EncodeLzwStrip(Flatten(part));
    if (kind.compression == 32773) return PackBits(part);
    return EncodeReference(KeyOf(kind), part);
}

// A file whose directory comes first, so that a cut through the strips leaves it readable.
struct StoredFile {
    EngineRun run;  // the stream is the file, but for the order of bits in the strips
    size_t firstStrip = 0;
    bool lsbFirst = false;

    [[nodiscard]] Bytes Stored() const {
        Bytes bytes = run.stream;
        for (size_t i = firstStrip; lsbFirst && i < bytes.size(); ++i) {
            unsigned mirrored = 0;
            for (int bit = 0; bit < 8; ++bit)
                mirrored = mirrored << 1 | (run.stream[i] >> bit & 1U);
            bytes[i] = static_cast<uint8_t>(mirrored);
        }
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
        const auto begin = picture.rows.begin() + row;
        Bytes strip =
            EncodeStrip(kind, {wide, {begin, begin + std::min(kRowsPerStrip, kHeight - row)}});
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
