/* Windows and the clipboard, as far as painting and copying need them.
 *
 * A window is pixels in memory that a host shows where it likes, with a client area, two scroll
 * bars and a background. A bar that is shown takes its size from the client area's right or lower
 * edge. Positions and ranges are kept for the host, which draws the bars and moves them. A context
 * of the window (GetDC) draws to the client area alone, as it is at that moment.
 *
 * Windows are 32-bit names; a stale or foreign one is refused. Results are 1 and 0 where nothing
 * else is said. A window is for one thread at a time. */
#ifndef VELLIM_WINDOWS_H
#define VELLIM_WINDOWS_H

#include "vellim/base.h"
#include "vellim/graphics.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Windows. ---- */

/* A window of so many pixels in the display's format, at most 32,767 a side, filled with its
 * background, bars hidden. It keeps that format when the display changes. A bar is `barSize` pixels
 * thick, at most 32,767; 0 lets it lie over the client area. 0 for sizes that make no sense or
 * without memory. */
VELLIM_API WindowHandle CreateMemoryWindow(int32_t width, int32_t height, int32_t barSize);
VELLIM_API int32_t DestroyWindow(WindowHandle window);

/* Gives the window new pixels, filled with its background, and makes all of it invalid. Contexts
 * got before draw on the old ones. On failure the window keeps what it has. */
VELLIM_API int32_t ResizeWindow(WindowHandle window, int32_t width, int32_t height);

/* The pixels of the client area. They stay where they are until the window is resized or destroyed.
 * Rows stand top row first; of 24 bits a pixel is blue, green, red, of 8 an index into the
 * display's palette (GetSystemPaletteEntries), of 1 white where it is set, the leftmost pixel in
 * the high bit. */
typedef struct WindowPixels {
    const uint8_t* Bits;
    int32_t Width;
    int32_t Height;
    uint32_t BitsPerPixel;
    uint32_t RowBytes; /* from one row to the next */
} WindowPixels;
VELLIM_API int32_t GetWindowPixels(WindowHandle window, WindowPixels* pixels);

/* From (0, 0). */
VELLIM_API int32_t GetClientRect(WindowHandle window, RECT* rect);

/* The brush that a window's background is painted with. A new window's is white; one set by the
 * host stays the host's, and once that is deleted white stands in for it. Setting gives the brush
 * before. 0 for another index, or something to set that is no brush. */
enum { GCL_HBRBACKGROUND = -10 };
VELLIM_API uint32_t GetClassLongA(WindowHandle window, int32_t index);
VELLIM_API uint32_t SetClassLongA(WindowHandle window, int32_t index, uint32_t value);

/* The calling thread's active window, or 0, also where that was destroyed. SetActiveWindow gives
 * the one before; 0 sets none. */
VELLIM_API WindowHandle GetActiveWindow(void);
VELLIM_API WindowHandle SetActiveWindow(WindowHandle window);

/* What of the client area is to be painted again, kept as one rectangle around it all; a new window
 * begins with the whole. Null stands for the whole area. ValidateRect takes a part away where a
 * rectangle is left, and otherwise nothing. GetUpdateRect gives 1 where there is something, and its
 * rectangle, which may be null, else 0 and an empty one. `erase` is not looked at: none of these
 * paints. */
VELLIM_API int32_t InvalidateRect(WindowHandle window, const RECT* rect, int32_t erase);
VELLIM_API int32_t ValidateRect(WindowHandle window, const RECT* rect);
VELLIM_API int32_t GetUpdateRect(WindowHandle window, RECT* rect, int32_t erase);

/* A paint of what is invalid. */
typedef struct PAINTSTRUCT {
    DeviceContextHandle hdc;
    int32_t fErase; /* 1: the background is to be filled too */
    RECT rcPaint;   /* what was invalid; the whole client area where nothing was */
} PAINTSTRUCT;

/* Gives a context of the window, on which all of the client area may be drawn, and makes the window
 * valid; 0 on failure. EndPaint gives the context back. */
VELLIM_API DeviceContextHandle BeginPaint(WindowHandle window, PAINTSTRUCT* paint);
VELLIM_API int32_t EndPaint(WindowHandle window, const PAINTSTRUCT* paint);

/* ---- Scroll bars. ---- */

enum ScrollBar { SB_HORZ = 0, SB_VERT = 1, SB_BOTH = 3 };

/* A bar begins with a range from 0 to 100 at position 0. A position beyond the range becomes its
 * nearest end, also where the range changes. A minimum above the maximum is refused. `redraw` is
 * not looked at: the host draws the bars. */
VELLIM_API int32_t SetScrollRange(WindowHandle window, int32_t bar, int32_t minimum,
                                  int32_t maximum, int32_t redraw);
VELLIM_API int32_t GetScrollRange(WindowHandle window, int32_t bar, int32_t* minimum,
                                  int32_t* maximum);

/* Gives the position before, or 0. */
VELLIM_API int32_t SetScrollPos(WindowHandle window, int32_t bar, int32_t position, int32_t redraw);
VELLIM_API int32_t GetScrollPos(WindowHandle window, int32_t bar);

/* Shows or hides a bar, or both. The client area changes with it and what it gains is filled with
 * the background and made invalid; nothing is painted within the call. */
VELLIM_API int32_t ShowScrollBar(WindowHandle window, int32_t bar, int32_t show);

/* Whether a bar is shown. */
VELLIM_API int32_t IsScrollBarShown(WindowHandle window, int32_t bar);

/* ---- The clipboard of the process. ---- */

enum ClipboardFormat { CF_BITMAP = 2 };

/* The clipboard is open for one window (which may be 0) and thread at a time; another's
 * OpenClipboard gives 0, while the same again gives 1. The other calls need it open for the calling
 * thread. It is closed when its window is destroyed or its thread ends. */
VELLIM_API int32_t OpenClipboard(WindowHandle window);
VELLIM_API int32_t CloseClipboard(void);

/* Ends all that the clipboard holds. */
VELLIM_API int32_t EmptyClipboard(void);

/* The clipboard owns the bitmap from here on, and the one before it is deleted. Gives it, or 0 with
 * the caller still its owner: for a format other than CF_BITMAP, or something that is no bitmap or
 * one of the system's own. */
VELLIM_API GraphicsHandle SetClipboardData(uint32_t format, GraphicsHandle data);

/* Stays the clipboard's; 0 where there is none. */
VELLIM_API GraphicsHandle GetClipboardData(uint32_t format);

/* Needs no open clipboard. */
VELLIM_API int32_t IsClipboardFormatAvailable(uint32_t format);

#ifdef __cplusplus
}
#endif

#endif /* VELLIM_WINDOWS_H */
