/* The graphics that the library draws with, and that a host shares with it: device bitmaps,
 * palettes, brushes, device contexts, and the calls that copy pixels between them.
 *
 * A device bitmap has 1, 4, 8 or 24 bits a pixel in one plane. Its rows stand top row first, each
 * on a 2-byte boundary, the leftmost pixel in the high bits; pixels of 24 bits are blue, green,
 * red. Of one bit, 0 is black and 1 is white; four bits are an index into the sixteen system
 * colours, eight bits into the display's palette. Rows of a DIB stand lowest row first, on 4-byte
 * boundaries.
 *
 * Objects and contexts are 32-bit names; a stale or foreign one is refused. Sizes of 0 and below
 * are refused too; places beyond an edge are clipped. Results are 1 and 0 where nothing else is
 * said. An object or context is for one thread at a time. */
#ifndef VELLIM_GRAPHICS_H
#define VELLIM_GRAPHICS_H

#include "vellim/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Bitmaps, palettes and brushes. */
typedef uint32_t GraphicsHandle;
typedef GraphicsHandle BitmapHandle;
typedef GraphicsHandle PaletteHandle;
typedef GraphicsHandle BrushHandle;

/* A colour: red in the low byte, then green, then blue; or with 0x01 in the high byte the number of
 * an entry of the palette selected into the context. */
typedef uint32_t ColorRef;

typedef struct POINT {
    int32_t x;
    int32_t y;
} POINT;

/* right and bottom lie beyond the last pixel. */
typedef struct RECT {
    int32_t left;
    int32_t top;
    int32_t right;
    int32_t bottom;
} RECT;

typedef struct PALETTEENTRY {
    uint8_t peRed;
    uint8_t peGreen;
    uint8_t peBlue;
    uint8_t peFlags; /* PC_EXPLICIT: the first two bytes are the number of a display colour */
} PALETTEENTRY;

enum { PC_EXPLICIT = 2 };

typedef struct LOGPALETTE {
    uint16_t palVersion; /* 0x300 */
    uint16_t palNumEntries;
    PALETTEENTRY palPalEntry[1]; /* as many as that */
} LOGPALETTE;

typedef struct BITMAPINFO {
    BITMAPINFOHEADER bmiHeader;
    RGBQUAD bmiColors[1]; /* as many as the header tells */
} BITMAPINFO;

/* What the colour table of a DIB holds. */
enum DibColorUse {
    DIB_RGB_COLORS = 0, /* RGBQUADs */
    DIB_PAL_COLORS = 1  /* 16-bit numbers of entries of the context's palette */
};

/* ---- Device bitmaps. Each is given back with DeleteObject. ---- */

/* A bitmap of planes x bits a pixel (1, 4, 8 or 24), with the rows at `bits`, or all zero where
 * that is null. */
VELLIM_API BitmapHandle CreateBitmap(int32_t width, int32_t height, uint32_t planes,
                                     uint32_t bitsPerPixel, const void* bits);

/* The same from a record, with rows of bmWidthBytes at bmBits. */
VELLIM_API BitmapHandle CreateBitmapIndirect(const BITMAP* bitmap);

/* A bitmap of the context's own format: the display's, or that of the bitmap selected into it. */
VELLIM_API BitmapHandle CreateCompatibleBitmap(DeviceContextHandle context, int32_t width,
                                               int32_t height);

enum { CBM_INIT = 4 };

/* The same of the size in `header`, and with CBM_INIT in `init` filled from the DIB rows at `bits`
 * that `info` describes. */
VELLIM_API BitmapHandle CreateDIBitmap(DeviceContextHandle context, const BITMAPINFOHEADER* header,
                                       uint32_t init, const void* bits, const BITMAPINFO* info,
                                       uint32_t use);

/* Puts `lines` DIB rows, which begin with row `start` counted from the lowest, into the bitmap,
 * colours by the nearest that it has. GetDIBits takes them from there in the format that `info`
 * describes, its colour table telling which colours there are; with null `bits` it tells the
 * bitmap's size in the header alone, for the depth there or, where that is 0, for the bitmap's own.
 * Both give the number of rows that DIB and bitmap have of these; further columns of either keep
 * their pixels. Of a header, biSize is 40, biPlanes 1, biCompression 0 and biHeight above 0. */
