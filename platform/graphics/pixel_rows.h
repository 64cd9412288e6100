// Rows of pixels of one format made into rows of another. Rows of surfaces and of DIBs differ in
// where they end alone, and that is the caller's business.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "platform/graphics/pixel_format.h"

namespace vellim {

struct PixelConversion {
    enum class Way : uint8_t { Copy, Table, Search };

    Way way = Way::Copy;
    uint32_t fromBits = 24;
    PixelFormat to;
    std::array<uint32_t, 256> pixels{};  // Table: the new pixel for each old one
};

// Each colour becomes the nearest that `to` has; an index keeps its number where both have the same
// colour there.
PixelConversion MakeConversion(const PixelFormat& from, const PixelFormat& to);

// Bytes that hold `width` pixels.
size_t BytesOfPixels(uint32_t bits, uint32_t width);

// Writes `width` pixels and leaves the others of the last byte as they are. The rows don't overlap.
void ConvertRow(const PixelConversion& conversion, const uint8_t* from, uint8_t* to,
                uint32_t width);

// Places one below the other, `step` bytes apart.
struct FromColumn {
    const uint8_t* first;
    ptrdiff_t step;
};
struct ToColumn {
    uint8_t* first;
    ptrdiff_t step;
};

// The same for the first pixels of `count` rows.
void ConvertColumn(const PixelConversion& conversion, FromColumn from, ToColumn to, uint32_t count);

}  // namespace vellim
