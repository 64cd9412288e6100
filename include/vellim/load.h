/* Loading a stored image as a device-independent bitmap. */
#ifndef VELLIM_LOAD_H
#define VELLIM_LOAD_H

#include "vellim/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/* What the line functions below work on; pass its address as `callbackData`. */
typedef struct LoadLineContext {
    DeviceContextHandle DeviceContext;
    uint32_t Bitmap;
    DibHandle HeaderBlock;
    uint8_t* Bits;          /* first stored row, which is the picture's lowest */
    uint32_t Height;        /* rows of the DIB */
    uint32_t LineBytes;     /* bytes of a decoded line */
    uint32_t StrideOrUsage; /* bytes of a stored row */
} LoadLineContext;

/* Loads image `imageIndex` of the file `fileName` as a DIB: header, colour table and bottom-up
 * rows, in one unlocked block that the caller frees with GlobalFree. Image data that ends too soon
 * gives the lines that came, the others zero, after a message box titled "TIFF warning"; the
 * failure code then is 5, 19 or 20. Other failures give 0 with the code of the step that failed.
 * `showInfo` non-zero asks for the TIFFINFO dialog first; where it can't be shown the result is 0
 * with code 1. */
VELLIM_API DibHandle LoadTiffIntoDIB(const char* fileName, int32_t imageIndex, int32_t showInfo);

/* LineCallbacks that put a decoded line into its row of a DIB: for 1, 4 and 8 bits a pixel, and
 * for 24, where red and blue are exchanged (in the line itself). They give 0. A line outside the
 * DIB is passed over. */
VELLIM_API uint32_t DllFlushTiffLineDIB(uint8_t* line, uint32_t lineNumber, uintptr_t callbackData);
VELLIM_API uint32_t DllFlushTiffLine24DIB(uint8_t* line, uint32_t lineNumber,
                                          uintptr_t callbackData);

#ifdef __cplusplus
}
#endif

#endif /* VELLIM_LOAD_H */
