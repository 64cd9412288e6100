// The display in force.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "vellim/graphics.h"
#include "vellim/platform.h"

namespace vellim {

DisplaySettings CurrentDisplay();

// The colours of a display of 8 bits a pixel.
std::array<PALETTEENTRY, 256> DisplayPalette();

// A number that is another one after each change of the display or its colours, which notes it.
uint32_t DisplayVersion();
void NoteDisplayChange();

// A colour of any display by number, as a palette of `count` numbers means it, black beyond the
// last: one of its palette, or of a display without one what surfaces of so many colours have
// (black and white, the sixteen, all of 8 bits).
ColorRef DisplayColor(uint32_t index, size_t count);

// The sixteen colours of surfaces of 4 bits a pixel.
extern const std::array<PALETTEENTRY, 16> kSystemColors;

constexpr ColorRef ColorOf(const PALETTEENTRY& entry) {
    return entry.peRed | uint32_t{entry.peGreen} << 8U | uint32_t{entry.peBlue} << 16U;
}

}  // namespace vellim
