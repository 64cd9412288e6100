/* Text on bitmaps and windows: fonts by name and size, measuring, drawing.
 *
 * Text is bytes in Windows-1252, one line at a time. What is measured is what is drawn: a line is
 * as wide as the sum of its characters, on every surface. Letters are hinted to whole pixels;
 * surfaces of up to 8 bits get them without greys. A byte that is no character is drawn as a box.
 * Where a machine has no font that serves, a small one of the library's own does; its face name is
 * "VELLIM". */
#ifndef VELLIM_TEXT_H
#define VELLIM_TEXT_H

#include "vellim/base.h"
#include "vellim/graphics.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef GraphicsHandle FontHandle;

enum { LF_FACESIZE = 32 };
enum FontWeight { FW_DONTCARE = 0, FW_NORMAL = 400, FW_BOLD = 700 };
enum { DEFAULT_CHARSET = 1 };

/* A font as it is asked for. */
typedef struct LOGFONT {
    int32_t lfHeight; /* below 0: of the letters, above 0: of a line, in units of the context; 0:
                         that of the default font */
    int32_t lfWidth;  /* mean width of a character, or 0 for the font's own */
    int32_t lfEscapement;  /* not used: text runs to the right */
    int32_t lfOrientation; /* not used */
    int32_t lfWeight;      /* of FontWeight, or between */
    uint8_t lfItalic;
    uint8_t lfUnderline;
    uint8_t lfStrikeOut;
    uint8_t lfCharSet; /* not used, as the rest */
    uint8_t lfOutPrecision;
    uint8_t lfClipPrecision;
    uint8_t lfQuality;
    uint8_t lfPitchAndFamily;
    char lfFaceName[LF_FACESIZE]; /* with its terminator; empty: any */
} LOGFONT;

typedef struct SIZE {
    int32_t cx;
    int32_t cy;
} SIZE;

/* A font as it is, in units of the context. */
typedef struct TEXTMETRIC {
    int32_t tmHeight; /* ascent and descent */
    int32_t tmAscent;
    int32_t tmDescent;
    int32_t tmInternalLeading; /* of tmHeight, what is more than the letters' height */
    int32_t tmExternalLeading; /* what the designer wants between two lines besides */
    int32_t tmAveCharWidth;
    int32_t tmMaxCharWidth;
    int32_t tmWeight;
    int32_t tmOverhang;
    int32_t tmDigitizedAspectX;
    int32_t tmDigitizedAspectY;
    uint8_t tmFirstChar;
    uint8_t tmLastChar;
    uint8_t tmDefaultChar;
    uint8_t tmBreakChar;
    uint8_t tmItalic;
    uint8_t tmUnderlined;
    uint8_t tmStruckOut;
    uint8_t tmPitchAndFamily;
    uint8_t tmCharSet;
} TEXTMETRIC;

/* A font to be selected with SelectObject and ended with DeleteObject. A face that the machine
 * doesn't have becomes the nearest: of the same widths where there is one, else of the same kind. 0
 * for null or without memory. */
VELLIM_API FontHandle CreateFontIndirectA(const LOGFONT* font);

/* Width of `count` bytes and height of the line (tmHeight), in units of the context. Where these
 * aren't pixels, the width is rounded once, as a whole. A context begins with a default font of 16
 * units a line. */
VELLIM_API int32_t GetTextExtentPointA(DeviceContextHandle context, const char* text, int32_t count,
                                       SIZE* size);
VELLIM_API int32_t GetTextMetricsA(DeviceContextHandle context, TEXTMETRIC* metrics);

/* Whether the background of text is left as it is, or filled with the background colour, which is
 * what a context begins with. Gives the mode before, or 0. */
enum BackgroundMode { TRANSPARENT = 1, OPAQUE = 2 };
VELLIM_API int32_t SetBkMode(DeviceContextHandle context, int32_t mode);

/* Draw a line in the text colour with its upper left corner at a place. Bytes below 32 are drawn as
 * nothing and take no width. */
VELLIM_API int32_t TextOutA(DeviceContextHandle context, int32_t x, int32_t y, const char* text,
                            int32_t count);

enum TextOption {
    ETO_OPAQUE = 2, /* fills the rectangle with the background colour first */
    ETO_CLIPPED = 4 /* draws inside the rectangle alone */
};

/* `rect` may be null without options. `steps`: null, or the width to give each byte. 0 for a bad
 * argument or without memory. */
VELLIM_API int32_t ExtTextOutA(DeviceContextHandle context, int32_t x, int32_t y, uint32_t options,
                               const RECT* rect, const char* text, uint32_t count,
                               const int32_t* steps);

enum StockObject { SYSTEM_FONT = 13, SYSTEM_FIXED_FONT = 16 };

/* The system's own fonts, which DeleteObject leaves alone; 0 for another number. */
VELLIM_API GraphicsHandle GetStockObject(int32_t object);

#ifdef __cplusplus
}
#endif

#endif /* VELLIM_TEXT_H */
