// Guards for contexts and objects: each puts back on every way out what it took.
#pragma once

#include <utility>

#include "vellim/graphics.h"
#include "vellim/platform.h"

namespace vellim {

// A device context of the display, or one in memory, for the length of a scope. Converts to false
// when there is none to be had.
class ScopedContext {
  public:
    enum class Kind : uint8_t { Display, Memory };

    explicit ScopedContext(Kind kind)
        : kind_(kind), context_(kind == Kind::Display ? GetDC(0) : CreateCompatibleDC(0)) {}
    ~ScopedContext() {
        if (context_ == 0) return;
        if (kind_ == Kind::Display) {
            ReleaseDC(0, context_);
        } else {
            DeleteDC(context_);
        }
    }
    ScopedContext(const ScopedContext&) = delete;
    ScopedContext& operator=(const ScopedContext&) = delete;

    explicit operator bool() const { return context_ != 0; }
    [[nodiscard]] DeviceContextHandle Get() const { return context_; }

  private:
    Kind kind_;
    DeviceContextHandle context_;
};

// A bitmap, palette or brush deleted at the end of the scope, unless it is released.
class OwnedObject {
  public:
    OwnedObject() = default;
    explicit OwnedObject(GraphicsHandle object) : object_(object) {}
    ~OwnedObject() {
        if (object_ != 0) DeleteObject(object_);
    }
    OwnedObject(OwnedObject&& other) noexcept : object_(other.Release()) {}
    OwnedObject& operator=(OwnedObject&&) = delete;
    OwnedObject(const OwnedObject&) = delete;
    OwnedObject& operator=(const OwnedObject&) = delete;

    explicit operator bool() const { return object_ != 0; }
    [[nodiscard]] GraphicsHandle Get() const { return object_; }
    GraphicsHandle Release() { return std::exchange(object_, 0); }

  private:
    GraphicsHandle object_ = 0;
};

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

// An object selected into a context for the length of a scope. Converts to false where there is
// nothing to select or it can't be.
class SelectedObject {
  public:
    SelectedObject(DeviceContextHandle context, GraphicsHandle object)
        : context_(context), before_(object != 0 ? SelectObject(context, object) : 0) {}
    ~SelectedObject() {
        if (before_ != 0) SelectObject(context_, before_);
    }
    SelectedObject(const SelectedObject&) = delete;
    SelectedObject& operator=(const SelectedObject&) = delete;

    explicit operator bool() const { return before_ != 0; }

  private:
    DeviceContextHandle context_;
    GraphicsHandle before_;
};

// A palette selected into a context, as its foreground one, and realised for the length of a scope.
// Without a palette the context keeps its own.
class SelectedPalette {
  public:
    SelectedPalette(DeviceContextHandle context, PaletteHandle palette)
        : context_(context),
          before_(palette != 0 ? SelectPalette(context, palette, kForeground) : 0) {
        RealizePalette(context);
    }
    ~SelectedPalette() {
        if (before_ != 0) SelectPalette(context_, before_, kForeground);
    }
    SelectedPalette(const SelectedPalette&) = delete;
    SelectedPalette& operator=(const SelectedPalette&) = delete;

  private:
    static constexpr int32_t kForeground = 0;

    DeviceContextHandle context_;
    PaletteHandle before_;
};

}  // namespace vellim
