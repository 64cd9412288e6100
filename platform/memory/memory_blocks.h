// What the library itself needs of memory blocks beyond the exported calls.
#pragma once

#include <cstdint>

#include "vellim/platform.h"

namespace vellim {

// Blocks allocated and not freed in the whole process: an operation that keeps nothing leaves as
// many as it found.
uint32_t LiveGlobalBlocks();

}  // namespace vellim
