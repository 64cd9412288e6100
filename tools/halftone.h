// Grey made black and white.
#pragma once

#include "picture.h"

namespace vellim::tool {

enum class Halftone {
    FloydSteinberg,  // shades become dots
    Threshold        // lighter than half of white is white
};

// A stage that makes pixels of `picture` into pixels of type `to`, as ConvertPixels does, but where
// shades become one bit goes by `halftone`.
LineSink ConvertShades(const Picture& picture, PixelType to, Halftone halftone, LineSink next);

}  // namespace vellim::tool
