// Pixels in memory: those of a device bitmap or of a window.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>

#include "vellim/graphics.h"

namespace vellim {

// Rows top row first, each on a 2-byte boundary, the leftmost pixel in the high bits; of 24 bits
// blue, green, red. 1, 4, 8 or 24 bits a pixel.
struct Surface {
    struct FreePixels {
        void operator()(uint8_t* bytes) const { std::free(bytes); }  // NOLINT(*-no-malloc)
    };

    int32_t width = 0;
    int32_t height = 0;
    uint32_t bits = 1;
    uint32_t stride = 0;
    std::unique_ptr<uint8_t, FreePixels> pixels;

    [[nodiscard]] uint8_t* Row(int32_t y) const {
        return pixels.get() + static_cast<size_t>(y) * stride;
    }
};

// All pixels zero. Null for a side below 1, a depth that isn't served, or without memory.
std::shared_ptr<Surface> MakeSurface(int32_t width, int32_t height, uint32_t bits);

// The colours that the pixels of a surface stand for, as 0x00BBGGRR. A pixel is its index, and at
// 24 bits its blue, green and red bytes as a number (blue lowest).
ColorRef ColorOfPixel(uint32_t bits, uint32_t pixel);

// The pixel of the nearest colour: of one bit the nearer of black and white.
uint32_t NearestPixel(uint32_t bits, ColorRef color);

}  // namespace vellim
