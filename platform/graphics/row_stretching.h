// Rows of pixels that fall together, joined into one, and a row stretched.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "platform/graphics/pixel_groups.h"

namespace vellim {

// How the pixels of a group become one: their numbers by AND or by OR.
enum class Joining : uint8_t { And, Or };

// Bytes that must be readable behind a row that is stretched.
inline constexpr size_t kRowPadding = 8;

// Writes a pixel for each group, which isn't empty, from the first bit of `to` on, and zero bits to
// the end of the last byte.
void StretchRow(uint32_t bits, const uint8_t* from, std::span<const PixelGroup> groups,
                Joining joining, uint8_t* to);

}  // namespace vellim
