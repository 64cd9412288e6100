// Any lines through any encoder and back: the picture that was stored is the one that is read. Data
// that a callback has cut short is written all the same, and must do no harm.
//
// Input: a byte for the compression, a byte of settings (bits 0 and 1: depth; bit 2: FillOrder 2;
// bit 3: one strip), width (two bytes), height, rows a strip (0: the usual), K, the line at which
// the callback stops (beyond the height: none; odd: as a failure), a byte each; and pixels, which
// are repeated as often as it takes.
#include <algorithm>
#include <array>
#include <cstring>

#include "fuzz/checks.h"
#include "fuzz/input.h"
#include "vellim/vellim.h"

namespace vellim::fuzz {
namespace {

struct Coding {
    uint32_t compression, t4Options, predictor;

    [[nodiscard]] bool IsBilevel() const { return compression >= 2 && compression <= 4; }
    [[nodiscard]] bool IsOneStrip() const { return compression == 3; }
};
constexpr Coding kCodings[] = {{1, 0, 1}, {32773, 0, 1}, {5, 0, 1}, {5, 0, 2}, {2, 0, 1},
                               {3, 0, 1}, {3, 4, 1},     {3, 1, 1}, {3, 5, 1}, {4, 0, 1}};
constexpr uint32_t kMaxWidth = 4096;
constexpr uint32_t kCallbackFailure = 33;

struct Picture {
    Coding coding;
    uint16_t bits;
    uint16_t fillOrder;
    uint32_t width, height, rowsPerStrip, stopAt;
    int32_t k;
    std::vector<uint8_t> pixels;

    [[nodiscard]] uint32_t RowBytes() const { return (width * bits + 7) / 8; }
    void CopyLine(uint32_t number, uint8_t* line) const {
        for (size_t i = 0; i < RowBytes(); ++i)
            line[i] = pixels[(size_t{number} * RowBytes() + i) % pixels.size()];
    }
};

Picture ReadPicture(Input& input) {
    constexpr std::array<uint16_t, 4> kDepths = {1, 4, 8, 24};
    Picture picture{};
    picture.coding = kCodings[input.Byte() % std::size(kCodings)];
    const uint8_t settings = input.Byte();
    picture.bits = picture.coding.IsBilevel() ? uint16_t{1} : kDepths[settings & 3U];
    picture.fillOrder = (settings & 4U) != 0 ? TIFF_FILL_LSB_FIRST : TIFF_FILL_MSB_FIRST;
    picture.width = 1 + input.Word() % kMaxWidth;
    picture.height = 1 + input.Byte();
    picture.rowsPerStrip = input.Byte();
    if (picture.coding.IsOneStrip() || (settings & 8U) != 0) picture.rowsPerStrip = picture.height;
    picture.k = std::max<int32_t>(2, input.Byte());
    picture.stopAt = input.Byte();
    picture.pixels = input.Rest();
    picture.pixels.push_back(0);
    return picture;
}

uint32_t GiveLine(uint8_t* line, uint32_t number, uintptr_t callbackData) {
    const auto& picture = *reinterpret_cast<const Picture*>(callbackData);
    Require(number < picture.height, "no line is asked for behind the last");
    picture.CopyLine(number, line);
    if (number != picture.stopAt) return TIFF_LINE_GO_ON;
    return number % 2 == 0 ? uint32_t{TIFF_LINE_STOP} : kCallbackFailure;
}

struct Reader {
    const Picture& picture;
    std::vector<uint8_t> expected;
    uint32_t lines = 0;
};

uint32_t CompareLine(uint8_t* line, uint32_t number, uintptr_t callbackData) {
    auto& reader = *reinterpret_cast<Reader*>(callbackData);
    const uint32_t bits = reader.picture.width * reader.picture.bits;
    reader.picture.CopyLine(number, reader.expected.data());
    const auto unused = (8 - bits % 8) % 8;
    const auto last = reader.expected.size() - 1;
    const bool isSame = std::memcmp(line, reader.expected.data(), last) == 0 &&
                        (line[last] ^ reader.expected[last]) >> unused == 0;
    Require(isSame, "a line is read as it was given");
    ++reader.lines;
    return TIFF_LINE_GO_ON;
}

uint32_t IgnoreLine(uint8_t* /*line*/, uint32_t /*number*/, uintptr_t /*callbackData*/) {
    return TIFF_LINE_GO_ON;
}

TiffFileHandle DefineImage(const Picture& picture) {
    const TiffFileHandle file = OpenTiffInMemory(0, 0, T_CREAT);
    Require(DefineTiffImage(file) == 0, "a new file takes an image");
    const auto define = [&](uint32_t tag, uint32_t value) {
        Require(DefineTiffImageInfo(file, 0, tag, TIFF_TYPE_SHORT, value) == 1, "a tag is taken");
    };
    define(TIFF_TAG_COMPRESSION, picture.coding.compression);
    define(TIFF_TAG_T4_OPTIONS, picture.coding.t4Options);
    define(TIFF_TAG_PREDICTOR, picture.coding.predictor);
    define(TIFF_TAG_FILL_ORDER, picture.fillOrder);
    const BITMAP bitmap{0,
                        static_cast<int32_t>(picture.width),
                        static_cast<int32_t>(picture.height),
                        0,
                        1,
                        picture.bits,
                        nullptr};
    Require(DefineGeneralTags(file, 0, bitmap) == 0, "the size is taken");
    if (picture.rowsPerStrip != 0) define(TIFF_TAG_ROWS_PER_STRIP, picture.rowsPerStrip);
    return file;
}

// Encodes, and gives the file. A callback that stops decides what comes of it.
OwnedBlock Encode(const Picture& picture) {
    const TiffFileHandle file = DefineImage(picture);
    const int32_t result =
        EncodeTiffImage(file, 0, reinterpret_cast<uintptr_t>(&picture), GiveLine);
    const bool fails = picture.stopAt < picture.height && picture.stopAt % 2 == 1;
    Require(result == (fails ? 0 : 1), "the callback alone can fail");
    Require(TiffError() == static_cast<int32_t>(fails ? kCallbackFailure : 0), "the code is told");
    OwnedBlock block(GetMemoryTiffHandle(file));
    CloseTiffFile(file);
    return block;
}

void Decode(const Picture& picture, GlobalHandle block) {
    const TiffFileHandle file =
        OpenTiffInMemory(block, static_cast<int32_t>(GlobalSize(block)), T_READ);
    const bool isWhole = picture.stopAt >= picture.height;
    Require(file != 0 && GetTiffImage(file, 0) == 1, "the image is there");
    Reader reader{picture, std::vector<uint8_t>(picture.RowBytes())};
    const int32_t result = DecodeTiffImage(file, 0, 0, 0, reinterpret_cast<uintptr_t>(&reader),
                                           isWhole ? CompareLine : IgnoreLine);
    if (isWhole) Require(result == 1 && reader.lines == picture.height, "every line is read");
    CloseTiffFile(file);
}

}  // namespace
}  // namespace vellim::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace vellim::fuzz;
    const BlockBalance balance;
    Input input(data, size);
    const Picture picture = ReadPicture(input);
    SetKfactor(picture.k);
    const vellim::OwnedBlock block = Encode(picture);
    const bool isStored = picture.stopAt >= picture.height || picture.stopAt % 2 == 0;
    if (isStored) Decode(picture, block.Get());
    return 0;
}
