// The device-independent bitmap in one movable block: header, colour table, rows.
//
// A DIB's rows are stored from the bottom up, each padded to 4 bytes. The table has 4-byte entries
// (blue, green, red, 0) behind a BITMAPINFOHEADER and 3-byte ones behind the 12-byte core header,
// which is told by its first word and understood by the sizing helpers alone.
//
// No helper here sets a failure code. `blockBytes` is the room from the header to the end of its
// block: whatever the header claims, nothing behind it is read, written or pointed to. Every
// `header` has at least the bytes of its own kind.
#pragma once

#include <array>
#include <cstdint>

#include "vellim/base.h"

namespace vellim {

// Colours of a 4-bit image that has none of its own.
extern const std::array<RGBQUAD, 16> StandardColorTable16;

// Entries of the colour table: biClrUsed, or where that is 0 what the depth addresses (none at 24).
uint32_t DibColorCount(const void* header);

// Bytes of the colour table. A header may claim more than 32 bits hold.
uint64_t DibPaletteSize(const void* header);

// Bytes from the header to the first stored row.
uint64_t DibBitsOffset(const void* header);

// The first stored row, which is the picture's lowest, or null when the block ends before it.
uint8_t* DibBitsPointer(void* header, uint32_t blockBytes);

// Fills the 40 bytes of `header` for a picture of the image depth (1, 4, 8, 24) that `depth` goes
// up to; above 8 that is 24. A size whose rows can't be counted in 32 bits leaves biSizeImage 0.
void InitDibHeader(BITMAPINFOHEADER* header, int32_t width, int32_t height, int32_t depth);

// The colours that go with the depth: black and white, StandardColorTable16, or 3-3-2 bits of
// red, green and blue at depth 8. Writes as many entries as the block has room for.
void FillDefaultColorTable(BITMAPINFOHEADER* header, uint32_t blockBytes);

// Overwrites the colour table with the 16-bit words 0, 1, 2, ..., one for each colour, so that the
// picture is drawn in the device context's palette. 1, or 0 where the depth (other than 4 and 8)
// has no palette or the block no room for the words: the header is then as it was.
int32_t MakeDibPaletteIndices(BITMAPINFOHEADER* header, uint32_t blockBytes);

}  // namespace vellim
