// What stands beside the six exported buffer calls: the work memory and the strips of a run.
#pragma once

#include <cstdint>

#include "vellim/codec.h"

namespace vellim {

// Takes the block of line area, code buffer and slack, and locks it. 0, or 1 without memory.
uint32_t AllocateWorkMemory(CodecState& state);

// Puts CodeCursor on the first byte of strip StripIndex, without a read where it is buffered now.
bool SeekStrip(CodecState& state);

// Frees every block of the run and clears its field. Calling it twice is harmless.
void ReleaseCodecState(CodecState& state);

}  // namespace vellim
