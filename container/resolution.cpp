// TIFF 6.0, section 8: XResolution, YResolution, ResolutionUnit.

#include "container/resolution.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "container/failure.h"
#include "container/tag_buffer.h"
#include "vellim/platform.h"
#include "vellim/queries.h"
#include "vellim/streams.h"
#include "vellim/tags.h"

namespace vellim {
namespace {

constexpr double kInchesPerMetre = 39.37;
constexpr double kCentimetresPerMetre = 100;
constexpr double kCentimetresPerInch = 2.54;

double DisplayDots(int32_t capability) {
    const DeviceContextHandle display = GetDC(0);
    const int32_t dots = GetDeviceCaps(display, capability);
    ReleaseDC(0, display);
    return dots;
}

// A tag that holds no number counts as missing.
double ReadDots(TiffFileHandle file, int32_t image, uint32_t tag, int32_t capability) {
    const std::optional<TagElement> element = FirstTagElement(file, image, tag);
    if (!element) return DisplayDots(capability);
    return static_cast<double>(element->Number) / std::max(element->Denominator, 1U);
}

// What pels a metre can't hold becomes the most that they can.
int32_t RoundedPels(double pels) {
    return static_cast<int32_t>(std::min<double>(pels + 0.5, std::numeric_limits<int32_t>::max()));
}

// Half of a DPI value: the low 16 bits.
uint16_t RoundedDots(double dots) {
    return static_cast<uint16_t>(static_cast<uint64_t>(std::trunc(dots + 0.5)));
}

}  // namespace

Resolution ReadResolution(TiffFileHandle file, int32_t image) {
    Resolution resolution = {};
    resolution.Unit = TagNumber(file, image, TIFF_TAG_RESOLUTION_UNIT, kUnitInch);
    resolution.Across = ReadDots(file, image, TIFF_TAG_X_RESOLUTION, LOGPIXELSX);
    resolution.Down = ReadDots(file, image, TIFF_TAG_Y_RESOLUTION, LOGPIXELSY);
    return resolution;
}

int32_t PelsPerMetre(double dots, uint32_t unit) {
    switch (unit) {
        case kUnitNone:
        case kUnitInch:
            return RoundedPels(dots * kInchesPerMetre);
        case kUnitCentimetre:
            return RoundedPels(dots * kCentimetresPerMetre);
        default:
            return 0;
    }
}

uint16_t DotsPerInch(double dots, uint32_t unit) {
    switch (unit) {
        case kUnitNone:
        case kUnitInch:
            return RoundedDots(dots);
        case kUnitCentimetre:
            return RoundedDots(dots * kCentimetresPerInch);
        default:
            return 0;
    }
}

}  // namespace vellim

using namespace vellim;

int32_t GetTiffImageDPI(TiffFileHandle file, int32_t image, uint32_t* dpi) {
    if (dpi == nullptr) return Fail(TIFF_TAG_MISSING, int32_t{TIFF_TAG_MISSING});
    const Resolution resolution = ReadResolution(file, image);
    *dpi = DotsPerInch(resolution.Across, resolution.Unit) |
           uint32_t{DotsPerInch(resolution.Down, resolution.Unit)} << 16;
    return 0;
}

int32_t SetTiffImageDPI(TiffFileHandle file, int32_t image, uint32_t dpi) {
    const uint32_t across[2] = {dpi & 0xFFFF, 1};
    const uint32_t down[2] = {dpi >> 16, 1};
    if (DefineTiffImageInfoBuffer(file, image, TIFF_TAG_X_RESOLUTION, across, TIFF_TYPE_RATIONAL,
                                  1) == 0 ||
        DefineTiffImageInfoBuffer(file, image, TIFF_TAG_Y_RESOLUTION, down, TIFF_TYPE_RATIONAL,
                                  1) == 0)
        return Fail(TIFF_TAG_MISSING, int32_t{TIFF_TAG_MISSING});
    return 0;
}
