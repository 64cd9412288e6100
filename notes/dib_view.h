// Which part of a DIB a window shows, and where.
#pragma once

#include "vellim/graphics.h"
#include "vellim/notes.h"

namespace vellim {

struct DibView {
    RECT Source{};          // of the image, in its pixels
    RECT Place{};           // of the window
    int32_t WorkWidth = 0;  // what the part is scaled to before it is drawn
    int32_t WorkHeight = 0;
    float ScaleX = 1;  // pixels of the device for one of the image, where it isn't fitted
    float ScaleY = 1;
};

// The image as large as the window lets it be, each axis for itself, but of no more pixels than it
// has. Hides the bars.
DibView FitDib(WindowHandle window, DeviceContextHandle context, const BITMAPINFOHEADER& header);

// The image at real size, by the densities of both, times the ratios; where it is larger than the
// window, with a bar and from the scroll position on. `zoom` and `scroll` may be null.
DibView ScrollDib(WindowHandle window, DeviceContextHandle context, const BITMAPINFOHEADER& header,
                  const ScrollRecord* scroll, const ZoomRatios* zoom);

// The part of the window that shows what of `box`, in pixels of the scaled image, is in a scrolled
// view; empty where nothing is.
RECT PlaceInView(const DibView& view, const RECT& box);

}  // namespace vellim
