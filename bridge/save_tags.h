// The tags that a saved image gets beside those of its size.
#pragma once

#include <cstdint>

#include "vellim/base.h"

namespace vellim {

// Whether `compression` is one of TiffSaveCompression, and whether it codes one bit a pixel alone.
bool IsSaveCompression(uint32_t compression);
bool IsCcittCompression(uint32_t compression);

// Compression, Software, DateTime, ImageDescription, Artist, the resolution (of `header`, and the
// display's where that is null or has none), and what the compression asks for beside. False when
// one can't be defined, with the code that this left.
bool DefineSaveTags(TiffFileHandle file, int32_t image, uint32_t compression,
                    const BITMAPINFOHEADER* header);

// Photometric, and for a palette the DIB's colours as ColorMap (TIFF 6.0, section 5), each byte in
// the high half of a 16-bit value. `blockBytes` is the room from the header to its block's end.
bool DefineColorMapFromDib(TiffFileHandle file, int32_t image, uint32_t photometric,
                           const BITMAPINFOHEADER* header, uint32_t blockBytes);

}  // namespace vellim
