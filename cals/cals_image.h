// The picture of a CALS file: what its DIB looks like, and its code.
#pragma once

#include "vellim/cals.h"
#include "vellim/decode.h"
#include "vellim/graphics.h"

namespace vellim {

// White first, as Group 4 has it.
struct CalsDescription {
    BITMAPINFOHEADER Header;
    RGBQUAD Colors[2];
};

CalsDescription DescribeCalsImage(const CalsInfo& info);

// Hands each line of the picture to `callback`. 1, or 0 with the decoder's code.
int32_t DecodeCalsImage(StreamHandle file, const CalsInfo& info, uintptr_t callbackData,
                        LineCallback callback);

}  // namespace vellim
