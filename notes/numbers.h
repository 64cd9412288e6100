// Places on an image, kept to 32 bits: what lies beyond them stays at their edge.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace vellim {

inline int32_t Narrowed(int64_t value) {
    using Limits = std::numeric_limits<int32_t>;
    return static_cast<int32_t>(std::clamp<int64_t>(value, Limits::min(), Limits::max()));
}

// Adds a half and drops the fraction, so that halves go towards the larger number. What is no
// number, as the share of an image without pixels, is 0.
inline int32_t Rounded(double value) {
    using Limits = std::numeric_limits<int32_t>;
    if (std::isnan(value)) return 0;
    return static_cast<int32_t>(std::clamp<double>(value + 0.5, Limits::min(), Limits::max()));
}

}  // namespace vellim
