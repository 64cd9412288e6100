/* Fax pages from text files, and text laid over forms and pictures.
 *
 * A page is a bitmap of one bit a pixel (1 is white) or a DIB of one, whose colour table has white
 * first. Runs share nothing: several threads may make pages at a time, each with a request of its
 * own. */
#ifndef VELLIM_FAX_H
#define VELLIM_FAX_H

#include "vellim/base.h"
#include "vellim/graphics.h"
#include "vellim/text.h"

#ifdef __cplusplus
extern "C" {
#endif

enum { FAX_PATH_BYTES = 256, FAX_FONT_NAME_BYTES = 128, FAX_TAB_STOPS = 16 };

enum FaxPageFlag {
    FAX_HUNDREDTHS = 1 /* of an inch; else millimetres */,
    FAX_ITALIC = 2,
    FAX_BOLD = 4
};

/* What pages are to look like. Lengths are in millimetres or hundredths of an inch; each becomes
 * hundredths first and then pixels, cut to whole numbers both times, of 32 bits at most. The record
 * has no gaps and may stand at any address, `Font` too.
 *
 * Text begins at (LeftMargin, TopMargin); a line goes on until it reaches the page's width less the
 * margin, a page until its height less the margin. Where the two margins of a page meet, each byte
 * of text has a line or page of its own; with a margin wider than the page no text is seen. */
#pragma pack(push, 1)
typedef struct FaxPageRequest {
    char TextFile[FAX_PATH_BYTES]; /* with its terminator, or to the last byte */
    uint32_t PageWidth;
    uint32_t PageHeight;
    uint32_t LeftMargin;                /* and right */
    uint32_t TopMargin;                 /* and bottom */
    char FontName[FAX_FONT_NAME_BYTES]; /* cut to 31 bytes; empty: the default font, whatever else
                                           is asked for */
    int32_t PointSize;    /* of the letters; below 0: of a line; 0: the default font's. A size of
                             more pixels than 31 bits hold is the smallest that there is */
    uint32_t XResolution; /* dots an inch */
    uint32_t YResolution;
    uint32_t LineSpacing;             /* besides the height of a line */
    uint32_t TabStops[FAX_TAB_STOPS]; /* from the left margin */
    uint16_t Flags;                   /* of FaxPageFlag */
    LOGFONT* Font; /* null, or the font to take instead of FontName, which then only mustn't be
                      empty; its lfHeight is set to that of PointSize */
} FaxPageRequest;
#pragma pack(pop)

enum FaxPageKind {
    FAX_PAGE_BITMAP = 10, /* pages to be ended with DeleteObject */
    FAX_PAGE_DIB = 11     /* pages to be freed with GlobalFree */
};

enum FaxPageResult {
    FAX_DONE = 0,
    FAX_BAD_ARGUMENT = 1,   /* a null pointer, no room for a page, an unknown kind */
    FAX_TOO_MANY_PAGES = 2, /* the pages made are there */
    FAX_NO_TEXT_FILE = 3,
    FAX_NO_MEMORY = 4 /* for a page, or it is of no size or above that of SetTiffSizeLimits, or
                         `bitmap` is none; the pages made before are there */
};

/* Makes pages from a text file. Gives the number of handles stored in `pages`, which has room for
 * `maxPages`; they are the caller's. `code` (of FaxPageResult) may be null.
 *
 * Of the text the bytes 32 to 126 are drawn. A 13 ends a line, and the byte behind it is thrown
 * away, whatever it is: line ends of one byte break no lines. A 9 goes to the next of the tab
 * stops; the pen stays where that is behind it, and behind the sixteenth. All other bytes are
 * ignored. A line that gets too wide is cut at its last space or ! , - . : ; ? and loses that
 * character; what stood behind it begins the next line, be it on the next page. A line without one
 * is drawn whole. Text that ends where a page does has a blank page behind it, and a text without
 * any has one blank page.
 *
 * With a `bitmap`, of any depth and size, the first page is drawn on that, with what is there
 * showing between the letters; `pages` then has it too, as a bitmap, or a DIB of its depth. A
 * bitmap of 8 bits, whose colours a DIB's table has to hold, becomes one of black and white. With
 * DIBs `bitmap` itself is wiped and drawn on again for the pages that follow. It is never deleted.
 * A DIB that can't be made is a 0 among the pages. */
VELLIM_API uint32_t CreateFaxPageFromASCII(FaxPageRequest* request, uint32_t maxPages,
                                           uint32_t* pages, uint32_t kind, BitmapHandle bitmap,
                                           uint32_t* code);

/* The same for pages of either kind, without a bitmap. */
VELLIM_API uint32_t CreateBMPFaxPageFromASCII(FaxPageRequest* request, uint32_t maxPages,
                                              BitmapHandle* pages, uint32_t* code);
VELLIM_API uint32_t CreateDIBFaxPageFromASCII(FaxPageRequest* request, uint32_t maxPages,
                                              DibHandle* pages, uint32_t* code);

/* The first image of a TIFF file with a page of text on it: a bitmap or DIB of the caller's, or 0
 * where the form can't be loaded. Further pages of text are dropped. `request` should have the
 * form's size and resolution: what goes beyond the form isn't seen. Without text that can be drawn
 * the bitmap is the bare form, and the DIB 0. */
VELLIM_API BitmapHandle BitmapFormOverlay(const char* formPath, FaxPageRequest* request);
VELLIM_API DibHandle DIBFormOverlay(const char* formPath, FaxPageRequest* request);

/* A copy with text on it, which is the caller's, or 0; `bitmap` and `dib` stay as they are. `x` and
 * `y` are in pixels of the screen: the text begins where they are at the image's resolution, and
 * only what lies right of that and below it is drawn to. A resolution of 0 is that of the screen,
 * where letters are of the default size; a DIB's is in its header, cut to whole dots an inch.
 *
 * A 10 moves to the next line where a 13 or 10 is before it; a 13 or 10 alone moves nothing. The
 * name of a font is cut to 31 bytes. A DIB of one bit a pixel gives one of one bit, any other one
 * of the display's depth. */
VELLIM_API BitmapHandle BitmapTextOverlay(BitmapHandle bitmap, int32_t x, int32_t y,
                                          const char* text, const char* fontName, int32_t pointSize,
                                          uint32_t xResolution, uint32_t yResolution);
VELLIM_API DibHandle DIBTextOverlay(DibHandle dib, int32_t x, int32_t y, const char* text,
                                    const char* fontName, int32_t pointSize);

#ifdef __cplusplus
}
#endif

#endif /* VELLIM_FAX_H */
