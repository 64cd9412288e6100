// The tags that a saved image gets beside those of its size and its colours.
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

}  // namespace vellim
