// The tags of a JPEG image (TIFF 6.0 sections 15, 21 and 22).
#pragma once

#include <cstdint>

#include "vellim/codec.h"
#include "vellim/files.h"

namespace vellim {

// Fills the tile and JPEG fields of a run whose Dimensions are known. 0, or: 10 for a tag that is
// missing, 11 for a process that isn't known, 12 for more tiles across or down than 16 bits count,
// 1 without memory.
uint32_t ReadJpegTags(TiffFileHandle file, int32_t image, CodecState& state);

}  // namespace vellim
