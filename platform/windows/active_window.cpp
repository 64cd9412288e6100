// The window that each thread calls its active one.
#include "platform/windows/windows.h"

namespace vellim {
namespace {

constexpr WindowHandle kNoWindow = 0;

thread_local WindowHandle active = kNoWindow;  // may be destroyed by now

}  // namespace
}  // namespace vellim

WindowHandle GetActiveWindow() {
    using namespace vellim;
    return FindWindow(active) != nullptr ? active : kNoWindow;
}

// A number that is no window gives 0 and changes nothing.
WindowHandle SetActiveWindow(WindowHandle window) {
    using namespace vellim;
    if (window != kNoWindow && FindWindow(window) == nullptr) return kNoWindow;
    const WindowHandle before = GetActiveWindow();
    active = window;
    return before;
}
