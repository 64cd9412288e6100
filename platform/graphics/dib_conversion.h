// What becomes of the pixels of a DIB on a surface, and the other way, kept for the next DIB of the
// same colours: a picture comes in many DIBs of one row.
#pragma once

#include <array>
#include <memory>

#include "platform/graphics/device_contexts.h"
#include "platform/graphics/dib_format.h"
#include "platform/graphics/pixel_rows.h"

namespace vellim {

class DibConversion {
  public:
    enum class Way : uint8_t { ToSurface, FromSurface };

    // That of DIBs like this one in the colours of `context`; good until the next one is asked for.
    static const PixelConversion& For(DeviceContext& context, Way way, const BITMAPINFO* info,
                                      const DibFormat& dib, uint32_t use, uint32_t surfaceBits);

  private:
    static constexpr size_t kMostTableBytes = 256 * sizeof(RGBQUAD);

    // All that the conversion was made of.
    struct Terms {
        Way way = Way::ToSurface;
        uint32_t bits = 0;
        uint32_t colorCount = 0;
        uint32_t use = 0;
        uint32_t surfaceBits = 0;  // 0: there is no conversion yet
        uint32_t displayVersion = 0;
        std::shared_ptr<const Palette> palette;

        bool operator==(const Terms&) const = default;
    };

    static DibConversion& KeptBy(DeviceContext& context);

    Terms terms_;
    std::array<uint8_t, kMostTableBytes> table_{};  // as it stands behind the header
    PixelConversion conversion_;
};

}  // namespace vellim
