#include "screen/window_view.h"

#include "platform/windows/windows.h"
#include "vellim/platform.h"
#include "vellim/windows.h"

namespace vellim {
namespace {

RECT ClientArea(WindowHandle window) {
    RECT area{};
    GetClientRect(window, &area);
    return area;
}

RECT AreaNow(uintptr_t window) {
    return ClientArea(static_cast<WindowHandle>(window));
}

// What a bar uncovers or covers is part of the paint under way, so nothing is left to be painted
// again for its sake.
RECT SetBarsOf(uintptr_t handle, Bars bars, bool shown) {
    constexpr int32_t noRedraw = 0;
    const auto window = static_cast<WindowHandle>(handle);
    ShowScrollBar(window, static_cast<int32_t>(bars), shown ? 1 : 0);
    if (!shown && bars != Bars::kVertical) SetScrollPos(window, SB_HORZ, 0, noRedraw);
    if (!shown && bars != Bars::kHorizontal) SetScrollPos(window, SB_VERT, 0, noRedraw);
    ValidateRect(window, nullptr);
    return ClientArea(window);
}

// The client area as it would be: without bars it is the whole window. How large it is with them
// doesn't matter to the picture's size.
RECT LeaveBars(uintptr_t handle, Bars bars, bool shown) {
    const Window* window = FindWindow(static_cast<WindowHandle>(handle));
    if (window == nullptr || bars != Bars::kBoth || shown) return AreaNow(handle);
    return {0, 0, window->surface->width, window->surface->height};
}

BarState StateOfBar(WindowHandle window, int32_t bar) {
    BarState state{};
    GetScrollRange(window, bar, &state.Minimum, &state.Maximum);
    state.Position = GetScrollPos(window, bar);
    return state;
}

ViewRequest RequestFor(const PictureSize& picture, WindowHandle window, DeviceContextHandle context,
                       const ZoomRatios* zoom, uint32_t flags) {
    ViewRequest request{};
    request.Flags = flags;
    request.ImageWidth = picture.Width;
    request.ImageHeight = picture.Height;
    request.DeviceDpiX = static_cast<float>(GetDeviceCaps(context, LOGPIXELSX));
    request.DeviceDpiY = static_cast<float>(GetDeviceCaps(context, LOGPIXELSY));
    request.ImageDpiX = picture.DpiX;
    request.ImageDpiY = picture.DpiY;
    request.Ratios = zoom;
    request.HorizontalBar = StateOfBar(window, SB_HORZ);
    request.VerticalBar = StateOfBar(window, SB_VERT);
    return request;
}

}  // namespace

bool IsPaintable(WindowHandle window, DeviceContextHandle context) {
    RECT client{};
    return GetClientRect(window, &client) != 0 && GetDeviceCaps(context, PLANES) != 0;
}

ViewLayout LayOutInWindow(const PictureSize& picture, WindowHandle window,
                          DeviceContextHandle context, const ZoomRatios* zoom, uint32_t flags) {
    return LayOutView(RequestFor(picture, window, context, zoom, flags),
                      {window, AreaNow, SetBarsOf});
}

RECT SizeInWindow(const PictureSize& picture, WindowHandle window, DeviceContextHandle context,
                  const ZoomRatios* zoom, uint32_t flags) {
    return LayOutView(RequestFor(picture, window, context, zoom, flags),
                      {window, AreaNow, LeaveBars})
        .ZoomedRect;
}

bool MapPicture(DeviceContextHandle context, const ViewLayout& view) {
    SetMapMode(context, MM_ANISOTROPIC);
    SetWindowOrgEx(context, 0, 0, nullptr);
    SetViewportOrgEx(context, 0, 0, nullptr);
    const RECT& image = view.ImageRect;
    const bool isSeen =
        image.right > 0 && image.bottom > 0 && view.ViewportX > 0 && view.ViewportY > 0;
    SetWindowExtEx(context, isSeen ? image.right : 1, isSeen ? image.bottom : 1, nullptr);
    SetViewportExtEx(context, isSeen ? view.ViewportX : 1, isSeen ? view.ViewportY : 1, nullptr);
    return isSeen;
}

RECT InPixels(DeviceContextHandle context, const RECT& rect) {
    POINT corners[] = {{rect.left, rect.top}, {rect.right, rect.bottom}};
    LPtoDP(context, corners, 2);
    return {corners[0].x, corners[0].y, corners[1].x, corners[1].y};
}

void EraseAround(WindowHandle window, DeviceContextHandle context, const RECT& painted) {
    SetMapMode(context, MM_TEXT);
    ExcludeClipRect(context, painted.left, painted.top, painted.right, painted.bottom);
    const GraphicsHandle brush = SelectObject(context, GetClassLongA(window, GCL_HBRBACKGROUND));
    const RECT client = ClientArea(window);
    PatBlt(context, client.left, client.top, client.right - client.left + 1,
           client.bottom - client.top + 1, PATCOPY);
    if (brush != 0) SelectObject(context, brush);
}

}  // namespace vellim
