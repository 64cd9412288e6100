// DIBs made of device bitmaps, and device bitmaps made of DIBs.
#pragma once

#include "vellim/graphics.h"

namespace vellim {

// The bitmap's pixels at the image depth (1, 4, 8, 24) that its own goes up to, in a block that the
// caller frees. The colour table is that of `palette`, or without one the display's, or where
// that has none the default; a one-bit bitmap without a palette gets black and white. 0 for
// anything that isn't a bitmap, and without memory.
DibHandle BitmapToDib(BitmapHandle bitmap, PaletteHandle palette);

// A bitmap with the DIB's pixels, which the caller deletes: of one bit for a DIB of one bit, else
// of the display's format. 0 for a block that isn't a whole DIB of a 40-byte header, and without
// memory.
BitmapHandle DibToBitmap(DibHandle dib);

}  // namespace vellim
