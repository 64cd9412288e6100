// What the pixels of a surface or of a DIB stand for, and the pixel nearest to a colour.
#pragma once

#include <array>
#include <cstdint>

#include "platform/graphics/graphics_objects.h"
#include "vellim/graphics.h"

namespace vellim {

// Up to 8 bits a pixel is the number of a colour. Of 24 bits it is a colour, and there are none
// here.
struct PixelFormat {
    uint32_t bits = 24;
    uint32_t colorCount = 0;             // at most 1 << bits
    std::array<ColorRef, 256> colors{};  // black from colorCount on
};

// Between a colour and a pixel of 24 bits.
constexpr uint32_t SwapRedAndBlue(uint32_t color) {
    return (color & 0xFFU) << 16U | (color & 0xFF00U) | (color >> 16U & 0xFFU);
}

// The format of surfaces of 1, 4, 8 or 24 bits a pixel.
PixelFormat SurfaceFormat(uint32_t bits);

// The number of the first of the colours of `format` that are nearest to `color`, which has no high
// byte. Up to 8 bits.
uint32_t NearestIndex(const PixelFormat& format, ColorRef color);

// The same for many colours in a row: what was found once is remembered from call to call. It is
// the thread's own, and good until the thread asks for that of another format.
class ColorSearch {
  public:
    static ColorSearch& For(const PixelFormat& format);

    uint32_t Nearest(ColorRef color) {
        uint32_t& known = known_[SlotOf(color)];
        if (known >> kIndexBits != color) known = color << kIndexBits | Find(color);
        return known & kIndexMask;
    }

  private:
    static constexpr uint32_t kIndexBits = 8;
    static constexpr uint32_t kIndexMask = (1U << kIndexBits) - 1;
    static constexpr uint32_t kSlotBits = 12;

    static uint32_t SlotOf(ColorRef color) {
        constexpr uint32_t spread = 0x9E3779B1;  // 2^32 over the golden ratio
        return color * spread >> (32 - kSlotBits);
    }

    void Prepare(const PixelFormat& format);
    [[nodiscard]] uint32_t Find(ColorRef color) const;

    uint32_t count_ = 0;
    std::array<ColorRef, 256> colors_{};
    std::array<int16_t, 256> red_{}, green_{}, blue_{};
    std::array<uint32_t, 1U << kSlotBits> known_{};  // a colour and its index: each of them is true
};

}  // namespace vellim
