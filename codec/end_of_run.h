// How an engine turns a buffer call's result into its own.
#pragma once

#include <cstdint>

#include "vellim/codec.h"

namespace vellim {

// The finishing signal 3 is success at an engine's edge; other codes pass through.
constexpr uint32_t EndOfRun(uint32_t code) {
    return code == TIFF_LINE_STOP ? 0 : code;
}

}  // namespace vellim
