/* Tags of an image in memory (TIFF 6.0, sections 2 and 8).
 *
 * An image's directory is read with GetTiffImage, or a new image is started with DefineTiffImage;
 * all other calls then work on the tags in memory, in host byte order. `image` is an index from 0
 * to 999; outside that every call gives 0 with failure code 3. An image that isn't in memory gives
 * 0 and leaves the failure code alone. */
#ifndef VELLIM_TAGS_H
#define VELLIM_TAGS_H

#include "vellim/base.h"

#ifdef __cplusplus
extern "C" {
#endif

enum TiffTag {
    TIFF_TAG_NEW_SUBFILE_TYPE = 254,
    TIFF_TAG_SUBFILE_TYPE = 255,
    TIFF_TAG_IMAGE_WIDTH = 256,
    TIFF_TAG_IMAGE_LENGTH = 257,
    TIFF_TAG_BITS_PER_SAMPLE = 258,
    TIFF_TAG_COMPRESSION = 259,
    TIFF_TAG_PHOTOMETRIC = 262,
    TIFF_TAG_FILL_ORDER = 266,
    TIFF_TAG_DOCUMENT_NAME = 269,
    TIFF_TAG_IMAGE_DESCRIPTION = 270,
    TIFF_TAG_STRIP_OFFSETS = 273,
    TIFF_TAG_ORIENTATION = 274,
    TIFF_TAG_SAMPLES_PER_PIXEL = 277,
    TIFF_TAG_ROWS_PER_STRIP = 278,
    TIFF_TAG_STRIP_BYTE_COUNTS = 279,
    TIFF_TAG_X_RESOLUTION = 282,
    TIFF_TAG_Y_RESOLUTION = 283,
    TIFF_TAG_PLANAR_CONFIGURATION = 284,
    TIFF_TAG_T4_OPTIONS = 292,
    TIFF_TAG_T6_OPTIONS = 293,
    TIFF_TAG_RESOLUTION_UNIT = 296,
    TIFF_TAG_SOFTWARE = 305,
    TIFF_TAG_DATE_TIME = 306,
    TIFF_TAG_ARTIST = 315,
    TIFF_TAG_PREDICTOR = 317,
    TIFF_TAG_COLOR_MAP = 320,
    TIFF_TAG_TILE_WIDTH = 322,
    TIFF_TAG_TILE_LENGTH = 323,
    TIFF_TAG_TILE_OFFSETS = 324,
    TIFF_TAG_TILE_BYTE_COUNTS = 325,
    TIFF_TAG_JPEG_PROC = 512,
    TIFF_TAG_JPEG_RESTART_INTERVAL = 515,
    TIFF_TAG_JPEG_Q_TABLES = 519,
    TIFF_TAG_JPEG_DC_TABLES = 520,
    TIFF_TAG_JPEG_AC_TABLES = 521,
    TIFF_TAG_YCBCR_SUBSAMPLING = 530,
    TIFF_TAG_REFERENCE_BLACK_WHITE = 532
};

/* Asked for instead of a tag, it means the list of all tags. */
#define TIFF_ALL_TAGS 0

/* Reads the tags of a stored image into memory, unless they are there. 1, or 0: code 1 (memory),
 * 3 (no such image), 6 (read or seek), 9 (a value of 32768 bytes or more). */
VELLIM_API int32_t GetTiffImage(TiffFileHandle file, int32_t image);

/* Frees the tags of an image. 1; for an image without tags in memory 1 if the failure code is 0,
 * else 0. */
VELLIM_API int32_t DropTiffImage(TiffFileHandle file, int32_t image);

/* A tag's value as a new block of exactly its size, which the caller frees with GlobalFree, and its
 * type and number of elements. Each of the three pointers may be null. TIFF_ALL_TAGS gives an
 * array of 32-bit tag numbers in the order in which they are held. 1, or 0: code 13 if the tag
 * isn't there, 1 without memory. */
VELLIM_API int32_t GetTiffImageInfoBuffer(TiffFileHandle file, int32_t image, uint32_t tag,
                                          GlobalHandle* valueHandle, uint32_t* type,
                                          uint32_t* count);

/* The first element of a tag through `value`, which may be null to ask only whether it is there.
 * BYTE: one byte, the rest of the variable left alone. SHORT and LONG: 32 bits. RATIONAL: two
 * 32-bit words, numerator first; the variable must have room. Other types store nothing. Of
 * TIFF_ALL_TAGS the first element is the number of the first tag, if there is one. 1 if the tag is
 * there, else 0 with code 13. */
VELLIM_API int32_t GetTiffImageInfo(TiffFileHandle file, int32_t image, uint32_t tag, void* value);

/* Starts a new image without tags and gives its index, or -1 with code 1 when the file has its 1000
 * images or memory is short. */
VELLIM_API int32_t DefineTiffImage(TiffFileHandle file);

/* Stores a tag in memory: `count` elements of `type`, in host order, replacing a tag of that
 * number. The new tag goes to the end of the list. 1, or 0: code 1 without memory, or for a value
 * of more than 65525 bytes, which can't be held; code 9 for a tag or type above 65535. The tags are
 * then as they were, but for a lack of memory that loses the old value. */
VELLIM_API int32_t DefineTiffImageInfoBuffer(TiffFileHandle file, int32_t image, uint32_t tag,
                                             const void* value, uint32_t type, uint32_t count);

/* The same for one element of up to 4 bytes, given as a number. */
VELLIM_API int32_t DefineTiffImageInfo(TiffFileHandle file, int32_t image, uint32_t tag,
                                       uint32_t type, uint32_t number);

#ifdef __cplusplus
}
#endif

#endif /* VELLIM_TAGS_H */
