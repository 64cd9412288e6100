// A view in a window: what the drivers of TIFF and CALS pictures ask of windows and contexts around
// the painting of their lines.
#pragma once

#include "screen/view_layout.h"

namespace vellim {

// A picture as it is stored. A resolution of 0 stands for the device's.
struct PictureSize {
    int32_t Width;
    int32_t Height;
    float DpiX;
    float DpiY;
};

// Whether both are what they are said to be.
bool IsPaintable(WindowHandle window, DeviceContextHandle context);

// Lays the picture out in the window's client area, at the positions of its scroll bars, which it
// shows and hides.
ViewLayout LayOutInWindow(const PictureSize& picture, WindowHandle window,
                          DeviceContextHandle context, const ZoomRatios* zoom, uint32_t flags);

// The size of the whole picture in that view. The bars stay as they are.
RECT SizeInWindow(const PictureSize& picture, WindowHandle window, DeviceContextHandle context,
                  const ZoomRatios* zoom, uint32_t flags);

// Makes a pixel of the turned picture the context's unit. False where the view has no size: there
// is nothing to draw then, and the unit is a pixel of the device.
bool MapPicture(DeviceContextHandle context, const ViewLayout& view);

// A rectangle in the context's units in pixels of the device.
RECT InPixels(DeviceContextHandle context, const RECT& rect);

// Takes `painted` out of what is drawn to, and fills the rest of the client area with the window's
// background. In pixels of the device, which the context is left with as its unit.
void EraseAround(WindowHandle window, DeviceContextHandle context, const RECT& painted);

}  // namespace vellim
