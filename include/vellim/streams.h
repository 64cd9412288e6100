/* Streams: one seek, read and write surface over disk files and memory blocks.
 *
 * A positive handle comes from OpenFile (vellim/platform.h); a negative one names a memory stream
 * of the calling thread, of which there are 29, -2 to -30. -1 is failure, 0 is no stream.
 * Positions and sizes are signed 32-bit numbers of bytes. These calls report by their result
 * alone; only LongRead and LongWrite set the failure code. */
#ifndef VELLIM_STREAMS_H
#define VELLIM_STREAMS_H

#include "vellim/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Byte order marks as little-endian numbers. Any value but TIFF_BIG_ENDIAN means no swap. */
enum TiffByteOrder { TIFF_LITTLE_ENDIAN = 18761 /* "II" */, TIFF_BIG_ENDIAN = 19789 /* "MM" */ };

/* FillOrder (TIFF 6.0, tag 266). Any value but TIFF_FILL_LSB_FIRST means no reversal. */
enum TiffFillOrder { TIFF_FILL_MSB_FIRST = 1, TIFF_FILL_LSB_FIRST = 2 };

/* Element types with a width of their own; every other type counts as bytes. */
enum TiffType {
    TIFF_TYPE_BYTE = 1,
    TIFF_TYPE_ASCII = 2,
    TIFF_TYPE_SHORT = 3,    /* 2 bytes */
    TIFF_TYPE_LONG = 4,     /* 4 bytes */
    TIFF_TYPE_RATIONAL = 5, /* 8 bytes: numerator, then denominator, a LONG each */
    TIFF_TYPE_OFFSET = 9    /* 4 bytes: a file offset */
};

/* Size of the stream in bytes, or -1. A disk file's position is kept. */
VELLIM_API int32_t mSize(StreamHandle handle);

/* Position of the next read or write, or -1. */
VELLIM_API int32_t mTell(StreamHandle handle);

/* Moves the position and gives the new one, or -1 with the position kept. `origin` 0: from the
 * start; 1: from the current position; 2: from the end. On a memory stream origin 2 counts back
 * from the end (so that a negative offset leads behind it); with 0 and 1 a target beyond the size
 * is refused, the size itself being allowed; a target below 0 always is; any other origin gives
 * the position as it is. */
VELLIM_API int32_t mSeek(StreamHandle handle, int32_t offset, int32_t origin);

/* Reads up to `count` bytes into `buffer`. Gives the number read (below `count` at the stream's
 * end, 0 behind it), or -1. */
VELLIM_API int32_t mRead(StreamHandle handle, void* buffer, int32_t count);

/* Writes `count` bytes. Gives the number written, or -1. A memory stream grows as needed; its
 * block may be replaced by that. After a growth that failed the stream is as it was before. */
VELLIM_API int32_t mWrite(StreamHandle handle, const void* buffer, int32_t count);

/* Closes the stream; a memory stream's block stays its owner's. 0 for success. A handle below
 * -30 is given back unchanged; 0 gives 0. */
VELLIM_API int32_t mClose(StreamHandle handle);

/* Read or write `count` elements of `type`, putting each element into or out of `byteOrder`, then
 * each byte into or out of `fillOrder`. A RATIONAL's halves are swapped each by itself. `buffer`
 * holds host order and is not changed by LongWrite (but see below). 1 for success; 0, with
 * failure code 6, when bytes are missing. LongWrite works on a copy where it must convert; if no
 * memory can be had for one, it converts in the caller's buffer. */
VELLIM_API int32_t LongRead(StreamHandle handle, int32_t type, uint32_t count, void* buffer,
                            int32_t byteOrder, int32_t fillOrder);
VELLIM_API int32_t LongWrite(StreamHandle handle, int32_t type, uint32_t count, void* buffer,
                             int32_t byteOrder, int32_t fillOrder);

#ifdef __cplusplus
}
#endif

#endif /* VELLIM_STREAMS_H */
