// The fixed codes of LZW (TIFF 6.0 section 13), for both directions.
#pragma once

#include <cstdint>

namespace vellim {

constexpr uint32_t kLzwLiterals = 256;
constexpr uint32_t kLzwClear = 256;
constexpr uint32_t kLzwEnd = 257;
constexpr uint32_t kLzwFirstFree = 258;
constexpr uint32_t kLzwTableSize = 4096;

}  // namespace vellim
