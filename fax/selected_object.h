// An object selected into a context until the end of the scope.
#pragma once

#include "vellim/graphics.h"

namespace vellim {

// Converts to false where there is nothing to select or it can't be.
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

}  // namespace vellim
