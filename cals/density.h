// Pixels an inch, as CALS counts them, and pixels a metre, as a DIB does; rounded.
#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>

namespace vellim {

inline constexpr double kInchesPerMetre = 39.37;

// A figure from a file that a DIB can't hold becomes the largest that it can.
inline int32_t PixelsPerMetre(int32_t pixelsPerInch) {
    using Limits = std::numeric_limits<int32_t>;
    const double rounded = pixelsPerInch * kInchesPerMetre + 0.5;
    return static_cast<int32_t>(std::clamp<double>(rounded, Limits::min(), Limits::max()));
}

inline int32_t PixelsPerInch(int32_t pixelsPerMetre) {
    const double rounded = pixelsPerMetre / kInchesPerMetre + 0.5;
    return static_cast<int32_t>(rounded);
}

}  // namespace vellim
