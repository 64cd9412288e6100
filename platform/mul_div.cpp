// A product divided with nothing lost in between.
#include <cstdlib>
#include <limits>

#include "vellim/platform.h"

int32_t MulDiv(int32_t number, int32_t numerator, int32_t denominator) {
    constexpr int32_t failure = -1;
    if (denominator == 0) return failure;
    const int64_t product = int64_t{number} * numerator;
    const int64_t divisor = std::abs(int64_t{denominator});
    const int64_t size = (std::abs(product) + divisor / 2) / divisor;
    const int64_t result = (product < 0) != (denominator < 0) ? -size : size;
    using Limits = std::numeric_limits<int32_t>;
    if (result < Limits::min() || result > Limits::max()) return failure;
    return static_cast<int32_t>(result);
}
