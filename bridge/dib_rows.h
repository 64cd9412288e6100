// The rows of a DIB that is to be saved.
#pragma once

#include <optional>

#include "platform/guards.h"
#include "vellim/save.h"

namespace vellim {

inline constexpr uint16_t kPaletteBits = 8;  // deeper pixels have no colour table

// The rows as the line functions take them. Nothing, with the code set, for a DIB that isn't laid
// out bottom-up and uncompressed behind a 40-byte header, or whose rows aren't all there.
std::optional<SaveLineContext> RowsOf(const LockedBlock& dib);

// Of a DIB that has two colours, or the room for them.
bool FirstColorIsBlack(const BITMAPINFOHEADER* header);

}  // namespace vellim
