// What is black in a bitmap is black in the file that it is saved in: judged by libtiff's tools,
// and for bare data by the decoders here as well.
#include "bridge/saved_pictures.h"
#include "support/engine_run.h"
#include "support/stored_tiff.h"

namespace vellim::test {
namespace {

constexpr size_t kWidth = 61, kHeight = 40;

bool HasTools() {
    return Shell("command -v tiffcp && command -v tiff2rgba && command -v fax2tiff")
               .find("failed") == std::string::npos;
}

// Of image `index`, as tiff2rgba shows it: lowest row first.
Colors ShownByLibtiff(const std::string& path, size_t index) {
    const std::string one = NewPath("one.tif"), rgba = NewPath("rgba.tif");
    Shell(Words({"tiffcp -c none", path + "," + std::to_string(index), one}));
    Shell(Words({"tiff2rgba -c none", one, rgba}));
    Bytes pixels;
    const std::vector<std::vector<Bytes>> images = StoredStrips(rgba);
    for (const Bytes& strip : images.at(0))
        pixels.insert(pixels.end(), strip.begin(), strip.end());
    Colors colors;
    for (size_t y = pixels.size() / 4 / kWidth; y-- > 0;)
        for (const uint8_t* p = &pixels[4 * kWidth * y]; p != pixels.data() + 4 * kWidth * (y + 1);
             p += 4)
            colors.push_back(p[0] | uint32_t{p[1]} << 8U | uint32_t{p[2]} << 16U);
    return colors;
}

// The last row of Group 3 data ends behind what its strip's byte count tells.
Colors WithoutLastRow(const Colors& colors) {
    return {colors.begin() + kWidth, colors.end()};
}

// fax2tiff takes the closing codes for lines.
Colors TopRows(const Colors& colors) {
    const size_t more = colors.size() - std::min<size_t>(colors.size(), kWidth * kHeight);
    return {colors.begin() + static_cast<ptrdiff_t>(more), colors.end()};
}

TEST(SavedSenses, LibtiffSeesTheSamePicture) {
    if (!HasTools()) GTEST_SKIP() << "libtiff's tools are missing";
    const std::string path = NewPath("sense.tif");
    size_t images = 0;
    for (const uint16_t bits : std::initializer_list<uint16_t>{1, 8}) {
        const BitmapHandle bitmap = MakeBitmap(kWidth, kHeight, bits).Release();
        PutOnClipboard(bitmap);
        const Colors colors = ColorsOfBitmap(bitmap), bilevel = Bilevel(colors);
        for (uint32_t id = TIFF_SAVE_NONE; id <= TIFF_SAVE_GROUP4; id++) {
            if (bits == 1 && id == TIFF_SAVE_LZW_DIFFERENCING) continue;  // libtiff has none
            for (const bool fromClipboard : {false, true}) {
                ASSERT_EQ(Save(fromClipboard, path, bitmap, id), 1);
                const Colors shown = ShownByLibtiff(path, images++);
                ASSERT_EQ(shown.size(), colors.size()) << id;
                EXPECT_TRUE(WithoutLastRow(shown) ==
                            WithoutLastRow(id < TIFF_SAVE_CCITT_1D ? colors : bilevel))
                    << bits << " bits, id " << id << ", " << fromClipboard;
            }
        }
    }
    PutOnClipboard(0);
}

struct BareCase {
    uint32_t mode;
    CompressionKey key;
    const char* fax2tiff;  // null: it doesn't read that
    uint16_t compression;
};
constexpr BareCase kBareCases[] = {{CCITT_FILE_GROUP3_1D, 3, "-3 -1", 3},
                                   {CCITT_FILE_1D, 2, nullptr, 2},
                                   {CCITT_FILE_GROUP3_2D, 0x10003, "-3 -2", 3},
                                   {CCITT_FILE_GROUP4, 4, "-4", 4},
                                   {CCITT_FILE_UNCOMPRESSED, 1, nullptr, 1}};

Colors DecodedHere(const std::string& path, CompressionKey key) {
    std::vector<Bytes> rows;
    const Answer keep = [&](uint8_t* line, uint32_t) {
        rows.emplace_back(line, line + (kWidth + 7) / 8);
        return 0U;
    };
    const StreamHandle stream = OpenFile(path.c_str(), nullptr, OF_READ);
    DecodeCcittImage(stream, kWidth, kHeight, key, reinterpret_cast<uintptr_t>(&keep), CallAnswer);
    mClose(stream);
    Colors colors;
    for (size_t y = rows.size(); y-- > 0;)
        for (uint32_t x = 0; x < kWidth; x++)
            colors.push_back((rows[y][x / 8] >> (7 - x % 8) & 1U) != 0 ? 0 : 0xFFFFFF);
    return colors;
}

TEST(SavedSenses, BareDataIsBlackWhereTheBitmapIs) {
    const bool hasTools = HasTools();
    for (const uint16_t bits : std::initializer_list<uint16_t>{1, 24}) {
        const OwnedObject bitmap = MakeBitmap(kWidth, kHeight, bits);
        const Colors expected = Bilevel(ColorsOfBitmap(bitmap.Get()));
        for (const BareCase& c : kBareCases) {
            const std::string path = NewPath("bare.fax"), wrapped = NewPath("wrapped.tif");
            ASSERT_EQ(SaveBitmapInCcittFile(path.c_str(), bitmap.Get(), c.mode), 1) << TiffError();
            EXPECT_TRUE(DecodedHere(path, c.key) == expected) << "mode " << c.mode;
            if (!hasTools) continue;
            if (c.fax2tiff != nullptr) {
                Shell(Words({"fax2tiff -M", c.fax2tiff, "-X", std::to_string(kWidth), "-o", wrapped,
                             path}));
            } else {
                FileOf(BuildTiff({SimpleImage(kWidth, kHeight, 1, 1, c.compression, 0, kHeight,
                                              {ReadFile(path)})}),
                       "wrapped.tif");
            }
            EXPECT_TRUE(TopRows(ShownByLibtiff(wrapped, 0)) == expected) << "mode " << c.mode;
        }
    }
}

}  // namespace
}  // namespace vellim::test
