// Sizes made of numbers that come from files: computed in 64 bits, checked, then narrowed.
#pragma once

#include <cstdint>
#include <optional>

namespace vellim {

// Bytes of one packed line, (width x bits + 7) / 8, or nothing when `width` or `bits` is negative
// or the result doesn't fit 31 bits.
std::optional<uint32_t> PackedRowBytes(int64_t width, int64_t bits);

// Bytes of one stored row of a DIB, ((width x bits + 31) / 32) x 4, under the same rule.
std::optional<uint32_t> StoredRowBytes(int64_t width, int64_t bits);

// a x b + c, or nothing when a factor is negative or the result doesn't fit 32 bits.
std::optional<uint32_t> CheckedSize(int64_t a, int64_t b, int64_t c = 0);

// Whether a picture of this size is within the limits of SetTiffSizeLimits. A negative number
// isn't.
bool WithinSizeLimits(int32_t width, int32_t height);

}  // namespace vellim
