/* Saving a device-independent bitmap as an image of a TIFF file. */
#ifndef VELLIM_SAVE_H
#define VELLIM_SAVE_H

#include "vellim/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/* How an image is stored. */
enum TiffSaveCompression {
    TIFF_SAVE_NONE = 201,
    TIFF_SAVE_PACKBITS = 202,
    TIFF_SAVE_LZW = 203,
    TIFF_SAVE_LZW_DIFFERENCING = 204,
    TIFF_SAVE_CCITT_1D = 205, /* no EOL */
    TIFF_SAVE_GROUP3_1D = 206,
    TIFF_SAVE_GROUP3_2D = 207,
    TIFF_SAVE_GROUP4 = 208,
    TIFF_SAVE_JPEG = 209
};

/* What the line functions below work on; pass its address as `callbackData`. */
typedef struct SaveLineContext {
    DeviceContextHandle DeviceContext;
    uint32_t Bitmap;
    DibHandle HeaderBlock;
    BITMAPINFOHEADER* Header;
    uint8_t* Bits;          /* first stored row, which is the picture's lowest */
    int32_t Height;         /* rows of the DIB */
    uint32_t LineBytes;     /* bytes to copy into the encoder's line */
    uint32_t StrideOrUsage; /* bytes of a stored row */
} SaveLineContext;

/* Adds a DIB of 1, 4, 8 or 24 bits to the file `fileName`, which is made if it isn't there, as the
 * last image of its chain, compressed by `compression` (of TiffSaveCompression). The DIB stays the
 * caller's; a biClrUsed of 0 in its header is replaced by the number of its colours. A file that is
 * there keeps its byte order. `showDialog` non-zero asks for the SAVETIFF dialog; where it can't be
 * shown the result is 0 with code 1.
 *
 * Gives 1 when the image was written, else 0. Codes: 1 (no such DIB, memory), 2 (the file can't be
 * opened or isn't a TIFF file), 5 (the DIB's block ends before its rows do), 11 (compression not
 * known), 16 (a DIB of 16 bits or of another kind; more than one bit for a CCITT compression), or
 * those of EncodeTiffImage. Any other depth is refused without a code of its own. Nothing is
 * written in any of these cases. A colour table of fewer entries than the depth has makes a
 * ColorMap as short, which some readers pass over. */
VELLIM_API int32_t SaveDIBInTiffFile(const char* fileName, DibHandle dib, uint32_t compression,
                                     int32_t showDialog);
VELLIM_API int32_t SaveDIBInTiffFormat(const char* fileName, DibHandle dib, uint32_t compression,
                                       int32_t showDialog);

/* LineCallbacks that take a line from its row of a DIB: of 1, 4 or 8 bits a pixel, and of 24, where
 * red and blue are exchanged. They give 0. A line outside the DIB is left as it is. */
VELLIM_API uint32_t DllFillTiffLineDIB(uint8_t* line, uint32_t lineNumber, uintptr_t callbackData);
VELLIM_API uint32_t DllFillTiffLineDIB24Bit(uint8_t* line, uint32_t lineNumber,
                                            uintptr_t callbackData);

#ifdef __cplusplus
}
#endif

#endif /* VELLIM_SAVE_H */
