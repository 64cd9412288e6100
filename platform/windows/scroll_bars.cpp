// Scroll bars: figures that are kept for the host, and the room that the bars take.
#include <algorithm>
#include <utility>

#include "platform/windows/windows.h"

namespace vellim {
namespace {

// Null for what is no window or not one bar.
ScrollBarState* FindBar(WindowHandle window, int32_t bar) {
    Window* found = FindWindow(window);
    if (found == nullptr || (bar != SB_HORZ && bar != SB_VERT)) return nullptr;
    return &found->bars[static_cast<size_t>(bar)];
}

int32_t WithinRange(const ScrollBarState& bar, int32_t position) {
    return std::clamp(position, bar.minimum, bar.maximum);
}

void UncoverArea(Window& window, const RECT& area) {
    if (IsRectEmpty(&area) != 0) return;
    FillWithBackground(window, area);
    AddToUpdate(window, area);
}

void FitClientArea(Window& window) {
    const RECT before = std::exchange(*window.clientArea, ClientAreaOf(window));
    const RECT& now = *window.clientArea;
    IntersectRect(&window.update, &window.update, &now);
    UncoverArea(window, {before.right, 0, now.right, now.bottom});
    UncoverArea(window, {0, before.bottom, now.right, now.bottom});
}

}  // namespace
}  // namespace vellim

using vellim::FindBar;
using vellim::ScrollBarState;

int32_t SetScrollRange(WindowHandle window, int32_t bar, int32_t minimum, int32_t maximum,
                       int32_t /*redraw*/) {
    ScrollBarState* found = FindBar(window, bar);
    if (found == nullptr || minimum > maximum) return 0;
    found->minimum = minimum;
    found->maximum = maximum;
    found->position = vellim::WithinRange(*found, found->position);
    return 1;
}

int32_t GetScrollRange(WindowHandle window, int32_t bar, int32_t* minimum, int32_t* maximum) {
    if (minimum == nullptr || maximum == nullptr) return 0;
    *minimum = *maximum = 0;
    const ScrollBarState* found = FindBar(window, bar);
    if (found == nullptr) return 0;
    *minimum = found->minimum;
    *maximum = found->maximum;
    return 1;
}

int32_t SetScrollPos(WindowHandle window, int32_t bar, int32_t position, int32_t /*redraw*/) {
    ScrollBarState* found = FindBar(window, bar);
    if (found == nullptr) return 0;
    return std::exchange(found->position, vellim::WithinRange(*found, position));
}

int32_t GetScrollPos(WindowHandle window, int32_t bar) {
    const ScrollBarState* found = FindBar(window, bar);
    return found != nullptr ? found->position : 0;
}

int32_t ShowScrollBar(WindowHandle window, int32_t bar, int32_t show) {
    vellim::Window* found = vellim::FindWindow(window);
    if (found == nullptr || (bar != SB_HORZ && bar != SB_VERT && bar != SB_BOTH)) return 0;
    auto& [horizontal, vertical] = found->bars;
    if (bar != SB_VERT) horizontal.isShown = show != 0;
    if (bar != SB_HORZ) vertical.isShown = show != 0;
    vellim::FitClientArea(*found);
    return 1;
}

int32_t IsScrollBarShown(WindowHandle window, int32_t bar) {
    const ScrollBarState* found = FindBar(window, bar);
    return found != nullptr && found->isShown ? 1 : 0;
}
