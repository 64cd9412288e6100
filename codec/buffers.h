// What stands beside the six exported buffer calls: the work memory and the strips of a run.
#pragma once

#include <cstdint>

#include "vellim/codec.h"

namespace vellim {

// Takes the block of line area, code buffer and slack, and locks it. The code buffer has as many
// bytes as the stream, up to `mostCodeBytes`. 0, or 1 without memory.
uint32_t AllocateWorkMemory(CodecState& state, uint32_t mostCodeBytes);

// Sets the fields that go along a line to the start of one.
void BeginLine(CodecState& state);

// Puts CodeCursor on the first byte of strip StripIndex, without a read where it is buffered now.
bool SeekStrip(CodecState& state);

// Frees every block of the run and clears its field. Calling it twice is harmless.
void ReleaseCodecState(CodecState& state);

}  // namespace vellim
