/* What every VELLIM header builds on: the export mark, the integer names of the boundary, and the
 * few graphics records that images are described with.
 *
 * Widths. Every handle is a 32-bit name of a table entry, never an address; integers are 32 bits
 * wide; an address is a native pointer, and a caller's own value (`callbackData`) is as wide as
 * one. 0 is never a valid handle, but for streams, where -1 is the failure value as well.
 *
 * A bad argument (null pointer, stale or foreign handle, index out of range) is a failure result,
 * never a crash. */
#ifndef VELLIM_BASE_H
#define VELLIM_BASE_H

#include <stdint.h>

#if defined(__GNUC__)
#define VELLIM_API __attribute__((visibility("default")))
#else
#define VELLIM_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* A movable memory block (vellim/platform.h). */
typedef uint32_t GlobalHandle;
/* An open TIFF file (vellim/files.h): a movable block too, but opaque. */
typedef uint32_t TiffFileHandle;
/* A movable block of BITMAPINFOHEADER, colour table and bottom-up rows padded to 4 bytes. */
typedef uint32_t DibHandle;
/* A window, device context or cursor. */
typedef uint32_t WindowHandle;
typedef uint32_t DeviceContextHandle;
typedef uint32_t CursorHandle;

/* Positive: a disk file. -2 to -30: a memory stream. 0: none. -1: failure. */
typedef int32_t StreamHandle;

/* Header of a device-independent bitmap. 40 bytes. */
typedef struct BITMAPINFOHEADER {
    uint32_t biSize;         /* 40 */
    int32_t biWidth;         /* pixels */
    int32_t biHeight;        /* lines */
    uint16_t biPlanes;       /* 1 */
    uint16_t biBitCount;     /* bits a pixel: 1, 4, 8 or 24 */
    uint32_t biCompression;  /* 0 */
    uint32_t biSizeImage;    /* bytes of all rows, or 0 */
    int32_t biXPelsPerMeter; /* pixels a metre */
    int32_t biYPelsPerMeter;
    uint32_t biClrUsed;      /* entries of the colour table */
    uint32_t biClrImportant; /* the same */
} BITMAPINFOHEADER;

/* An image described from its tags; it can stand at the head of a DIB. */
typedef BITMAPINFOHEADER TiffDimensions;

/* One entry of a colour table. */
typedef struct RGBQUAD {
    uint8_t rgbBlue;
    uint8_t rgbGreen;
    uint8_t rgbRed;
    uint8_t rgbReserved; /* 0 */
} RGBQUAD;

/* A bitmap in memory, as it is described to the calls that store one. */
typedef struct BITMAP {
    int32_t bmType;       /* 0 */
    int32_t bmWidth;      /* pixels */
    int32_t bmHeight;     /* lines */
    int32_t bmWidthBytes; /* bytes of a line */
    uint16_t bmPlanes;
    uint16_t bmBitsPixel; /* bits a pixel and plane */
    void* bmBits;
} BITMAP;

#ifdef __cplusplus
}
#endif

#endif /* VELLIM_BASE_H */
