/* Encoding: an image comes from a function of the caller's, line by line, top line first, and goes
 * to the end of its file.
 *
 * To store an image: OpenTiffFile with T_APPEND or T_CREAT, DefineTiffImage, the tags that say how
 * (Compression and its like, Photometric), DefineGeneralTags, EncodeTiffImage.
 *
 * No call holds a whole image. Results are 1 for success and 0 for failure, with the failure code
 * set either way (0 on success). Codes: 1 (memory, or above the limits of SetTiffSizeLimits), 3
 * (image not in memory), 6 (I/O), 9 (a tag or a strip table that couldn't be read back), 10 (a tag
 * is missing), 11 (compression not known), 12 (a line of more than 33,280 pixels in
 * two-dimensional coding, or of none in LZW), 15 (FillOrder), 16 (colour format), or the callback's
 * own. */
#ifndef VELLIM_ENCODE_H
#define VELLIM_ENCODE_H

#include "vellim/codec.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Defines the tags that go with a picture's size, all SHORT: ImageWidth, ImageLength, BitsPerSample
 * (planes x bits, as a single value) and RowsPerStrip: the whole height for the CCITT compressions,
 * else about 8,192 bytes a strip, and as many rows as bring an image to 8,191 strips at most, since
 * no longer strip table can be read back. For Compression 6 it defines the tags of a JPEG image of
 * one tile instead (TIFF 6.0, section 22). Compression must be defined before.
 *
 * Gives 0 for success, and else a code, which isn't stored: 1 (a tag can't be defined, or a side
 * above 65,535), 10 (a width below 1), 16 (a depth other than 1, 4, 8, 16 and 24). */
VELLIM_API int32_t DefineGeneralTags(TiffFileHandle file, int32_t image, BITMAP bitmap);

/* Takes the lines of an image whose tags are in memory, writes them as strips behind all that the
 * file holds, defines StripOffsets and StripByteCounts, and writes the directory, which is hooked
 * into the chain last of all: before that moment the file's images are the ones it had. A file that
 * is new gets its header first; one that is there keeps its byte order. The callback fills a line
 * of (width x bits a pixel + 7) / 8 bytes; bits behind the last pixel have no meaning.
 *
 * Without RowsPerStrip each line is a strip, and the tag is added. An image with a TileWidth is
 * refused with 11 unless it is JPEG. Group 3 data is sound in one strip alone, which is what
 * DefineGeneralTags asks for; its closing end-of-line codes, and what of its last line shares a
 * byte with them, lie behind what the strip's byte count tells, so that readers that go by that
 * count want it raised. While a file is being written nobody else can write to it: 6.
 *
 * A callback that stops with 3 ends the image as a success, with the lines that it gave: strips
 * that weren't finished have offset and count 0. */
VELLIM_API int32_t EncodeTiffImage(TiffFileHandle file, int32_t image, uintptr_t callbackData,
                                   LineCallback callback);

/* Writes a picture as bare CCITT data, bilevel, 1 is black, from the stream's current position.
 * The stream stays open and stands behind the data at the end. With a `height` of 0 lines are asked
 * for until the callback stops the run with 3. */
VELLIM_API int32_t EncodeCcittImage(StreamHandle stream, int32_t width, int32_t height,
                                    CompressionKey key, uintptr_t callbackData,
                                    LineCallback callback);

/* The same with a FillOrder (other than 1 and 2: 1) and a byte order, which bare data has no use
 * for. */
VELLIM_API int32_t EncodeCcittImageTo(StreamHandle stream, int32_t width, int32_t height,
                                      uint32_t fillOrder, uint32_t byteOrder, CompressionKey key,
                                      uintptr_t callbackData, LineCallback callback);

/* Writes a picture as an MMR stream, as DecodeMMRImage reads it, in blocks of 32,767 bytes and a
 * last one of what is left, from the stream's position on. Six EOLs with tag 1 close the code, of
 * whose last byte nothing is written unless it is full. The fourth argument plays no part. */
VELLIM_API int32_t EncodeMMRImage(StreamHandle stream, int32_t width, int32_t height,
                                  uint32_t unused, uintptr_t callbackData, LineCallback callback);

/* In two-dimensional Group 3 data every `k`th line is coded one-dimensionally (T.4 4.2.1.1, the
 * parameter K); 2 at the start. Holds for the whole process until it is set again; a run that is
 * under way keeps the one that it began with. 1, or 0 with nothing changed for a `k` below 2. */
VELLIM_API int32_t SetKfactor(int32_t k);

#ifdef __cplusplus
}
#endif

#endif /* VELLIM_ENCODE_H */
