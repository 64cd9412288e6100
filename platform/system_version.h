// Which system the library runs on, as far as it asks.
#pragma once

#include <cstdint>

namespace vellim {

// Major version in the low byte. The top bit is set on systems where all processes share one copy
// of a library's data; here each has its own, so it is clear.
constexpr uint32_t GetVersion() {
    return 4;
}

}  // namespace vellim
