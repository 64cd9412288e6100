/* Saving a DIB, a device bitmap or what the clipboard holds as an image of a TIFF file, or a bitmap
 * as bare CCITT code. */
#ifndef VELLIM_SAVE_H
#define VELLIM_SAVE_H

#include "vellim/base.h"
#include "vellim/graphics.h"

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
    BitmapHandle Bitmap;
    DibHandle HeaderBlock; /* of a bitmap: describes the image that it becomes */
    BITMAPINFOHEADER* Header;
    uint8_t* Bits;          /* first stored row, which is the picture's lowest */
    int32_t Height;         /* rows of the DIB */
    uint32_t LineBytes;     /* bytes to copy into the encoder's line */
    uint32_t StrideOrUsage; /* DIB: bytes of a stored row; bitmap: a DibColorUse */
} SaveLineContext;

/* Adds a DIB of 1, 4, 8 or 24 bits to the file `fileName`, which is made if it isn't there, as the
 * last image of its chain, compressed by `compression` (of TiffSaveCompression). The DIB stays the
 * caller's; a biClrUsed of 0 in its header is replaced by the number of its colours. A file that is
 * there keeps its byte order. `showDialog` non-zero asks for the SAVETIFF dialog; where it can't be
 * shown the result is 0 with code 1.
 *
 * Gives 1 when the image was written, else 0. Codes: 1 (no such DIB, memory), 2 (the file can't be
 * read or isn't a TIFF file), 5 (the DIB's block ends before its rows do), 11 (compression not
 * known), 16 (a DIB of 16 bits or of another kind; more than one bit for a CCITT compression), or
 * those of EncodeTiffImage. Any other depth is refused without a code of its own. Nothing is
 * written in any of these cases. A colour table of fewer entries than the depth has makes a
 * ColorMap as short, which some readers pass over; of a longer one the entries that no pixel has
 * are left out. */
VELLIM_API int32_t SaveDIBInTiffFile(const char* fileName, DibHandle dib, uint32_t compression,
                                     int32_t showDialog);
VELLIM_API int32_t SaveDIBInTiffFormat(const char* fileName, DibHandle dib, uint32_t compression,
                                       int32_t showDialog);

/* LineCallbacks that take a line from its row of a DIB: of 1, 4 or 8 bits a pixel, and of 24, where
 * red and blue are exchanged. They give 0. A line outside the DIB is left as it is. */
VELLIM_API uint32_t DllFillTiffLineDIB(uint8_t* line, uint32_t lineNumber, uintptr_t callbackData);
VELLIM_API uint32_t DllFillTiffLineDIB24Bit(uint8_t* line, uint32_t lineNumber,
                                            uintptr_t callbackData);

/* Adds a device bitmap to a file in the same way; it stays the caller's. Of one bit, and for a
 * CCITT compression, it becomes an image of one bit, black and white by the nearer; of 4 and 8 bits
 * one with the display's first 16 or 256 colours as its ColorMap; of 24 bits one of 24 bits. The
 * resolution is the display's. The rows are taken through a context of the thread's active window,
 * or of the display where it has none.
 *
 * Codes: 1 (no such bitmap, memory, a side above 65,535), 2 (as above), 10 (a ColorMap that can't
 * be had), 11, 16 (greys or a palette asked for a bitmap of more than 8 bits), or those of
 * EncodeTiffImage. A file that is there keeps its images whatever fails. */
VELLIM_API int32_t SaveBitmapInTiffFile(const char* fileName, BitmapHandle bitmap,
                                        uint32_t compression, int32_t showDialog);
VELLIM_API int32_t SaveBitmapInTiffFormat(const char* fileName, BitmapHandle bitmap,
                                          uint32_t compression, int32_t showDialog);

/* Adds the clipboard's bitmap (vellim/windows.h) in the same way, except that one of one bit gets a
 * ColorMap of white and black. The clipboard is closed while the file is written, and must keep its
 * bitmap until then.
 *
 * With no bitmap there the result is 0 and nothing else happens. A message box tells of a clipboard
 * that can't be opened or gives no bitmap, and of an image that couldn't be written; a file that
 * isn't a TIFF file is told by the code alone, which is that of OpenTiffFile. A compression that
 * isn't known leaves the code as it is. */
VELLIM_API int32_t SaveTiffFileFromClipboard(const char* fileName, uint32_t compression,
                                             int32_t showDialog);

/* How SaveBitmapInCcittFile codes. */
enum CcittFileMode {
    CCITT_FILE_GROUP3_1D = 5, /* with EOL */
    CCITT_FILE_1D = 6,        /* no EOL */
    CCITT_FILE_GROUP3_2D = 7,
    CCITT_FILE_GROUP4 = 8,
    CCITT_FILE_UNCOMPRESSED = 9
};

/* Writes a device bitmap's lines, coded, and nothing else to a file: black and white by the nearer,
 * a set bit for black, the high bit first. The bitmap stays the caller's. The new file takes the
 * place of one that is there when it is whole; a save that fails leaves that one as it was.
 *
 * Gives 1, or 0 with a message box titled "TIFF error" and one of the codes 1 (no such bitmap,
 * memory), 6 (the file can't be written) or those of EncodeCcittImage. For a `mode` that isn't
 * known it is 0 with code 11, without a box. */
VELLIM_API int32_t SaveBitmapInCcittFile(const char* fileName, BitmapHandle bitmap, uint32_t mode);

/* LineCallbacks that take a line from its row of a device bitmap. The first two take it in the
 * format that `Header` describes, with the colour table behind it: of any depth, red and blue
 * exchanged for 24 bits; and of one bit, inverted. The third takes one bit with a set bit for
 * black, for a record that begins with a device context and a bitmap, in runs as wide and high as
 * the bitmap.
 *
 * The line needs room for the row in whole 16-bit words. They give 0. A line that has no row, and
 * one of a context or a bitmap that is no more, is left as it is. */
VELLIM_API uint32_t DllFillTiffLine(uint8_t* line, uint32_t lineNumber, uintptr_t callbackData);
VELLIM_API uint32_t DllFillMonoTiffLine(uint8_t* line, uint32_t lineNumber, uintptr_t callbackData);
VELLIM_API uint32_t DllFillCcittLine(uint8_t* line, uint32_t lineNumber, uintptr_t callbackData);

#ifdef __cplusplus
}
#endif

#endif /* VELLIM_SAVE_H */
