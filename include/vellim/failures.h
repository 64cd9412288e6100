/* Failure codes and their messages.
 *
 * The failure code is one integer a thread. It is set where a call fails and is not cleared by
 * success, so it means something only after a call that reported failure. OpenTiffFile and
 * OpenTiffInMemory set it to 0 on entry; the drivers that decode and encode store their own
 * result at the end of a run, 0 included. */
#ifndef VELLIM_FAILURES_H
#define VELLIM_FAILURES_H

#include "vellim/base.h"

#ifdef __cplusplus
extern "C" {
#endif

enum TiffFailure {
    TIFF_SUCCESS = 0,
    TIFF_NO_MEMORY = 1, /* also: an image above the limits of SetTiffSizeLimits */
    TIFF_BAD_OPEN_MODE = 2,
    TIFF_BAD_INDEX = 3, /* image index, or first strip, out of range */
    TIFF_BAD_STRIP_INDEX = 4,
    TIFF_UNEXPECTED_END = 5, /* data ends before the image does; the lines that came stand */
    TIFF_IO_ERROR = 6,       /* open, seek, read or write; offsets beyond 31 bits */
    TIFF_PATH_TOO_LONG = 7,
    TIFF_NOT_TIFF = 8,
    TIFF_BAD_TAG = 9,      /* a value of 32768 bytes or more */
    TIFF_TAG_MISSING = 10, /* a tag that the image can't do without */
    TIFF_UNKNOWN_COMPRESSION = 11,
    TIFF_BAD_CODE = 12, /* the compressed data breaks its own rules */
    TIFF_TAG_NOT_FOUND = 13,
    TIFF_BAD_BYTE_ORDER = 14,
    TIFF_BAD_BIT_ORDER = 15,
    TIFF_BAD_COLOR_FORMAT = 16,
    TIFF_TOO_FEW_COLORS = 17,
    TIFF_NOT_CALS = 18,
    TIFF_EOFB_MISSING = 19,
    TIFF_UNEXPECTED_EOFB = 20 /* Group 4 data ended in order, but before the last line */
};

/* A message, its terminator included, takes at most this many bytes. */
#define TIFF_MESSAGE_BYTES 43

/* The failure code of the calling thread. */
VELLIM_API int32_t TiffError(void);

/* Stores `code` if it is from 0 to 20; another value changes nothing. Gives the code before. */
VELLIM_API int32_t SetTiffError(int32_t code);

/* The message of `code`, or of the current failure code if `code` is outside 0 to 20; a code of its
 * own that a line function ended a run with has the message of TIFF_BAD_CODE. With a `buffer` (at
 * least TIFF_MESSAGE_BYTES) the message is copied there with its terminator, and `buffer` is the
 * result. With null it is shown in a message box titled "TIFF error", and the result is null. */
VELLIM_API char* TiffErrorString(char* buffer, int32_t code);

#ifdef __cplusplus
}
#endif

#endif /* VELLIM_FAILURES_H */
