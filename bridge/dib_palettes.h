// Logical palettes made of colour tables, and colour tables filled from palettes.
//
// A palette given back belongs to the caller, who ends it with DeleteObject; 0 stands for none. As
// in dib.h no failure code is set, and `blockBytes` is the room from the header to its block's end.
#pragma once

#include <cstdint>

#include "vellim/graphics.h"

namespace vellim {

// The colours of a DIB's table; for 24 bits without a table, eight steps of red and of green and
// four of blue, the last colour white. 0 too for a table that isn't all in the block.
PaletteHandle CreateDibPalette(DibHandle dib);
PaletteHandle CreatePaletteFromHeader(const BITMAPINFOHEADER* header, uint32_t blockBytes);

// The display's colours; 0 for a display that has no palette.
PaletteHandle CreateSystemPalette();

// The first `count` colours of the context's display: their values where it has a palette,
// elsewhere their numbers (PC_EXPLICIT). At least one.
PaletteHandle CreateExplicitPalette(DeviceContextHandle context, uint16_t count);

// White, then black: the reverse of the table that a one-bit DIB gets.
PaletteHandle CreateMonoPalette();

// Stores the palette's colours at the head of the colour table, whose further entries stay. The
// default colours are stored where there is no palette, or one of more entries than the table. 1,
// or 0 without memory.
int32_t FillDibColorTable(PaletteHandle palette, BITMAPINFOHEADER* header, uint32_t blockBytes);

}  // namespace vellim
