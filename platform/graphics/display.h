// The display in force.
#pragma once

#include <array>

#include "vellim/graphics.h"
#include "vellim/platform.h"

namespace vellim {

DisplaySettings CurrentDisplay();

// The colours of a display of 8 bits a pixel.
std::array<PALETTEENTRY, 256> DisplayPalette();

// A number that is another one after each change of the display or its colours, which notes it.
uint32_t DisplayVersion();
void NoteDisplayChange();

// The colours of any display by number, black beyond the last: its palette, or where it has none
// black, white, the rest of the sixteen, and what the palette has besides.
ColorRef DisplayColor(uint32_t index);

// The sixteen colours of surfaces of 4 bits a pixel.
extern const std::array<PALETTEENTRY, 16> kSystemColors;

constexpr ColorRef ColorOf(const PALETTEENTRY& entry) {
    return entry.peRed | uint32_t{entry.peGreen} << 8U | uint32_t{entry.peBlue} << 16U;
}

}  // namespace vellim
