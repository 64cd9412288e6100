// Rows of pixels brought into the shape that a turned picture is drawn with: spread, one entry a
// pixel, for a column of the screen, or mirrored, for a row that runs the other way.
//
// All take `count` packed pixels at `source`, the leftmost in the high bits; nothing is read
// behind the byte of the last of them. Source and target don't overlap.
#pragma once

#include <cstdint>

namespace vellim {

// For a bitmap one pixel wide, uppermost row first, rows of 2 bytes: the first byte of each entry
// becomes 0x80 or 0. All of these begin at the leftmost pixel, the Reversed ones at the rightmost,
// and leave the rest of each entry as it is.
void SpreadMonoLine(const uint8_t* source, uint8_t* target, uint32_t count);
void SpreadMonoLineReversed(const uint8_t* source, uint8_t* target, uint32_t count);

// For a DIB one pixel wide, lowest row first, rows of 4 bytes. A pixel of 4 bits stands in the high
// half of its byte; in the low half is whatever was behind it.
void SpreadNibbleLine(const uint8_t* source, uint8_t* target, uint32_t count);
void SpreadNibbleLineReversed(const uint8_t* source, uint8_t* target, uint32_t count);
void SpreadByteLine(const uint8_t* source, uint8_t* target, uint32_t count);
void SpreadByteLineReversed(const uint8_t* source, uint8_t* target, uint32_t count);
void SpreadRgbLine(const uint8_t* source, uint8_t* target, uint32_t count);
void SpreadRgbLineReversed(const uint8_t* source, uint8_t* target, uint32_t count);

// A packed row again, with its pixels from right to left. Behind the last pixel one bits become 0;
// of an odd count of four bits the last byte is the first of the source, padding and all.
void MirrorMonoLine(const uint8_t* source, uint8_t* target, uint32_t count);
void MirrorNibbleLine(const uint8_t* source, uint8_t* target, uint32_t count);
void MirrorByteLine(const uint8_t* source, uint8_t* target, uint32_t count);
void MirrorRgbLine(const uint8_t* source, uint8_t* target, uint32_t count);

}  // namespace vellim
