// Guards for a window's context and for what is selected into one.
#pragma once

#include "vellim/graphics.h"
#include "vellim/platform.h"

namespace vellim {

// A window's context for the length of a scope. Converts to false when there is none to be had.
class WindowContext {
  public:
    explicit WindowContext(WindowHandle window) : window_(window), context_(GetDC(window)) {}
    ~WindowContext() {
        if (context_ != 0) ReleaseDC(window_, context_);
    }
    WindowContext(const WindowContext&) = delete;
    WindowContext& operator=(const WindowContext&) = delete;

    explicit operator bool() const { return context_ != 0; }
    [[nodiscard]] DeviceContextHandle Get() const { return context_; }

  private:
    WindowHandle window_;
    DeviceContextHandle context_;
};

// A bitmap selected into a context in memory for the length of a scope. Converts to false when it
// couldn't be.
class SelectedBitmap {
  public:
    SelectedBitmap(DeviceContextHandle context, BitmapHandle bitmap)
        : context_(context), before_(bitmap != 0 ? SelectObject(context, bitmap) : 0) {}
    ~SelectedBitmap() {
        if (before_ != 0) SelectObject(context_, before_);
    }
    SelectedBitmap(const SelectedBitmap&) = delete;
    SelectedBitmap& operator=(const SelectedBitmap&) = delete;

    explicit operator bool() const { return before_ != 0; }

  private:
    DeviceContextHandle context_;
    GraphicsHandle before_;
};

}  // namespace vellim
