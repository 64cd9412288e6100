// What the fax encoders write, each as one code: runs, modes and ends of lines.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "codec/bit_writer.h"
#include "codec/run_lookup.h"

namespace vellim {

// The longest make-up code of ITU-T T.4 (table 3b). Runs up to its length are in the table.
inline constexpr uint32_t kLongestMakeUp = 2560;

// By colour, then by run length: the terminating code, from 64 pixels on with the make-up code
// before it. Two of them with the code of a mode before them fit one Spill.
using RunCodeTable = std::array<BitCode, kLongestMakeUp + 1>;
extern const std::array<RunCodeTable, 2> kRunCodes;

inline const RunCodeTable& RunCodesOf(RunColor color) {
    return kRunCodes[static_cast<size_t>(color)];
}

// A run of any length: as many of the longest make-up code as leave no more than its length (so
// that 2560 pixels are make-up code and terminating code 0), and what is left from the table.
void PutRun(BitWriter& out, RunColor color, uint32_t run);

// Pass and horizontal mode, and vertical mode by a1 - b1 + kMaxVertical (T.4 table 4).
inline constexpr uint32_t kMaxVertical = 3;
inline constexpr uint32_t kLongestModeCode = 7;
extern const BitCode kPassCode;
extern const BitCode kHorizontalCode;
extern const std::array<BitCode, 2 * kMaxVertical + 1> kVerticalCodes;

// T.4 4.1.2; and with the tag bit of 4.2.2, by how the line behind it is coded.
inline constexpr BitCode kEndOfLine{1, 12};
inline constexpr BitCode kEndOfLineBefore1D{3, 13};
inline constexpr BitCode kEndOfLineBefore2D{2, 13};

}  // namespace vellim
