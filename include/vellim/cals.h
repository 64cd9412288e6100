/* CALS raster files of type 1 (MIL-PRF-28002): sixteen text records of 128 bytes and one bilevel
 * image in Group 4 coding behind them.
 *
 * A record is a key, its value, and spaces; there are no line ends and no terminators. The image
 * data begins at file offset 2,048. No call keeps a file open. */
#ifndef VELLIM_CALS_H
#define VELLIM_CALS_H

#include "vellim/base.h"
#include "vellim/graphics.h"
#include "vellim/screen.h"

#ifdef __cplusplus
extern "C" {
#endif

enum {
    CALS_RECORD_BYTES = 128,
    CALS_RECORD_COUNT = 16,
    CALS_HEADER_BYTES = 2048, /* all records: where the image data begins */
    CALS_BLOCK_BYTES = 2248   /* of a header in memory: 200 zero bytes end the last record */
};

/* The raster records. */
typedef struct CalsInfo {
    int32_t rtype;      /* raster type: 1 */
    int32_t rorient[2]; /* pel path and line progression in degrees, 90 and 270; they turn nothing
                           here */
    int32_t rpelcnt[2]; /* pixels a line, lines */
    int32_t rdensty;    /* pixels an inch */
} CalsInfo;

/* The text records. A null pointer is a record that is missing or has no value. */
typedef struct CalsNote {
    const char* srcdocid;
    const char* dstdocis;
    const char* txtfileid;
    const char* figid;
    const char* scrgph;
    const char* doccls;
    const char* notes;
} CalsNote;

/* What the line functions below work on; pass its address as `callbackData`. */
typedef struct CalsLineContext {
    uint8_t* Bits;      /* first stored row, which is the picture's lowest */
    uint32_t Height;    /* rows */
    uint32_t LineBytes; /* of a coded line */
    uint32_t Stride;    /* bytes of a stored row */
    uint32_t Invert;    /* non-zero: lines are inverted on their way to the encoder */
} CalsLineContext;

/* Reads the header of `path` into a block of CALS_BLOCK_BYTES bytes, unlocked, which the caller
 * frees with GlobalFree. The records may stand in any order; the last byte of each must be a space
 * or zero. 0 on failure: codes 1 (memory), 6 (can't be opened), 18 (shorter than a header, or not
 * one). A null or empty path gives 0 with the code left alone. */
VELLIM_API GlobalHandle ReadCALSHead(const char* path);

/* The first of the sixteen records at `header` that isn't blank and begins with `key` (which ends
 * with its colon and blank, as "rtype: "), case told apart; null if there is none, and for null
 * arguments. `header` has CALS_HEADER_BYTES bytes. */
VELLIM_API char* FindCALSRecord(char* header, const char* key);

/* Reads the raster records. 1 when all four are there, the type is 1 and neither figure of rpelcnt
 * is 0; else 0 with code 18, or that of ReadCALSHead, and `info` holds what was read. "dtype: "
 * stands in for a missing "rtype: ", and "rdensity: " for "rdensty: ". A null `info` gives 0. */
VELLIM_API int32_t ReadCALSInfo(const char* path, CalsInfo* info);

/* Reads the text records: the pointers of `note` lead into the block that is the result, unlocked,
 * which the caller frees with GlobalFree. The writer's "NONE" comes back as it stands. 0 on
 * failure: code 1, or that of ReadCALSHead. A null `note` gives 0. */
VELLIM_API GlobalHandle ReadCALSNote(const char* path, CalsNote* note);

/* Makes a header block as ReadCALSHead gives one. A null text (and every text of a null `note`)
 * becomes "NONE"; one that is longer than its record is cut to what the record holds. A null `info`
 * gives 0 with the code left alone; 0 with code 1 without memory. */
VELLIM_API GlobalHandle DefineCALSHead(const CalsInfo* info, const CalsNote* note);

/* Loads the picture of `path` as a DIB of one bit a pixel, 0 white and 1 black, unlocked, which the
 * caller frees with GlobalFree. Data that ends too soon gives the lines that came, the others
 * white, after a message box titled "CALS warning"; the failure code then is 5, 19 or 20.
 * `showInfo` non-zero asks for the CALSINFO dialog first; where it can't be shown the result is 0
 * with code 1. Other failures give 0: codes 1 (memory, or a picture above the limits of
 * SetTiffSizeLimits), 6 (also: nothing behind the header), 18, or the decoder's. */
VELLIM_API DibHandle LoadCALSIntoDIB(const char* path, int32_t showInfo);

/* Writes a DIB of one bit a pixel and two colours behind a 40-byte header as a CALS file, in place
 * of any other of that name. `note` and `rorient` (two numbers) may be null. Black is black,
 * whichever colour the DIB has first. `showDialog` non-zero asks for the CALSEDIT dialog first;
 * where it can't be shown the result is 0 with code 1 and no file is touched. 1, or 0: codes 1, 5
 * (rows beyond the block's end), 6, 16 (a DIB of another kind, before the file is touched), or the
 * encoder's (12: more than 33,280 pixels a line). */
VELLIM_API int32_t SaveDIBInCALSFormat(const char* path, DibHandle dib, const CalsNote* note,
                                       const int32_t* rorient, int32_t showDialog);

/* LineCallbacks between a line and its row of a DIB. They give 0. A line outside the DIB is passed
 * over. */
VELLIM_API uint32_t DllFlushCALSLineDIB(uint8_t* line, uint32_t lineNumber, uintptr_t callbackData);
VELLIM_API uint32_t DllFillCALSLineDIB(uint8_t* line, uint32_t lineNumber, uintptr_t callbackData);

/* Paints the picture of a CALS file as DecompressTiffToScreen (vellim/screen.h) paints that of a
 * TIFF file, at the one density of its header. `dc` stays in MM_TEXT. 1 when the whole picture was
 * painted, else 0: with the code left alone for a `window` or `dc` that is none; the codes of
 * ReadCALSInfo; 1 (memory; a picture above the limits of SetTiffSizeLimits) and 6 (the file is gone
 * by then), with nothing painted; or the decoder's, where the lines that came are painted. */
VELLIM_API int32_t DecompressCALSToScreen(WindowHandle window, DeviceContextHandle dc,
                                          const char* fileName, const ZoomRatios* zoom,
                                          uint32_t flags);

/* What the line functions below work on; pass its address as `callbackData`. The rectangles are
 * those of the view: the whole turned picture in its own pixels, the part on show moved to the
 * origin, that part, and the same in pixels of the device moved to the origin. */
typedef struct CalsScreenContext {
    BitmapHandle LineBitmap;           /* one line of one bit: a row, or a column when turned */
    DeviceContextHandle DeviceContext; /* the caller's */
    DeviceContextHandle LineDC;        /* of memory, with LineBitmap */
    RECT ImageRect;
    RECT DestRect;
    RECT SourceRect;
    RECT PaintRect;
    uint32_t LineBytes; /* handed to SetBitmapBits */
    uint8_t* Scratch;   /* room for RowPixels x 4 bytes, zero at first */
    uint32_t RasterOp;
    uint32_t RowPixels; /* of a decoded line */
} CalsScreenContext;

/* LineCallbacks that paint a decoded line unturned or turned clockwise, or nothing where it isn't
 * in view. They read the record alone, and give 0. */
VELLIM_API uint32_t FlushCALSLineToScreen(uint8_t* line, uint32_t lineNumber,
                                          uintptr_t callbackData);
VELLIM_API uint32_t FlushCALS90LineToScreen(uint8_t* line, uint32_t lineNumber,
                                            uintptr_t callbackData);
VELLIM_API uint32_t FlushCALS180LineToScreen(uint8_t* line, uint32_t lineNumber,
                                             uintptr_t callbackData);
VELLIM_API uint32_t FlushCALS270LineToScreen(uint8_t* line, uint32_t lineNumber,
                                             uintptr_t callbackData);

#ifdef __cplusplus
}
#endif

#endif /* VELLIM_CALS_H */
