// A TIFF file of any bytes: decoding its images, whole and from the second strip on.
#include <algorithm>
#include <array>
#include <cstdint>

#include "fuzz/checks.h"
#include "fuzz/lines.h"
#include "support/tiff_builder.h"
#include "vellim/vellim.h"

namespace vellim::fuzz {

namespace {

constexpr int32_t kMaxImages = 4;
constexpr uint32_t kMaxLinePixels = 65536;
constexpr uint32_t kMaxPictureLines = 65536;
constexpr uint32_t kPartLines = 3;
constexpr int32_t kLzw = 5;
constexpr int32_t kJpeg = 6;

Outcome DecodePart(TiffFileHandle file, int32_t image, uint32_t firstStrip, uint32_t lineCount,
                   const Expected& expected, Hands hands) {
    return Run(expected, hands, [&](uintptr_t callbackData, LineCallback callback) {
        return DecodeTiffImage(file, image, firstStrip, lineCount, callbackData, callback);
    });
}

void DecodeImage(TiffFileHandle file, int32_t image) {
    TiffDimensions dimensions{};
    Expected whole = {0, 0, -1};
    std::array<int32_t, 2> compression{};
    GetTiffImageInfo(file, image, TIFF_TAG_COMPRESSION, compression.data());
    // With JPEG the module is in charge of lines and strips.
    const bool known = GetTiffDimensions(file, image, &dimensions) == 0 && dimensions.biWidth > 0 &&
                       dimensions.biHeight > 0 && compression[0] != kJpeg;
    if (known) {
        const int64_t bits = int64_t{dimensions.biWidth} * dimensions.biBitCount;
        whole = {static_cast<uint32_t>((bits + 7) / 8), 0, dimensions.biHeight};
    }
    const Outcome plain = DecodePart(file, image, 0, 0, whole, Hands::Off);
    const Hands hands = compression[0] == kLzw ? Hands::Off : Hands::Scribbling;
    const Outcome again = DecodePart(file, image, 0, 0, whole, hands);
    Require(plain == again, "two runs are alike");
    if (!known) return;

    const uint32_t rows = GetTiffRowsPerStrip(file, image);
    const int64_t left = std::max<int64_t>(int64_t{dimensions.biHeight} - rows, 0);
    const Expected part = {whole.rowBytes, rows, std::min<int64_t>(kPartLines, left)};
    DecodePart(file, image, 1, kPartLines, part, Hands::Off);
}

}  // namespace

}  // namespace vellim::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace vellim::fuzz;
    SetTiffSizeLimits(kMaxLinePixels, kMaxPictureLines);
    const BlockBalance balance;
    const vellim::OwnedBlock block(vellim::test::BlockOf({data, data + size}));
    const TiffFileHandle file = OpenTiffInMemory(block.Get(), static_cast<int32_t>(size), T_READ);
    const int32_t count = std::min(NumberOfTiffImages(file, TIFF_ALL_IMAGES), kMaxImages);
    for (int32_t image = 0; image < count; ++image)
        if (GetTiffImage(file, image) == 1) DecodeImage(file, image);
    CloseTiffFile(file);
    return 0;
}
