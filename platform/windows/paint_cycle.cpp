// A paint of a window: what was invalid, and a context to paint it with.
#include "platform/windows/windows.h"
#include "vellim/platform.h"

DeviceContextHandle BeginPaint(WindowHandle window, PAINTSTRUCT* paint) {
    if (paint == nullptr) return 0;
    *paint = {};
    vellim::Window* found = vellim::FindWindow(window);
    if (found == nullptr) return 0;
    const DeviceContextHandle context = GetDC(window);
    if (context == 0) return 0;
    const bool isInvalid = IsRectEmpty(&found->update) == 0;
    *paint = {context, isInvalid ? 1 : 0, isInvalid ? found->update : *found->clientArea};
    found->update = {};
    return context;
}

int32_t EndPaint(WindowHandle window, const PAINTSTRUCT* paint) {
    return paint != nullptr ? ReleaseDC(window, paint->hdc) : 0;
}
