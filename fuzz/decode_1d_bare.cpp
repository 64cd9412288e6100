// T.4 one-dimensional data without EOLs, lines on byte boundaries.
#include <array>

#include "fuzz/ccitt_stream.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    constexpr std::array<CompressionKey, 2> kKeys = {TIFF_KEY_CCITT_1D, TIFF_KEY_CCITT_1D_BARE};
    vellim::fuzz::FuzzCcitt(data, size, kKeys);
    return 0;
}
