// What becomes of pixels that are copied to a context of another depth.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "platform/device_contexts.h"
#include "platform/pixel_rows.h"

namespace vellim {

// Of one bit, 0 becomes the text colour of the context that is drawn to and 1 its background
// colour. To one bit, what has the background colour of the source becomes 1. Other colours become
// the nearest that there are.
class ColorChange {
  public:
    ColorChange(const DeviceContext& to, const Surface& from, ColorRef sourceBackground);

    [[nodiscard]] bool IsNeeded() const { return change_ != Change::None; }

    // Both rows begin with their first pixel.
    void Apply(const uint8_t* from, uint8_t* to, uint32_t width) const;

  private:
    enum class Change : uint8_t {
        None,
        ByFormat,
        BitsToBytes,
        BitsToTrueColor,
        TrueColorToBackground
    };

    // Pixels of one bit become whole bytes four at a time.
    static constexpr uint32_t kFourPixels = 4;
    static constexpr size_t kMostPixelBytes = 3;
    using FourPixels = std::array<uint8_t, kFourPixels * kMostPixelBytes>;

    void MakeFours(uint32_t zero, uint32_t one, uint32_t pixelBytes);
    template <size_t kPixelBytes>
    void SpreadBits(const uint8_t* from, uint8_t* to, uint32_t width) const;

    Change change_ = Change::None;
    ColorRef background_ = 0;
    std::array<FourPixels, 1U << kFourPixels> fours_{};
    PixelConversion conversion_;
};

}  // namespace vellim
