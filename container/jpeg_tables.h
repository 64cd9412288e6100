// The tables of a JPEG image, which stand in the file by themselves (TIFF 6.0, section 22).
#pragma once

#include <cstdint>

#include "container/stream_window.h"

namespace vellim {

// Bytes of the table at `offset` that tag `tag` (519, 520 or 521) points to. A quantisation table
// has 64; a Huffman table has 16 counts of codes and as many bytes more as these add up to. Of one
// whose counts can't be read, the counts are all there is.
uint32_t JpegTableBytes(StreamWindow& window, uint32_t tag, uint32_t offset);

}  // namespace vellim
