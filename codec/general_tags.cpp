// The tags that go with a picture's size, defined before it is encoded (TIFF 6.0, sections 3 to 8,
// and 22 for JPEG).

#include <algorithm>
#include <array>
#include <cstdint>

#include "codec/strip_limits.h"
#include "codec/tag_value.h"
#include "vellim/encode.h"
#include "vellim/failures.h"
#include "vellim/streams.h"

namespace vellim {
namespace {

constexpr uint32_t kPreferredStripBytes = 8192;
constexpr uint32_t kLongestSide = UINT16_MAX;  // what a SHORT holds

enum Compression : uint32_t { kCcitt1D = 2, kGroup3 = 3, kGroup4 = 4, kJpeg = 6 };
constexpr uint32_t kNoCompressionTag = 0;

struct Size {
    uint32_t width, height, bits;
};

bool Define(TiffFileHandle file, int32_t image, uint32_t tag, uint32_t number) {
    return DefineTiffImageInfo(file, image, tag, TIFF_TYPE_SHORT, number) != 0;
}

template <typename Element, size_t kCount>
bool DefineAll(TiffFileHandle file, int32_t image, uint32_t tag, uint32_t type,
               const std::array<Element, kCount>& values, uint32_t count) {
    return DefineTiffImageInfoBuffer(file, image, tag, values.data(), type, count) != 0;
}

// About 8,192 bytes a strip, but never more strips than a strip table may have.
uint32_t RowsPerStrip(const Size& size, uint32_t compression) {
    if (compression == kCcitt1D || compression == kGroup3 || compression == kGroup4)
        return size.height;
    const uint32_t rowBytes = (size.width * size.bits + 7) / 8;
    const uint32_t fewest = std::max(1U, (size.height + kMostStrips - 1) / kMostStrips);
    return std::min(std::max(kPreferredStripBytes / rowBytes, fewest), size.height);
}

bool DefineStripTags(TiffFileHandle file, int32_t image, const Size& size, uint32_t compression) {
    return Define(file, image, TIFF_TAG_IMAGE_WIDTH, size.width) &&
           Define(file, image, TIFF_TAG_IMAGE_LENGTH, size.height) &&
           Define(file, image, TIFF_TAG_BITS_PER_SAMPLE, size.bits) &&
           Define(file, image, TIFF_TAG_ROWS_PER_STRIP, RowsPerStrip(size, compression));
}

// One tile of the whole image, by the baseline process and without restart markers; colours as
// YCbCr with the chroma halved both ways.
bool DefineJpegTags(TiffFileHandle file, int32_t image, const Size& size) {
    constexpr uint32_t kColourBits = 24;
    constexpr uint16_t kSampleBits = 8;
    constexpr uint32_t kBaseline = 1;
    constexpr std::array<uint16_t, 3> bits = {kSampleBits, kSampleBits, kSampleBits};
    constexpr std::array<uint16_t, 2> subsampling = {2, 2};
    constexpr std::array<uint32_t, 6> blackAndWhite = {0, 255, 128, 255, 128, 255};

    const bool colour = size.bits == kColourBits;
    const uint32_t samples = colour ? 3 : 1;
    const bool defined =
        Define(file, image, TIFF_TAG_IMAGE_WIDTH, size.width) &&
        Define(file, image, TIFF_TAG_IMAGE_LENGTH, size.height) &&
        DefineAll(file, image, TIFF_TAG_BITS_PER_SAMPLE, TIFF_TYPE_SHORT, bits, samples) &&
        Define(file, image, TIFF_TAG_SAMPLES_PER_PIXEL, samples) &&
        Define(file, image, TIFF_TAG_PLANAR_CONFIGURATION, 1) &&
        Define(file, image, TIFF_TAG_TILE_WIDTH, size.width) &&
        Define(file, image, TIFF_TAG_TILE_LENGTH, size.height) &&
        Define(file, image, TIFF_TAG_JPEG_PROC, kBaseline) &&
        Define(file, image, TIFF_TAG_JPEG_RESTART_INTERVAL, 0);
    if (!defined || !colour) return defined;
    return DefineAll(file, image, TIFF_TAG_YCBCR_SUBSAMPLING, TIFF_TYPE_SHORT, subsampling, 2) &&
           DefineAll(file, image, TIFF_TAG_REFERENCE_BLACK_WHITE, TIFF_TYPE_RATIONAL, blackAndWhite,
                     3);
}

bool IsServedDepth(uint32_t bits) {
    constexpr std::array<uint32_t, 5> served = {1, 4, 8, 16, 24};
    return std::find(served.begin(), served.end(), bits) != served.end();
}

}  // namespace
}  // namespace vellim

// A height of 0 stands for one that isn't known, as in a stored image.
int32_t DefineGeneralTags(TiffFileHandle file, int32_t image, BITMAP bitmap) {
    using namespace vellim;
    if (bitmap.bmWidth < 1) return TIFF_TAG_MISSING;
    const uint32_t bits = uint32_t{bitmap.bmPlanes} * bitmap.bmBitsPixel;
    if (!IsServedDepth(bits)) return TIFF_BAD_COLOR_FORMAT;
    const Size size{static_cast<uint32_t>(bitmap.bmWidth), static_cast<uint32_t>(bitmap.bmHeight),
                    bits};
    if (size.width > kLongestSide || size.height > kLongestSide) return TIFF_NO_MEMORY;
    const uint32_t compression = TagValue(file, image, TIFF_TAG_COMPRESSION, kNoCompressionTag);
    const bool defined = compression == kJpeg ? DefineJpegTags(file, image, size)
                                              : DefineStripTags(file, image, size, compression);
    return defined ? TIFF_SUCCESS : TIFF_NO_MEMORY;
}
