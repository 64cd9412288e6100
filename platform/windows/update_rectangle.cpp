// What of a window is to be painted again: one rectangle around it all.
#include <algorithm>

#include "platform/windows/windows.h"

namespace vellim {
namespace {

RECT BoxAround(const RECT& a, const RECT& b) {
    if (IsRectEmpty(&a) != 0) return b;
    return {std::min(a.left, b.left), std::min(a.top, b.top), std::max(a.right, b.right),
            std::max(a.bottom, b.bottom)};
}

// What is left of a rectangle without a part of it, or all of it where that is no rectangle.
RECT Without(const RECT& whole, const RECT& part) {
    RECT left = whole;
    if (part.left == whole.left && part.right == whole.right) {
        if (part.top == whole.top) {
            left.top = part.bottom;
        } else if (part.bottom == whole.bottom) {
            left.bottom = part.top;
        }
    } else if (part.top == whole.top && part.bottom == whole.bottom) {
        if (part.left == whole.left) {
            left.left = part.right;
        } else if (part.right == whole.right) {
            left.right = part.left;
        }
    }
    return IsRectEmpty(&left) != 0 ? RECT{} : left;
}

}  // namespace

void AddToUpdate(Window& window, const RECT& area) {
    RECT added{};
    if (IntersectRect(&added, &area, window.clientArea.get()) != 0)
        window.update = BoxAround(window.update, added);
}

}  // namespace vellim

int32_t InvalidateRect(WindowHandle window, const RECT* rect, int32_t /*erase*/) {
    vellim::Window* found = vellim::FindWindow(window);
    if (found == nullptr) return 0;
    vellim::AddToUpdate(*found, rect != nullptr ? *rect : *found->clientArea);
    return 1;
}

int32_t ValidateRect(WindowHandle window, const RECT* rect) {
    vellim::Window* found = vellim::FindWindow(window);
    if (found == nullptr) return 0;
    RECT part = found->update;
    if (rect == nullptr || IntersectRect(&part, &found->update, rect) != 0)
        found->update = vellim::Without(found->update, part);
    return 1;
}

int32_t GetUpdateRect(WindowHandle window, RECT* rect, int32_t /*erase*/) {
    const vellim::Window* found = vellim::FindWindow(window);
    const RECT update = found != nullptr ? found->update : RECT{};
    if (rect != nullptr) *rect = update;
    return IsRectEmpty(&update) != 0 ? 0 : 1;
}
