// Bare CCITT data from a memory stream, for the four targets of fax decoders.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "vellim/codec.h"

namespace vellim::fuzz {

// Input: a byte of settings, width and height (two bytes each, low byte first, signed), data.
// Settings: bit 0 is the FillOrder (set: 2), the others pick one of `keys`.
//
// Decodes the data as it is, and again with every byte mirrored and the other FillOrder: both must
// come out alike.
void FuzzCcitt(const uint8_t* data, size_t size, std::span<const CompressionKey> keys);

}  // namespace vellim::fuzz
