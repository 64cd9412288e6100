// Where a picture stands in a window: its view, turned, scaled and scrolled, worked out as a set of
// rectangles before its first line is there.
//
// Sizes and places are exact for all that fits in 32 bits; what doesn't is cut to the nearest that
// does, so that figures from damaged files give an odd view and nothing worse.
#pragma once

#include <cstdint>

#include "vellim/screen.h"

namespace vellim {

// Whether a row of the picture remains one: at no turn and at two. Else it becomes a column.
bool RowsStayRows(uint32_t flags);

// Dots an inch of a resolution in pixels a metre; 0 remains 0.
float DotsPerInch(int32_t pixelsPerMetre);

struct BarState {
    int32_t Minimum;
    int32_t Maximum;
    int32_t Position;  // one beyond the range counts as its end
};

// What a view is made from. X and Y are the window's axes throughout: turning a picture doesn't
// exchange its resolutions.
struct ViewRequest {
    uint32_t Flags;
    int32_t ImageWidth;  // as stored; below 0 counts as 0
    int32_t ImageHeight;
    float DeviceDpiX;
    float DeviceDpiY;
    float ImageDpiX;  // 0: the device's
    float ImageDpiY;
    const ZoomRatios* Ratios;  // may be null; read in the zoom view alone
    BarState HorizontalBar;
    BarState VerticalBar;
};

// Which bars a window is to show or hide; numbered as ShowScrollBar has them.
enum class Bars : uint8_t { kHorizontal = 0, kVertical = 1, kBoth = 3 };

// The window that the picture is laid out in.
struct ViewWindow {
    uintptr_t Window;  // handed to the calls below
    RECT (*ClientArea)(uintptr_t window);
    // Shows bars, or hides them and puts their positions to 0; gives the client area that is left.
    RECT (*SetBars)(uintptr_t window, Bars bars, bool shown);
};

// Rectangles in device pixels but for those in pixels of the turned picture.
struct ViewLayout {
    RECT ClientRect;   // from (0, 0)
    RECT ZoomedRect;   // the whole picture at its size on the device, from (0, 0)
    RECT VisibleRect;  // the part of it on show
    RECT PaintRect;    // that part moved to the origin; in the fit view, ImageRect
    RECT ImageRect;    // the whole picture, in its own pixels, from (0, 0)
    RECT SourceRect;   // the part of it on show; rounding may take it beyond the picture's end
    RECT DestRect;     // that part moved to the origin
    float ZoomX;       // device pixels a pixel of the picture
    float ZoomY;
    int32_t ViewportX;  // extents that ImageRect's right and bottom are mapped to; 0 or below where
    int32_t ViewportY;  // nothing is to be seen
    bool HorizontalBarShown;  // a bar that isn't has been hidden
    bool VerticalBarShown;
};

// Lays the picture out from the client area's upper left corner, and sets the window's bars: one is
// shown where the picture is larger than the client area, the horizontal one being placed first.
// Where a bar's range is empty, the view begins at the picture's edge.
ViewLayout LayOutView(const ViewRequest& request, const ViewWindow& window);

}  // namespace vellim
