#include "platform/graphics/ink.h"

#include <algorithm>
#include <bit>

#include "platform/graphics/bit_rows.h"

namespace vellim {
namespace {

constexpr uint32_t kByteBits = 8;
constexpr uint32_t kTrueColorBits = 24;
constexpr size_t kTrueColorBytes = 3;

// The first bit from `place` on that is `value`, or `end`.
size_t FindBit(const uint8_t* row, size_t place, size_t end, bool value) {
    const uint32_t inverted = value ? 0 : 0xFF;
    while (place < end) {
        const auto shift = static_cast<uint32_t>(place % kByteBits);
        const uint32_t bits = (row[place / kByteBits] ^ inverted) << shift & 0xFFU;
        if (bits != 0)
            return std::min(
                end, place + static_cast<size_t>(std::countl_zero(static_cast<uint8_t>(bits))));
        place += kByteBits - shift;
    }
    return end;
}

// One by one the runs of ink in a row.
void DrawBits(uint8_t* to, uint32_t bits, size_t left, const uint8_t* row, size_t first,
              size_t count, uint32_t pixel) {
    const size_t end = first + count;
    for (size_t run = FindBit(row, first, end, true); run < end;) {
        const size_t runEnd = FindBit(row, run, end, false);
        FillPixels(to, bits, left + (run - first), runEnd - run, pixel);
        run = FindBit(row, runEnd, end, true);
    }
}

uint8_t Mixed(uint32_t before, uint32_t color, uint32_t ink) {
    constexpr uint32_t full = 255;
    return static_cast<uint8_t>((before * (full - ink) + color * ink + full / 2) / full);
}

void MixBytes(uint8_t* to, const uint8_t* ink, size_t count, uint32_t pixel) {
    for (; count != 0; count--, ink++, to += kTrueColorBytes) {
        if (*ink == 0) continue;
        to[0] = Mixed(to[0], pixel & 0xFFU, *ink);
        to[1] = Mixed(to[1], pixel >> kByteBits & 0xFFU, *ink);
        to[2] = Mixed(to[2], pixel >> 2 * kByteBits & 0xFFU, *ink);
    }
}

}  // namespace

Shades ShadesOn(uint32_t bits) {
    return bits == kTrueColorBits ? Shades::All : Shades::Two;
}

void DrawInk(const Surface& surface, const RECT& part, const PlacedPicture& placed,
             uint32_t pixel) {
    const auto left = static_cast<size_t>(part.left);
    const auto first = static_cast<size_t>(part.left - placed.left);
    const auto count = static_cast<size_t>(part.right - part.left);
    const bool isMixed = ShadesOn(surface.bits) == Shades::All;
    for (int32_t y = part.top; y < part.bottom; y++) {
        const uint8_t* row = placed.picture->Row(static_cast<int32_t>(y - placed.top));
        if (isMixed) {
            MixBytes(surface.Row(y) + left * kTrueColorBytes, row + first, count, pixel);
        } else {
            DrawBits(surface.Row(y), surface.bits, left, row, first, count, pixel);
        }
    }
}

}  // namespace vellim
