// T.6 data.
#include <array>

#include "fuzz/ccitt_stream.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    constexpr std::array<CompressionKey, 1> kKeys = {TIFF_KEY_GROUP4};
    vellim::fuzz::FuzzCcitt(data, size, kKeys);
    return 0;
}
