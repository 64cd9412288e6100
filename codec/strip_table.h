// The strips of a stored image, and the first one that a run decodes.
#pragma once

#include <cstdint>

#include "vellim/codec.h"
#include "vellim/files.h"

namespace vellim {

// Takes a copy of the table `tag` into `block`, with its type and number of entries. 0, 10 when the
// image has no such tag, 1 without memory. `block` is the caller's.
uint32_t ReadTableTag(TiffFileHandle file, int32_t image, uint32_t tag, GlobalHandle& block,
                      uint32_t& type, uint32_t& count);

// Fills StripOffsets, StripOffsetType, StripCount and RowsPerStrip; the height must be there. 0, 1
// or 10. Byte counts aren't read: a strip ends by its line count.
uint32_t ReadStripTable(TiffFileHandle file, int32_t image, CodecState& state);

// Lets the run begin at strip `firstStrip` and end behind `lineCount` lines (0: with the image).
// 3 for a strip that isn't there, or that would begin below the last line.
uint32_t SelectStartStrip(CodecState& state, uint32_t firstStrip, uint32_t lineCount);

}  // namespace vellim
