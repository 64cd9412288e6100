// Products divided.
#include <gtest/gtest.h>

#include <limits>

#include "vellim/platform.h"

namespace {

TEST(MulDiv, RoundsHalvesAwayFromZeroAndRefusesWhatDoesntFit) {
    constexpr int32_t least = std::numeric_limits<int32_t>::min();
    constexpr int32_t most = std::numeric_limits<int32_t>::max();
    const int32_t cases[][4] = {{1, 1, 2, 1},
                                {-1, 1, 2, -1},
                                {1, 3, -2, -2},
                                {-5, -1, -2, -3},
                                {1, 1, 3, 0},
                                {2, 1, -3, -1},
                                {-4, 1, 3, -1},
                                {5, 5, 0, -1},
                                {most, most, most, most},
                                {least, least, least, least},
                                {least, 1, 1, least},
                                {least, 1, -1, -1},
                                {most, 3, 2, -1},
                                {most, least, 1, -1},
                                {1, 1, least, 0},
                                {1 << 30, 1, least, -1}};
    for (const auto& [number, numerator, denominator, result] : cases) {
        EXPECT_EQ(MulDiv(number, numerator, denominator), result)
            << number << " x " << numerator << " / " << denominator;
    }
}

}  // namespace
