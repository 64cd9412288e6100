// The photometric interpretation of a saved image, and its ColorMap (TIFF 6.0, section 5): all
// reds, all greens, all blues, each byte in the high half of a 16-bit value.
#pragma once

#include <cstdint>

#include "vellim/base.h"

namespace vellim {

// Photometric, and for a palette the DIB's colours. `blockBytes` is the room from the header to its
// block's end. False, with the code set, when they can't be defined.
bool DefineColorMapFromDib(TiffFileHandle file, int32_t image, uint32_t photometric,
                           const BITMAPINFOHEADER* header, uint32_t blockBytes);

// Photometric, and for a palette the display's first colours, as many as the thread's choices tell;
// two are white and black in the order of the bits. A map that can't be had is left out. False when
// Photometric can't be defined.
bool DefineColorMapFromSystem(TiffFileHandle file, int32_t image);

}  // namespace vellim
