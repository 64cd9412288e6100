// The colours of surfaces, and the search for the nearest one.
//
// Nearest is the least sum of squares of the differences in red, green and blue. Each distance goes
// with its index into one number, so that the least of all is found without a branch; the loop over
// 16-bit columns is one that compilers make vectors of.
#include "platform/graphics/pixel_format.h"

#include <algorithm>
#include <limits>

#include "platform/graphics/display.h"

namespace vellim {
namespace {

constexpr ColorRef kWhite = 0x00FFFFFF;

constexpr uint32_t RedOf(ColorRef color) {
    return color & 0xFFU;
}
constexpr uint32_t GreenOf(ColorRef color) {
    return color >> 8U & 0xFFU;
}
constexpr uint32_t BlueOf(ColorRef color) {
    return color >> 16U & 0xFFU;
}

template <size_t N>
void SetColors(PixelFormat& format, const std::array<PALETTEENTRY, N>& entries) {
    format.colorCount = N;
    std::ranges::transform(entries, format.colors.begin(), ColorOf);
}

}  // namespace

PixelFormat SurfaceFormat(uint32_t bits) {
    PixelFormat format;
    format.bits = bits;
    if (bits == 8) SetColors(format, DisplayPalette());
    if (bits == 4) SetColors(format, kSystemColors);
    if (bits == 1) {
        format.colorCount = 2;
        format.colors[1] = kWhite;
    }
    return format;
}

ColorRef ColorOfPixel(uint32_t bits, uint32_t pixel) {
    return bits == 24 ? SwapRedAndBlue(pixel) : SurfaceFormat(bits).colors[pixel & 0xFFU];
}

uint32_t NearestPixel(uint32_t bits, ColorRef color) {
    constexpr uint32_t halfway = 3 * 255 / 2;
    if (bits == 24) return SwapRedAndBlue(color);
    if (bits == 1) return RedOf(color) + GreenOf(color) + BlueOf(color) > halfway ? 1 : 0;
    return NearestIndex(SurfaceFormat(bits), color);
}

uint32_t NearestIndex(const PixelFormat& format, ColorRef color) {
    return ColorSearch::For(format).Nearest(color & kWhite);
}

ColorSearch& ColorSearch::For(const PixelFormat& format) {
    thread_local constinit ColorSearch search;
    if (search.count_ != format.colorCount || search.colors_ != format.colors)
        search.Prepare(format);
    return search;
}

// Slots that hold nothing yet hold what is true of black.
void ColorSearch::Prepare(const PixelFormat& format) {
    count_ = format.colorCount;
    colors_ = format.colors;
    for (size_t i = 0; i < colors_.size(); i++) {
        red_[i] = static_cast<int16_t>(RedOf(colors_[i]));
        green_[i] = static_cast<int16_t>(GreenOf(colors_[i]));
        blue_[i] = static_cast<int16_t>(BlueOf(colors_[i]));
    }
    known_.fill(Find(0));
}

uint32_t ColorSearch::Find(ColorRef color) const {
    const auto red = static_cast<int16_t>(RedOf(color));
    const auto green = static_cast<int16_t>(GreenOf(color));
    const auto blue = static_cast<int16_t>(BlueOf(color));
    int32_t best = std::numeric_limits<int32_t>::max();
    for (uint32_t i = 0; i < count_; i++) {
        const auto byRed = static_cast<int16_t>(red_[i] - red);
        const auto byGreen = static_cast<int16_t>(green_[i] - green);
        const auto byBlue = static_cast<int16_t>(blue_[i] - blue);
        const int32_t distance = byRed * byRed + byGreen * byGreen + byBlue * byBlue;
        best = std::min(best, distance * (1 << kIndexBits) + static_cast<int32_t>(i));
    }
    return static_cast<uint32_t>(best) & kIndexMask;
}

}  // namespace vellim
