// The widths of characters, for those who measure much text.
#pragma once

#include <cstdint>
#include <memory>

#include "platform/graphics/scaled_fonts.h"

namespace vellim {

// Of the font that the context has now; for the thread that makes it.
class TextWidths {
  public:
    explicit TextWidths(DeviceContextHandle context);

    // False for no context, or without memory: every width is 0 then.
    explicit operator bool() const { return font_ != nullptr; }

    // What GetTextExtentPointA gives for this byte alone, in units of the context. Where a unit is
    // a pixel, as it is on pages, the sum of these is what it gives for any text.
    [[nodiscard]] int32_t Of(uint8_t byte) const {
        if (font_ == nullptr) return 0;
        const int32_t pixels = font_->Advance(byte);
        return isInPixels_ ? pixels : UnitsAcross(mapping_, pixels);
    }

  private:
    std::shared_ptr<ScaledFont> font_;
    Mapping mapping_;
    bool isInPixels_ = true;
};

// The pixels that a text takes across.
int64_t PixelsAcross(ScaledFont& font, const char* text, uint32_t count);

}  // namespace vellim
