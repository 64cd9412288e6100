// T.4 two-dimensional data.
#include <array>

#include "fuzz/ccitt_stream.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    constexpr std::array<CompressionKey, 2> kKeys = {TIFF_KEY_GROUP3_2D, TIFF_KEY_GROUP3_2D_FILL};
    vellim::fuzz::FuzzCcitt(data, size, kKeys);
    return 0;
}
