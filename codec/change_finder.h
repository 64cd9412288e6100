// The changing elements of a line of pixels.
#pragma once

#include <cstdint>

namespace vellim {

// A pixel's place, counted from where the search began.
using Change = uint16_t;

// The most pixels that one search may take.
inline constexpr int32_t kMaxSearch = UINT16_MAX;

// FindChanges may write this many entries more than there are changes.
inline constexpr uint32_t kSpareChanges = 8;

// Finds those of the first `pixels` pixels of `line` (the first in bit 7) that differ from the
// pixel left of them, and stores their places in order from `changes` on; `before` (0 or 1) is the
// pixel left of the first. Gives the end of the list. Bits behind those pixels play no part, but up
// to 7 bytes behind them are read.
Change* FindChanges(const uint8_t* line, int32_t pixels, uint32_t before, Change* changes);

}  // namespace vellim
