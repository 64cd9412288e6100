// Horizontal differencing (TIFF 6.0 section 14): each pixel but the first is stored as what must be
// added to the pixel on its left.
#pragma once

#include "vellim/codec.h"

namespace vellim {

// Turns the differences in LineBuffer into pixels, in place: 4 and 8 bits a pixel, and 24 bits
// channel by channel. Lines of any other depth are left as they are.
void UndoDifferencing(CodecState& state);

// The other way, for the same depths: pixels become differences.
void ApplyDifferencing(CodecState& state);

}  // namespace vellim
