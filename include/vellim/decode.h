/* Decoding: an image goes to a function of the caller's, line by line, top line first.
 *
 * No call holds a whole image. Results are 1 for success and 0 for failure; the failure code is
 * set either way (0 on success). Lines delivered before a failure stay delivered. Codes: 1 (memory,
 * or above the limits of SetTiffSizeLimits), 3 (image not in memory, first strip out of range),
 * 5 (data ends too soon), 6 (I/O), 10 (a tag is missing), 11 (compression not known), 12 (bad
 * code), 15 (FillOrder), 16 (colour format), 20 (Group 4 data ended before the last line), or the
 * callback's own. */
#ifndef VELLIM_DECODE_H
#define VELLIM_DECODE_H

#include "vellim/codec.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Decodes an image whose tags are in memory (GetTiffImage), from strip `firstStrip` on: line
 * numbers begin at rows per strip x `firstStrip`. `lineCount` lines are wanted, 0 for all; one
 * that reaches beyond the image is cut to it. A line is (width x bits a pixel + 7) / 8 bytes,
 * pixels as stored: no photometric sense is applied, and 24-bit pixels are red, green, blue. */
VELLIM_API int32_t DecodeTiffImage(TiffFileHandle file, int32_t image, uint32_t firstStrip,
                                   uint32_t lineCount, uintptr_t callbackData,
                                   LineCallback callback);

/* Decodes bare CCITT data, bilevel, 1 is black, from the stream's current position. The length
 * taken for the run is the whole stream's, so the caller leaves the stream at its start. The
 * stream stays open. */
VELLIM_API int32_t DecodeCcittImage(StreamHandle stream, int32_t width, int32_t height,
                                    CompressionKey key, uintptr_t callbackData,
                                    LineCallback callback);

/* The same with a FillOrder (other than 1 and 2: 1) and a byte order, from `offset` bytes into a
 * disk file. An `offset` of 0, or not below the stream's length, leaves the position alone. A
 * memory stream isn't moved: seek it first, and give 0. */
VELLIM_API int32_t DecodeCcittImageFrom(StreamHandle stream, int32_t offset, int32_t width,
                                        int32_t height, CompressionKey key, uint32_t fillOrder,
                                        uint32_t byteOrder, uintptr_t callbackData,
                                        LineCallback callback);

/* Decodes an MMR stream, as IOCA image data has it: blocks of 0xFE, 0x92, a 16-bit length with the
 * high byte first, and so many bytes of code; a length of 0 stands for as many as the buffer holds,
 * which is the stream's length (behind `offset`) but 65,520 at most; one above that is refused with
 * 5, and so is anything else where a block is due. The code
 * runs on through the blocks: an EOL with tag 1, a line of one-dimensional coding, an EOL with tag
 * 0, then lines of two-dimensional coding with nothing between them. A line that meets an EOL ends
 * there. The end is the last line, and with a height of 0 the end of the data, of which the closing
 * EOLs give one more white line.
 *
 * `stream` is a disk file; an `offset` of at least 1 and below its length moves it there, 0 reads
 * on where it stands. The fifth argument, `fillOrder` and `byteOrder` play no part. Codes beside
 * those above: 6 when the first block can't be read, whatever the cause. */
VELLIM_API int32_t DecodeMMRImage(StreamHandle stream, int32_t offset, int32_t width,
                                  int32_t height, uint32_t unused, uint32_t fillOrder,
                                  uint32_t byteOrder, uintptr_t callbackData,
                                  LineCallback callback);

#ifdef __cplusplus
}
#endif

#endif /* VELLIM_DECODE_H */
