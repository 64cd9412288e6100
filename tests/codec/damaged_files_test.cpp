// Whole files of every compression, cut at every byte and with bits flipped: what came before the
// damage is kept, the rest is a failure, and nothing else happens.
#include <gtest/gtest.h>

#include <array>
#include <random>

#include "platform/guards.h"
#include "support/reference_ccitt.h"
#include "support/reference_lzw.h"
#include "support/tiff_builder.h"
#include "vellim/vellim.h"

namespace vellim::test {
namespace {

constexpr uint32_t kHeight = 21;
constexpr uint32_t kRowsPerStrip = 8;

struct Kind {
    uint16_t compression;
    uint16_t options;  // T4Options, or Predictor
    uint16_t bits;
    uint16_t samples;
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
Bytes PackBits(const Bytes& data) {
    Bytes out;
    for (size_t i = 0; i < data.size(); ++i) {
        const bool repeats = i + 1 < data.size() && data[i] == data[i + 1];
        out.insert(out.end(), {static_cast<uint8_t>(repeats ? 0xFF : 0x00), data[i]});
        if (repeats) ++i;
    }
    return out;
}

Bytes EncodeStrip(const Kind& kind, const Picture& part) {
    switch (kind.compression) {
        case 1:
            return Flatten(part);
        case 2:
            return EncodeReference(TIFF_KEY_CCITT_1D, part);
        case 3:
            return EncodeReference(3U | uint32_t{kind.options} << 16, part);
        case 4:
            return EncodeReference(TIFF_KEY_GROUP4, part);
        case 5:
            return EncodeLzwStrip(Flatten(part), FullTable::kClear);
        default: {
            Bytes all;
            for (const Bytes& row : part.rows) {
                const Bytes packed = PackBits(row);
                all.insert(all.end(), packed.begin(), packed.end());
            }
            return all;
        }
    }
}

// A file whose directory comes first, so that a cut through the strips leaves it readable.
struct StoredFile {
    Bytes bytes;
    size_t firstStrip = 0;
};

StoredFile Store(const Kind& kind, bool bigEndian, uint16_t fillOrder) {
    const auto bitsWide = static_cast<int32_t>(kind.width * kind.bits * kind.samples);
    const Picture picture = RandomPicture(kind.width, bitsWide, kHeight, 9);
    std::vector<Bytes> strips;
    for (uint32_t row = 0; row < kHeight; row += kRowsPerStrip) {
        const auto begin = picture.rows.begin() + row;
        strips.push_back(
            EncodeStrip(kind, {bitsWide, {begin, begin + std::min(kRowsPerStrip, kHeight - row)}}));
        strips.back().push_back(0);  // look-ahead wants a byte behind the last code
        if (fillOrder != TIFF_FILL_LSB_FIRST) continue;
        for (uint8_t& byte : strips.back()) {
            uint8_t mirrored = 0;
            for (int bit = 0; bit < 8; ++bit)
                mirrored |= (byte >> bit & 1) << (7 - bit);
            byte = mirrored;
        }
    }
    ImageSpec image = SimpleImage(kind.width, kHeight, kind.bits, kind.samples, kind.compression, 1,
                                  kRowsPerStrip, {});
    image.tags.push_back(ShortTag(TIFF_TAG_FILL_ORDER, {fillOrder}));
    image.tags.push_back(
        ShortTag(kind.compression == 5 ? TIFF_TAG_PREDICTOR : TIFF_TAG_T4_OPTIONS, {kind.options}));
    image.tags.push_back(LongTag(TIFF_TAG_STRIP_OFFSETS, std::vector<uint32_t>(strips.size())));
    StoredFile file;
    file.firstStrip = BuildTiff({image}, bigEndian).size();
    std::vector<uint32_t> offsets;
    size_t end = file.firstStrip;
    for (const Bytes& strip : strips) {
        offsets.push_back(static_cast<uint32_t>(end));
        end += strip.size();
    }
    image.tags.back() = LongTag(TIFF_TAG_STRIP_OFFSETS, offsets);
    file.bytes = BuildTiff({image}, bigEndian);
    for (const Bytes& strip : strips) {
        file.bytes.insert(file.bytes.end(), strip.begin(), strip.end());
    }
    return file;
}

uint32_t KeepLine(uint8_t* line, uint32_t lineNumber, uintptr_t callbackData) {
    auto& into = *reinterpret_cast<std::pair<DecodedLines, size_t>*>(callbackData);
    if (lineNumber != into.first.lines.size()) return TIFF_BAD_STRIP_INDEX;
    into.first.lines.emplace_back(line, line + into.second);
    return TIFF_LINE_GO_ON;
}

DecodedLines DecodeFile(const Bytes& bytes) {
    std::pair<DecodedLines, size_t> into{{}, 0};
    const OwnedBlock block(BlockOf(bytes));
    const TiffFileHandle file =
        OpenTiffInMemory(block.Get(), static_cast<int32_t>(bytes.size()), T_READ);
    TiffDimensions size{};
    bool done = file != 0 && GetTiffImage(file, 0) == 1 && GetTiffDimensions(file, 0, &size) == 0;
    if (done) {
        into.second = (static_cast<size_t>(size.biWidth) * size.biBitCount + 7) / 8;
        done = DecodeTiffImage(file, 0, 0, 0, reinterpret_cast<uintptr_t>(&into), KeepLine) == 1;
    }
    into.first.code = static_cast<uint32_t>(TiffError());
    EXPECT_TRUE(done == (into.first.code == 0) || file == 0);
    CloseTiffFile(file);
    return std::move(into.first);
}

class DamagedFiles : public testing::TestWithParam<Kind> {};

TEST_P(DamagedFiles, KeepWhatCameBeforeACut) {
    for (const bool bigEndian : {false, true}) {
        const uint16_t fillOrder = bigEndian ? TIFF_FILL_LSB_FIRST : TIFF_FILL_MSB_FIRST;
        const StoredFile file = Store(GetParam(), bigEndian, fillOrder);
        const DecodedLines whole = DecodeFile(file.bytes);
        ASSERT_EQ(whole.code, 0U);
        ASSERT_EQ(whole.lines.size(), kHeight);
        size_t before = 0;
        for (size_t cut = 0; cut < file.bytes.size(); ++cut) {
            const auto end = file.bytes.begin() + static_cast<std::ptrdiff_t>(cut);
            const DecodedLines part = DecodeFile({file.bytes.begin(), end});
            ASSERT_EQ(part.code == 0, part.lines.size() == kHeight) << "cut at " << cut;
            ASSERT_TRUE(std::equal(part.lines.begin(), part.lines.end(), whole.lines.begin()))
                << "cut at " << cut;
            // The more is there, the more comes.
            ASSERT_GE(part.lines.size(), before) << "cut at " << cut;
            before = part.lines.size();
            ASSERT_TRUE(cut >= file.firstStrip || part.lines.empty()) << "cut at " << cut;
        }
    }
}

TEST_P(DamagedFiles, EndInOrderWhateverBitsAreFlipped) {
    std::mt19937 random(GetParam().compression);
    for (int round = 0; round < 300; ++round) {
        Bytes bytes = Store(GetParam(), round % 2 != 0, 1).bytes;
        for (int flip = 0; flip < 1 + round % 5; ++flip) {
            bytes[random() % bytes.size()] ^= static_cast<uint8_t>(1U << random() % 8);
        }
        SetTiffSizeLimits(1U << 16, 1U << 12);
        const DecodedLines got = DecodeFile(bytes);
        SetTiffSizeLimits(1U << 20, 1U << 24);
        ASSERT_LE(got.lines.size(), 1U << 12);
    }
}

INSTANTIATE_TEST_SUITE_P(EveryCompression, DamagedFiles, testing::ValuesIn(kKinds));

}  // namespace
}  // namespace vellim::test
