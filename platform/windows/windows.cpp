// The table of windows, their pixels and their background.
#include "platform/windows/windows.h"

#include <algorithm>
#include <new>
#include <utility>

#include "platform/graphics/device_contexts.h"
#include "platform/graphics/display.h"
#include "platform/graphics/pixel_copy.h"
#include "platform/handle_table.h"
#include "platform/windows/clipboard.h"

namespace vellim {
namespace {

constinit HandleTable<Window, HandleKind::kWindow> windows;

constexpr int32_t kLongestSide = 32767;

bool IsSide(int32_t pixels) {
    return pixels >= 1 && pixels <= kLongestSide;
}

// Pixels filled with the background, all of them to be painted. False, and nothing changed, without
// memory.
bool GivePixels(Window& window, int32_t width, int32_t height, uint32_t bits) {
    std::shared_ptr<Surface> surface = MakeSurface(width, height, bits);
    if (surface == nullptr) return false;
    try {
        window.clientArea = std::make_shared<RECT>();
    } catch (const std::bad_alloc&) {
        return false;
    }
    window.surface = std::move(surface);
    *window.clientArea = ClientAreaOf(window);
    window.update = {};
    FillWithBackground(window, {0, 0, width, height});
    AddToUpdate(window, *window.clientArea);
    return true;
}

bool IsBrush(GraphicsHandle object) {
    return FindObject(object).kind == ObjectKind::Brush;
}

}  // namespace

Window* FindWindow(WindowHandle window) {
    return windows.Find(window);
}

RECT ClientAreaOf(const Window& window) {
    const auto& [horizontal, vertical] = window.bars;
    const int32_t takenRight = vertical.isShown ? window.barSize : 0;
    const int32_t takenBelow = horizontal.isShown ? window.barSize : 0;
    return {0, 0, std::max(window.surface->width - takenRight, 0),
            std::max(window.surface->height - takenBelow, 0)};
}

BrushHandle BackgroundOf(const Window& window) {
    return IsBrush(window.background) ? window.background : WhiteBrush();
}

void FillWithBackground(const Window& window, const RECT& area) {
    DeviceContext context;
    context.surface = window.surface;
    context.palette = FindObject(DefaultPalette()).palette;
    FillWithColor(context, area, ShownColor(context, FindObject(BackgroundOf(window)).brush));
}

uint32_t LiveWindows() {
    return windows.InUse();
}

}  // namespace vellim

using vellim::FindWindow;
using vellim::Window;

WindowHandle CreateMemoryWindow(int32_t width, int32_t height, int32_t barSize) {
    using namespace vellim;
    if (!IsSide(width) || !IsSide(height) || barSize < 0 || barSize > kLongestSide) return 0;
    Window made;
    made.barSize = barSize;
    made.background = WhiteBrush();
    const auto bits = static_cast<uint32_t>(CurrentDisplay().BitsPerPixel);
    if (!GivePixels(made, width, height, bits)) return 0;
    const auto [handle, entry] = windows.Reserve();
    if (handle == 0) return 0;
    *entry = std::move(made);
    windows.Publish(handle);
    return handle;
}

int32_t DestroyWindow(WindowHandle window) {
    using vellim::windows;
    Window* found = FindWindow(window);
    if (found == nullptr || !windows.Withdraw(window)) return 0;
    vellim::CloseClipboardOf(window);
    *found = {};
    windows.Recycle(window);
    return 1;
}

int32_t ResizeWindow(WindowHandle window, int32_t width, int32_t height) {
    using namespace vellim;
    Window* found = FindWindow(window);
    if (found == nullptr || !IsSide(width) || !IsSide(height)) return 0;
    return GivePixels(*found, width, height, found->surface->bits) ? 1 : 0;
}

int32_t GetWindowPixels(WindowHandle window, WindowPixels* pixels) {
    if (pixels == nullptr) return 0;
    *pixels = {};
    const Window* found = FindWindow(window);
    if (found == nullptr) return 0;
    const vellim::Surface& surface = *found->surface;
    const RECT& area = *found->clientArea;
    *pixels = {surface.pixels.get(), area.right, area.bottom, surface.bits, surface.stride};
    return 1;
}

int32_t GetClientRect(WindowHandle window, RECT* rect) {
    if (rect == nullptr) return 0;
    const Window* found = FindWindow(window);
    *rect = found != nullptr ? *found->clientArea : RECT{};
    return found != nullptr ? 1 : 0;
}

uint32_t GetClassLongA(WindowHandle window, int32_t index) {
    const Window* found = FindWindow(window);
    return found != nullptr && index == GCL_HBRBACKGROUND ? vellim::BackgroundOf(*found) : 0;
}

uint32_t SetClassLongA(WindowHandle window, int32_t index, uint32_t value) {
    Window* found = FindWindow(window);
    if (found == nullptr || index != GCL_HBRBACKGROUND || !vellim::IsBrush(value)) return 0;
    const BrushHandle before = vellim::BackgroundOf(*found);
    found->background = value;
    return before;
}
