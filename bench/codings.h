// The codings that pages are measured in.
#pragma once

#include "bench/pages.h"

namespace vellim::bench {

inline constexpr Coding kRaw = {"uncompressed", COMPRESSION_NONE, 0};
inline constexpr Coding kPackBits = {"PackBits", COMPRESSION_PACKBITS, 0};
inline constexpr Coding kLzw = {"LZW", COMPRESSION_LZW, PREDICTOR_NONE};
inline constexpr Coding kLzwDifferencing = {"LZW differencing", COMPRESSION_LZW,
                                            PREDICTOR_HORIZONTAL};
inline constexpr Coding kCcitt1D = {"CCITT 1-D", COMPRESSION_CCITTRLE, 0};
inline constexpr Coding kGroup3 = {"Group 3 1-D", COMPRESSION_CCITTFAX3, 0};
inline constexpr Coding kGroup3TwoD = {"Group 3 2-D", COMPRESSION_CCITTFAX3, GROUP3OPT_2DENCODING};
inline constexpr Coding kGroup4 = {"Group 4", COMPRESSION_CCITTFAX4, 0};

}  // namespace vellim::bench
