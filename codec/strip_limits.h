// How many strips an image may have.
#pragma once

#include <cstdint>

#include "container/directory_writer.h"

namespace vellim {

// The longest table of 32-bit entries that can be read back.
inline constexpr uint32_t kMostStrips = kLongestStoredValue / sizeof(uint32_t);
static_assert(kMostStrips == 8191);

}  // namespace vellim
