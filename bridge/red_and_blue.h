// TIFF stores a pixel of 24 bits red first, a DIB blue first.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

namespace vellim {

// In the whole pixels of the line's first `bytes` bytes.
inline void ExchangeRedAndBlue(uint8_t* line, uint32_t bytes) {
    for (size_t i = 0; i + 2 < bytes; i += 3)
        std::swap(line[i], line[i + 2]);
}

}  // namespace vellim