VELLIM_API int32_t SetDIBits(DeviceContextHandle context, BitmapHandle bitmap, uint32_t start,
                             uint32_t lines, const void* bits, const BITMAPINFO* info,
                             uint32_t use);
VELLIM_API int32_t GetDIBits(DeviceContextHandle context, BitmapHandle bitmap, uint32_t start,
                             uint32_t lines, void* bits, BITMAPINFO* info, uint32_t use);

/* Copy rows as the bitmap has them, `bytes` bytes of them at most, and give the bytes copied. */
VELLIM_API int32_t SetBitmapBits(BitmapHandle bitmap, uint32_t bytes, const void* bits);
VELLIM_API int32_t GetBitmapBits(BitmapHandle bitmap, int32_t bytes, void* bits);

/* ---- Palettes and brushes. ---- */

VELLIM_API PaletteHandle CreatePalette(const LOGPALETTE* palette);

/* Entries from `first` on, as many as there are of `count`; gives their number, and for null
 * `entries` that of all. */
VELLIM_API uint32_t GetPaletteEntries(PaletteHandle palette, uint32_t first, uint32_t count,
                                      PALETTEENTRY* entries);
VELLIM_API uint32_t GetSystemPaletteEntries(DeviceContextHandle context, uint32_t first,
                                            uint32_t count, PALETTEENTRY* entries);

/* Makes `palette` the context's and gives the one before. RealizePalette finds the display's
 * colours for it and gives the number of its entries. */
VELLIM_API PaletteHandle SelectPalette(DeviceContextHandle context, PaletteHandle palette,
                                       int32_t background);
VELLIM_API uint32_t RealizePalette(DeviceContextHandle context);

/* The colour that the context shows for `color`; 0xFFFFFFFF on failure. */
VELLIM_API ColorRef GetNearestColor(DeviceContextHandle context, ColorRef color);

VELLIM_API BrushHandle CreateSolidBrush(ColorRef color);

/* ---- Objects. ---- */

/* Fills a BITMAP from a bitmap, or a 16-bit number of entries from a palette, as far as `bytes`
 * goes, and gives the bytes written, or for a null `record` those of the whole. */
VELLIM_API int32_t GetObjectA(GraphicsHandle object, int32_t bytes, void* record);

/* An object that is selected into a context lives on there. */
VELLIM_API int32_t DeleteObject(GraphicsHandle object);

/* ---- Device contexts. ---- */

/* A context in memory, for the display's format; it begins with a bitmap of one pixel of one bit.
 * To be ended with DeleteDC. */
VELLIM_API DeviceContextHandle CreateCompatibleDC(DeviceContextHandle context);
VELLIM_API int32_t DeleteDC(DeviceContextHandle context);

/* Selects a bitmap (into a context in memory alone), a brush or a font and gives the object before,
 * which for the first of its kind is one of the system's own, which DeleteObject leaves alone. */
VELLIM_API GraphicsHandle SelectObject(DeviceContextHandle context, GraphicsHandle object);

/* In MM_TEXT a unit is a pixel; in MM_ANISOTROPIC the window extents are drawn out to the viewport
 * extents, each axis for itself. Both begin with extents of 1 and origins of 0. */
enum MapMode { MM_TEXT = 1, MM_ANISOTROPIC = 7 };

/* Gives the mode before, or 0. */
VELLIM_API int32_t SetMapMode(DeviceContextHandle context, int32_t mode);

/* Each stores what was there at `before`, unless that is null. An extent of 0 is refused, and in
 * MM_TEXT the extents can't be set. */
VELLIM_API int32_t SetWindowOrgEx(DeviceContextHandle context, int32_t x, int32_t y, POINT* before);
VELLIM_API int32_t SetWindowExtEx(DeviceContextHandle context, int32_t x, int32_t y, POINT* before);
VELLIM_API int32_t SetViewportOrgEx(DeviceContextHandle context, int32_t x, int32_t y,
                                    POINT* before);
VELLIM_API int32_t SetViewportExtEx(DeviceContextHandle context, int32_t x, int32_t y,
                                    POINT* before);

/* Pixels to units and back, rounded to the nearest, for `count` points in place. */
VELLIM_API int32_t DPtoLP(DeviceContextHandle context, POINT* points, int32_t count);
VELLIM_API int32_t LPtoDP(DeviceContextHandle context, POINT* points, int32_t count);

