// From one type of pixel to another.
#pragma once

#include "picture.h"

namespace vellim::tool {

// The luminance of a colour by ITU-R BT.601, 0 to 255.
constexpr uint8_t Luma(uint32_t red, uint32_t green, uint32_t blue) {
    return static_cast<uint8_t>((299 * red + 587 * green + 114 * blue + 500) / 1000);
}

// Whether pixels of type `from` can be made pixels of type `to` by ConvertPixels.
constexpr bool CanConvert(PixelType from, PixelType to) {
    return from == to || to == kBilevel || to == kGrey8 || to == kRgb;
}

// A stage that makes pixels of `picture` into pixels of type `to` and gives them to `next`. Colour
// becomes grey by Luma, grey becomes one bit at half of full white. With nothing to do it is `next`
// itself.
LineSink ConvertPixels(const Picture& picture, PixelType to, LineSink next);

// Makes a stored line a line of `type`, in place: `invert` turns a line in which white is zero.
// The bits behind the last pixel become 0.
void NormaliseLine(uint8_t* line, uint32_t width, PixelType type, bool invert);

// A line of paper: white, or the colour nearest to it.
std::vector<uint8_t> WhiteLine(const Picture& picture);

}  // namespace vellim::tool
