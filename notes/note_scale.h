// How large an image is shown, as far as notes are placed by it.
#pragma once

#include "vellim/graphics.h"
#include "vellim/screen.h"

namespace vellim {

struct NoteScale {
    double x = 1;
    double y = 1;
};

enum class Density : uint8_t { kIgnored, kUsed };

// Pixels of the device for one of the image: by the densities of both, where the image has one, and
// times the ratios above 0. `zoom` may be null.
NoteScale GetNoteScale(DeviceContextHandle context, const BITMAPINFOHEADER& header,
                       const ZoomRatios* zoom, Density density);

}  // namespace vellim
