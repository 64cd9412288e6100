/* Painting a stored picture straight from its file into a window, line by line: no call here ever
 * holds the picture. */
#ifndef VELLIM_SCREEN_H
#define VELLIM_SCREEN_H

#include "vellim/base.h"
#include "vellim/graphics.h"

#ifdef __cplusplus
extern "C" {
#endif

/* What `flags` of the calls below are made of. Without kZoomView and kFitView a pixel of the
 * picture is one of the device. Other bits mean nothing. */
enum ViewFlag {
    VIEW_TURN_MASK = 3,  /* quarter turns, clockwise */
    VIEW_ZOOM = 4,       /* real size by resolution, times the ratios */
    VIEW_FIT = 8,        /* stretched over the client area; wins over VIEW_ZOOM */
    VIEW_INVERTED = 0x20 /* black and white, or every bit of a colour, exchanged */
};

/* Fractions that real size is multiplied by, each axis of the window for itself; one with a 0 in it
 * leaves its axis alone. Read in the zoom view alone. */
typedef struct ZoomRatios {
    int32_t XNumerator;
    int32_t XDenominator;
    int32_t YNumerator;
    int32_t YDenominator;
} ZoomRatios;

/* Paints image `imageIndex` of the TIFF file `fileName` on `dc`, a context of `window`, from the
 * client area's upper left corner, and the rest of the client area with the window's background.
 * `zoom` may be null. A bar of the window is shown where the picture is larger than the client area
 * and hidden where it isn't; where it is, the view begins at the bar's position within its range
 * (at the picture's edge for an empty range), so the caller sets the ranges before (0 to the number
 * that GetScreenViewSize is larger by makes a position one pixel). `dc` stays in MM_ANISOTROPIC
 * with the picture taken out of its clip region; it is to be given back, and a new one got for the
 * next paint.
 *
 * 1 when the whole picture was painted, else 0: with the code left alone for an empty name or a
 * `window` or `dc` that is none; the codes of OpenTiffFile, GetTiffImage and GetTiffRGBQuad (16: a
 * depth that isn't served); 1 (memory; a picture above the limits of SetTiffSizeLimits); or the
 * decoder's, where the lines that came are painted and the background around the picture. Before
 * the decoder nothing is. */
VELLIM_API int32_t DecompressTiffToScreen(WindowHandle window, DeviceContextHandle dc,
                                          const char* fileName, int32_t imageIndex,
                                          const ZoomRatios* zoom, uint32_t flags);

enum ScreenFormat { SCREEN_FORMAT_ANY = 0, SCREEN_FORMAT_TIFF = 1, SCREEN_FORMAT_CALS = 2 };

/* The same of a TIFF or a CALS file (vellim/cals.h; `imageIndex` means nothing then), or of what
 * the file turns out to be. 0 for another `format`, with the file not touched. */
VELLIM_API int32_t DecompressToScreen(int32_t format, WindowHandle window, DeviceContextHandle dc,
                                      const char* fileName, int32_t imageIndex,
                                      const ZoomRatios* zoom, uint32_t flags);

/* The size in pixels of the whole picture as DecompressToScreen would paint it (in the fit view
 * that of the client area without bars), at `size`, from (0, 0). Nothing is painted and no bar
 * changed. 1, or 0 with the code of the step that failed. */
VELLIM_API int32_t GetScreenViewSize(int32_t format, WindowHandle window, DeviceContextHandle dc,
                                     const char* fileName, int32_t imageIndex,
                                     const ZoomRatios* zoom, uint32_t flags, RECT* size);

/* What the line functions below work on; pass its address as `callbackData`. */
typedef struct ScreenLineContext {
    DeviceContextHandle DeviceContext; /* the caller's */
    BitmapHandle LineBitmap;           /* one line of the picture: a row, or a column when turned */
    DibHandle HeaderBlock;             /* describes the picture */
    uint32_t Reserved;
    uint32_t RowPixels;
    uint32_t LineBytes;
    uint32_t ColorUse;  /* a DibColorUse */
    BITMAPINFO* Header; /* the description, locked, its size that of one line */
    uint32_t RasterOp;
    uint8_t* Scratch; /* null without a turn */
} ScreenLineContext;

/* LineCallbacks that paint a decoded line where the paint under way on the calling thread has it,
 * or nothing where it isn't in view; by depth (1; 4 and 8; 24, where red and blue are exchanged in
 * the line itself) and turn (none, 90, 180, 270 degrees clockwise). They give 0. At any other time
 * they do nothing. */
VELLIM_API uint32_t FlushMonoLineToScreen(uint8_t* line, uint32_t lineNumber,
                                          uintptr_t callbackData);
VELLIM_API uint32_t FlushRGBLineToScreen(uint8_t* line, uint32_t lineNumber,
                                         uintptr_t callbackData);
VELLIM_API uint32_t FlushRGB24LineToScreen(uint8_t* line, uint32_t lineNumber,
                                           uintptr_t callbackData);
VELLIM_API uint32_t FlushMonoRotLineToScreen(uint8_t* line, uint32_t lineNumber,
                                             uintptr_t callbackData);
VELLIM_API uint32_t FlushRGBRotLineToScreen(uint8_t* line, uint32_t lineNumber,
                                            uintptr_t callbackData);
VELLIM_API uint32_t FlushRGB24RotLineToScreen(uint8_t* line, uint32_t lineNumber,
                                              uintptr_t callbackData);
VELLIM_API uint32_t FlushMonoRot18LineToScreen(uint8_t* line, uint32_t lineNumber,
                                               uintptr_t callbackData);
VELLIM_API uint32_t FlushRGBRot18LineToScreen(uint8_t* line, uint32_t lineNumber,
                                              uintptr_t callbackData);
VELLIM_API uint32_t FlushRGB24Rot18LineToScreen(uint8_t* line, uint32_t lineNumber,
                                                uintptr_t callbackData);
VELLIM_API uint32_t FlushMonoRot27LineToScreen(uint8_t* line, uint32_t lineNumber,
                                               uintptr_t callbackData);
VELLIM_API uint32_t FlushRGBRot27LineToScreen(uint8_t* line, uint32_t lineNumber,
                                              uintptr_t callbackData);
VELLIM_API uint32_t FlushRGB24Rot27LineToScreen(uint8_t* line, uint32_t lineNumber,
                                                uintptr_t callbackData);

#ifdef __cplusplus
}
#endif

#endif /* VELLIM_SCREEN_H */
