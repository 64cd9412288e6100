// The strips of an image that is being written: how many there will be, and the tags that say where
// they are.
#pragma once

#include <cstdint>

#include "codec/strip_limits.h"
#include "vellim/codec.h"
#include "vellim/files.h"

namespace vellim {

// Fills RowsPerStrip, or the tile fields when the image has a TileWidth, and StripCount; the
// picture's size must be there. 0, or 9 for more tiles across or down than 16 bits count.
uint32_t ReadEncodeLayout(TiffFileHandle file, int32_t image, CodecState& state);

// Takes the two tables of StripCount 32-bit entries, all 0. 0, or 1 without memory.
uint32_t AllocateStripTables(CodecState& state);

// Defines RowsPerStrip if it isn't there, and the tables as StripOffsets and StripByteCounts, or
// those of the tiles of a JPEG image, whose coding tables follow. 0, or 1 when a tag can't be
// defined.
uint32_t WriteStripTags(TiffFileHandle file, int32_t image, const CodecState& state);

}  // namespace vellim
