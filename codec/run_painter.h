// From a list of changing elements to a packed line.
#pragma once

#include <cstdint>

namespace vellim {

// Zeroes `rowBytes` bytes of `line` and paints the first `count` entries of `list` in pairs (b, e):
// pixels b to e - 1 become black (1). An e below b marks the one pixel b, as damaged lines have it.
// The last entry of an odd count ends a white run and needs no work. Pixels outside the `rowBytes`
// bytes are left out. `line` must have room for 8 bytes more.
void PaintRuns(const int32_t* list, uint8_t* line, uint32_t count, uint32_t rowBytes);

}  // namespace vellim
