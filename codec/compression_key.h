// How an image is compressed, read from its tags.
#pragma once

#include <cstdint>

#include "vellim/codec.h"
#include "vellim/files.h"

namespace vellim {

// Fills Key, FillOrder and ByteOrder of a run from the image's tags. 0, or 15 for a FillOrder that
// isn't one. A key that no engine serves is not refused here.
uint32_t ReadCompressionKey(TiffFileHandle file, int32_t image, CodecState& state);

}  // namespace vellim