enum ClipResult { CLIP_ERROR = 0, NULLREGION = 1, SIMPLEREGION = 2, COMPLEXREGION = 3 };

/* Takes a rectangle, in units, out of the region that is drawn to. */
VELLIM_API int32_t ExcludeClipRect(DeviceContextHandle context, int32_t left, int32_t top,
                                   int32_t right, int32_t bottom);

/* How pixels that fall together are joined: by AND, by OR, or the last of them alone. */
enum StretchMode { BLACKONWHITE = 1, WHITEONBLACK = 2, COLORONCOLOR = 3 };

/* Gives the mode before, or 0. A context begins with BLACKONWHITE. */
VELLIM_API int32_t SetStretchBltMode(DeviceContextHandle context, int32_t mode);

/* Give the colour before. Pixels of one bit that go to a context of colours take the text colour
 * for a 0 and the background colour for a 1 (black and white at first); colours that go to one of
 * one bit become 1 where they are the background colour of the context that they come from. */
VELLIM_API ColorRef SetTextColor(DeviceContextHandle context, ColorRef color);
VELLIM_API ColorRef SetBkColor(DeviceContextHandle context, ColorRef color);

/* ---- Drawing. Coordinates are in the units of the context that they belong to. ---- */

enum RasterOperation {
    SRCCOPY = 0x00CC0020,
    NOTSRCCOPY = 0x00330008,
    SRCPAINT = 0x00EE0086, /* or */
    SRCAND = 0x008800C6,
    SRCINVERT = 0x00660046, /* exclusive or */
    PATCOPY = 0x00F00021,
    BLACKNESS = 0x00000042,
    WHITENESS = 0x00FF0062
};

VELLIM_API int32_t BitBlt(DeviceContextHandle to, int32_t x, int32_t y, int32_t width,
                          int32_t height, DeviceContextHandle from, int32_t fromX, int32_t fromY,
                          uint32_t operation);
VELLIM_API int32_t StretchBlt(DeviceContextHandle to, int32_t x, int32_t y, int32_t width,
                              int32_t height, DeviceContextHandle from, int32_t fromX,
                              int32_t fromY, int32_t fromWidth, int32_t fromHeight,
                              uint32_t operation);

/* Draws part of a DIB, of 16 and of 32 bits a pixel too (five bits of each colour, blue lowest;
 * blue, green, red and a byte more); `fromY` counts from its lowest row. Gives the number of its
 * rows. */
VELLIM_API int32_t StretchDIBits(DeviceContextHandle to, int32_t x, int32_t y, int32_t width,
                                 int32_t height, int32_t fromX, int32_t fromY, int32_t fromWidth,
                                 int32_t fromHeight, const void* bits, const BITMAPINFO* info,
                                 uint32_t use, uint32_t operation);

/* Fills with the selected brush. */
VELLIM_API int32_t PatBlt(DeviceContextHandle context, int32_t x, int32_t y, int32_t width,
                          int32_t height, uint32_t operation);

/* Fills with a brush, right and bottom left out; nothing where they aren't beyond left and top. */
VELLIM_API int32_t FillRect(DeviceContextHandle context, const RECT* rect, BrushHandle brush);

/* ---- Rectangles. ---- */

VELLIM_API int32_t SetRect(RECT* rect, int32_t left, int32_t top, int32_t right, int32_t bottom);
VELLIM_API int32_t CopyRect(RECT* to, const RECT* from);
VELLIM_API int32_t OffsetRect(RECT* rect, int32_t x, int32_t y);

/* 1 where they have pixels in common, which are `both` then; else 0 and an empty one. */
VELLIM_API int32_t IntersectRect(RECT* both, const RECT* a, const RECT* b);
VELLIM_API int32_t IsRectEmpty(const RECT* rect);

/* ---- The display's palette, where it has 8 bits a pixel. ---- */

/* Sets the 256 colours of the whole process: 1, or 0. Null sets the default: the twenty colours
 * that a system keeps, ten at either end, and between them a cube of 6 x 6 x 6 and greys. */
VELLIM_API int32_t SetDisplayPalette(const PALETTEENTRY* colors);

#ifdef __cplusplus
}
#endif

#endif /* VELLIM_GRAPHICS_H */
