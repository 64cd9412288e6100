// A device context with a font in it, to measure text.
#pragma once

#include "handles.h"
#include "vellim/graphics.h"
#include "vellim/text.h"

namespace vellim::tool {

using OwnedObject = Owned<GraphicsHandle, 0U, &DeleteObject>;
using OwnedContext = Owned<DeviceContextHandle, 0U, &DeleteDC>;

class FontContext {
  public:
    explicit FontContext(const LOGFONT& font)
        : font_(CreateFontIndirectA(&font)), context_(CreateCompatibleDC(0)) {
        if (font_ && context_) before_ = SelectObject(context_.Get(), font_.Get());
    }
    ~FontContext() {
        if (before_ != 0) SelectObject(context_.Get(), before_);
    }
    FontContext(const FontContext&) = delete;
    FontContext& operator=(const FontContext&) = delete;

    // Whether there is such a font.
    explicit operator bool() const { return before_ != 0; }
    [[nodiscard]] DeviceContextHandle Get() const { return context_.Get(); }

  private:
    OwnedObject font_;
    OwnedContext context_;
    GraphicsHandle before_ = 0;
};

}  // namespace vellim::tool
