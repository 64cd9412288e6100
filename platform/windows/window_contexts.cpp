// Contexts of the display and of windows, which are lent and given back in the same way.
#include <utility>

#include "platform/graphics/device_contexts.h"
#include "platform/windows/windows.h"
#include "vellim/platform.h"

DeviceContextHandle GetDC(WindowHandle window) {
    using namespace vellim;
    constexpr WindowHandle display = 0;
    if (window == display) return AddContext({});
    const Window* found = FindWindow(window);
    if (found == nullptr) return 0;
    DeviceContext made;
    made.kind = ContextKind::Window;
    made.window = window;
    made.surface = found->surface;
    made.clientArea = found->clientArea;
    return AddContext(std::move(made));
}

// A context of a window that is no more is given back all the same.
int32_t ReleaseDC(WindowHandle window, DeviceContextHandle context) {
    const vellim::DeviceContext* found = vellim::FindContext(context);
    if (found == nullptr || found->kind == vellim::ContextKind::Memory) return 0;
    return found->window == window && vellim::RemoveContext(context, found->kind) ? 1 : 0;
}
