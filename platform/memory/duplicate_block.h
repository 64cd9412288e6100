// Copying memory blocks.
#pragma once

#include "vellim/platform.h"

namespace vellim {

// A new block of the same size with the same bytes, unlocked, or 0: no memory, or no such block.
// The source's lock count is as before.
GlobalHandle DuplicateGlobalBlock(GlobalHandle block);

}  // namespace vellim
