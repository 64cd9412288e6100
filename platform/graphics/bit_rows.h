// Rows of pixels as strings of bits, at any bit on either side.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

namespace vellim {

enum class PixelOperation : uint8_t { Copy, CopyInverted, Or, And, ExclusiveOr };

// That of a raster operation which takes pixels from a source; nothing for any other.
std::optional<PixelOperation> OperationOf(uint32_t rasterOperation);

// A place in a row, counted from the high bit of its first byte.
struct BitPlace {
    uint8_t* bytes;
    size_t bit;
};

struct ConstBitPlace {
    const uint8_t* bytes;
    size_t bit;
};

// Joins `count` bits of one row into another. No byte without such a bit is read or written.
void CombineBits(BitPlace to, ConstBitPlace from, size_t count, PixelOperation operation);

// Fills `count` pixels of `bits` bits from pixel `first` of a row on.
void FillPixels(uint8_t* row, uint32_t bits, size_t first, size_t count, uint32_t pixel);

}  // namespace vellim
