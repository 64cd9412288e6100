// An image's dimensions and strips, from its tags. GetTiffDimensions is the gate for all that
// decodes: it decides which colour formats the library handles.

#include "vellim/queries.h"

#include <algorithm>
#include <optional>

#include "container/failure.h"
#include "container/resolution.h"
#include "container/tag_buffer.h"
#include "vellim/tags.h"

namespace vellim {
namespace {

constexpr uint32_t kHeightOfUnknown = 1000;  // stands for an ImageLength of 0
constexpr uint32_t kContiguousPlanes = 1;

int32_t FailWith(TiffFailure code) {
    return Fail(code, int32_t{code});
}

bool IsHandledDepth(uint16_t bits) {
    return bits == 1 || bits == 4 || bits == 8 || bits == 24;
}

std::optional<uint32_t> ReadNumber(TiffFileHandle file, int32_t image, uint32_t tag) {
    const std::optional<TagElement> element = FirstTagElement(file, image, tag);
    if (!element) return std::nullopt;
    return element->Number;
}

std::optional<uint32_t> ReadHeight(TiffFileHandle file, int32_t image) {
    const std::optional<uint32_t> height = ReadNumber(file, image, TIFF_TAG_IMAGE_LENGTH);
    return height == 0U ? kHeightOfUnknown : height;
}

// Bits of a pixel, in 16 bits as the header has them.
uint16_t ReadDepth(TiffFileHandle file, int32_t image) {
    const auto bits = static_cast<uint16_t>(TagNumber(file, image, TIFF_TAG_BITS_PER_SAMPLE, 1));
    const auto samples =
        static_cast<uint16_t>(TagNumber(file, image, TIFF_TAG_SAMPLES_PER_PIXEL, 1));
    return static_cast<uint16_t>(uint32_t{bits} * samples);
}

}  // namespace
}  // namespace vellim

using namespace vellim;

int32_t GetTiffDimensions(TiffFileHandle file, int32_t image, TiffDimensions* dimensions) {
    if (dimensions == nullptr) return FailWith(TIFF_TAG_MISSING);
    *dimensions = {};
    dimensions->biSize = sizeof(TiffDimensions);
    dimensions->biPlanes = 1;

    const std::optional<uint32_t> width = ReadNumber(file, image, TIFF_TAG_IMAGE_WIDTH);
    if (!width) return FailWith(TIFF_TAG_MISSING);
    dimensions->biWidth = static_cast<int32_t>(*width);
    const std::optional<uint32_t> height = ReadHeight(file, image);
    if (!height) return FailWith(TIFF_TAG_MISSING);
    dimensions->biHeight = static_cast<int32_t>(*height);

    if (TagNumber(file, image, TIFF_TAG_PLANAR_CONFIGURATION, kContiguousPlanes) !=
        kContiguousPlanes)
        return FailWith(TIFF_BAD_COLOR_FORMAT);
    dimensions->biBitCount = ReadDepth(file, image);
    if (!IsHandledDepth(dimensions->biBitCount)) return FailWith(TIFF_BAD_COLOR_FORMAT);
    dimensions->biClrUsed = dimensions->biBitCount == 24 ? 0 : 1U << dimensions->biBitCount;
    dimensions->biClrImportant = dimensions->biClrUsed;

    const Resolution resolution = ReadResolution(file, image);
    dimensions->biXPelsPerMeter = PelsPerMetre(resolution.Across, resolution.Unit);
    dimensions->biYPelsPerMeter = PelsPerMetre(resolution.Down, resolution.Unit);
    return 0;
}

// The height is that of GetTiffDimensions, so that an image with ImageLength has lines in a strip.
uint32_t GetTiffRowsPerStrip(TiffFileHandle file, int32_t image) {
    const std::optional<uint32_t> height = ReadHeight(file, image);
    if (!height) return 0;
    const uint32_t rows = TagNumber(file, image, TIFF_TAG_ROWS_PER_STRIP, *height);
    return rows == 0 ? *height : std::min(rows, *height);
}

uint32_t GetTiffStripCount(TiffFileHandle file, int32_t image) {
    uint32_t strips = 0;
    GetTiffImageInfoBuffer(file, image, TIFF_TAG_STRIP_OFFSETS, nullptr, nullptr, &strips);
    return strips;
}
