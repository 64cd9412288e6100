// Writing all of a few bytes, or failing.
#pragma once

#include <cstdint>
#include <span>

#include "vellim/platform.h"

namespace vellim {

inline bool WriteWhole(StreamHandle file, std::span<const uint8_t> bytes) {
    const auto count = static_cast<uint32_t>(bytes.size());
    return _lwrite(file, bytes.data(), count) == static_cast<int32_t>(count);
}

}  // namespace vellim
