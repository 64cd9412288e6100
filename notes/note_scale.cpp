#include "notes/note_scale.h"

#include "vellim/platform.h"

namespace vellim {
namespace {

constexpr double kMetresPerInch = 0.025400050800101603;  // 1 / 39.37

// A density up to here, about one dot an inch, is no density: writers store ratios in its place.
constexpr int32_t kMostWithoutDensity = 40;

double RealSize(int32_t deviceDpi, int32_t pixelsPerMetre) {
    if (pixelsPerMetre <= kMostWithoutDensity) return 1;
    return deviceDpi / (pixelsPerMetre * kMetresPerInch);
}

double Zoomed(double scale, int32_t numerator, int32_t denominator) {
    if (numerator <= 0 || denominator <= 0) return scale;
    return static_cast<double>(numerator) / denominator * scale;
}

}  // namespace

NoteScale GetNoteScale(DeviceContextHandle context, const BITMAPINFOHEADER& header,
                       const ZoomRatios* zoom, Density density) {
    NoteScale scale;
    if (density == Density::kUsed) {
        scale.x = RealSize(GetDeviceCaps(context, LOGPIXELSX), header.biXPelsPerMeter);
        scale.y = RealSize(GetDeviceCaps(context, LOGPIXELSY), header.biYPelsPerMeter);
    }
    if (zoom != nullptr) {
        scale.x = Zoomed(scale.x, zoom->XNumerator, zoom->XDenominator);
        scale.y = Zoomed(scale.y, zoom->YNumerator, zoom->YDenominator);
    }
    return scale;
}

}  // namespace vellim
