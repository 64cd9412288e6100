// The windows: what a handle names, and what the calls about them share.
#pragma once

#include <array>
#include <cstdint>
#include <memory>

#include "platform/graphics/surface.h"
#include "vellim/windows.h"

namespace vellim {

struct ScrollBarState {
    int32_t minimum = 0;
    int32_t maximum = 100;
    int32_t position = 0;
    bool isShown = false;
};

struct Window {
    std::shared_ptr<Surface> surface;

    // From (0, 0). Contexts of these pixels share it, so that a bar that comes or goes tells in
    // those already out. New pixels come with an area of their own.
    std::shared_ptr<RECT> clientArea;

    int32_t barSize = 0;
    std::array<ScrollBarState, 2> bars;  // by SB_HORZ and SB_VERT
    BrushHandle background = 0;          // may be deleted by now
    RECT update{};                       // within the client area, all 0 where empty
};

// Null for a number that is no window. The window lives until it is destroyed.
Window* FindWindow(WindowHandle window);

// The window less the bars that are shown.
RECT ClientAreaOf(const Window& window);

// The brush in force: white stands in for one that is no more.
BrushHandle BackgroundOf(const Window& window);
void FillWithBackground(const Window& window, const RECT& area);

// Adds a rectangle, as far as the client area goes, to what is to be painted.
void AddToUpdate(Window& window, const RECT& area);

// Windows not yet destroyed in the whole process.
uint32_t LiveWindows();

}  // namespace vellim
