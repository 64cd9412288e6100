// One line of fax coding, from its changing elements to bits.
#pragma once

#include <cstdint>

#include "codec/bit_writer.h"
#include "codec/change_finder.h"
#include "codec/run_lookup.h"

namespace vellim {

// ITU-T T.4 4.1: `count` runs by turns, of which the first has the colour `color` and begins at
// `from`; each ends at its entry of `ends`.
void PutRuns(BitWriter& out, RunColor color, int32_t from, const Change* ends, uint32_t count);

// T.4 4.2, T.6 section 2: a line of `width` pixels against the line above it. Each list holds its
// line's changes and behind them kClosingChanges entries of the width; kLeftOfLine stands before
// the first entry of the reference list.
inline constexpr uint32_t kClosingChanges = 3;
inline constexpr Change kLeftOfLine = 0;
void PutRow2D(BitWriter& out, const Change* current, const Change* reference, uint32_t width);

}  // namespace vellim
