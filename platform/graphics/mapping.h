// From the units of a device context to pixels and back.
#pragma once

#include "platform/graphics/device_contexts.h"

namespace vellim {

// Rounded to the nearest, a half upwards; what no 32 bits hold becomes the nearest number that they
// do.
POINT PixelOf(const Mapping& mapping, POINT units);
POINT UnitsOf(const Mapping& mapping, POINT pixel);

// The edges of a rectangle, each mapped for itself, so that rectangles that meet in units meet in
// pixels. Left stands beyond right where the size is negative or the mapping turns the axis.
RECT EdgesInPixels(const Mapping& mapping, POINT corner, int32_t width, int32_t height);

// The same rectangle with left and top before right and bottom.
RECT InOrder(const RECT& edges);

}  // namespace vellim
