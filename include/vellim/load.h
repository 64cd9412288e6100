/* Loading a stored image as a device-independent bitmap, or as a device bitmap. */
#ifndef VELLIM_LOAD_H
#define VELLIM_LOAD_H

#include "vellim/base.h"
#include "vellim/graphics.h"

#ifdef __cplusplus
extern "C" {
#endif

/* What the line functions below work on; pass its address as `callbackData`. The first three fields
 * are for a device bitmap, the next two for a DIB. */
typedef struct LoadLineContext {
    DeviceContextHandle DeviceContext;
    BitmapHandle Bitmap;
    DibHandle HeaderBlock;  /* describes the image; rows it need not have */
    uint8_t* Bits;          /* first stored row, which is the picture's lowest */
    uint32_t Height;        /* rows of the DIB */
    uint32_t LineBytes;     /* bytes of a decoded line; of a bitmap those to exchange colours in */
    uint32_t StrideOrUsage; /* DIB: bytes of a stored row; bitmap: a DibColorUse */
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

/* Loads an image as a device bitmap, which the caller ends with DeleteObject: of one bit for an
 * image of two colours, else of the display's format, colours by the nearest that it has. Image
 * data that ends with code 5 gives the lines that came, the others zero, without a message; all
 * other failures give 0 with the code of the step that failed. `showInfo` as in LoadTiffIntoDIB.
 *
 * Of a line of 24 bits a pixel that is longer than 65,535 bytes only the low 16 bits of its length
 * count: the pixels behind so many bytes have red and blue mixed up. */
VELLIM_API BitmapHandle LoadTiffIntoBitmap(const char* fileName, int32_t imageIndex,
                                           int32_t showInfo);

/* The same of an open file whose image is in memory (GetTiffImage); the file stays open. */
VELLIM_API BitmapHandle LoadTiffChainIntoBitmap(TiffFileHandle file, int32_t imageIndex);

/* Loads an image as LoadTiffIntoBitmap does and puts it on the clipboard (vellim/windows.h), which
 * owns it from then on, in place of what is there: 1. Else 0, the clipboard left as it was: with
 * the codes of LoadTiffIntoBitmap, or where another has the clipboard open without one of its
 * own. */
VELLIM_API int32_t LoadTiffFileIntoClipboard(const char* fileName, int32_t imageIndex,
                                             int32_t showInfo);

/* The image's colours as a palette, which the caller ends with DeleteObject: of an image of 24 bits
 * a spread of 256 that ends in white, of one bit none. 0 on failure. */
VELLIM_API PaletteHandle GetTiffImagePalette(const char* fileName, int32_t imageIndex);

/* LineCallbacks that put a decoded line into its row of a device bitmap: for 1, 4 and 8 bits a
 * pixel, and for 24, where red and blue are exchanged (in the line itself). They give 0. A line
 * outside the image of `HeaderBlock` is passed over. */
VELLIM_API uint32_t DllFlushTiffLine(uint8_t* line, uint32_t lineNumber, uintptr_t callbackData);
VELLIM_API uint32_t DllFlushTiffLine24(uint8_t* line, uint32_t lineNumber, uintptr_t callbackData);

#ifdef __cplusplus
}
#endif

#endif /* VELLIM_LOAD_H */
