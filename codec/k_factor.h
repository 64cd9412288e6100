// How often a line of two-dimensional Group 3 data is coded one-dimensionally.
#pragma once

#include <cstdint>

namespace vellim {

// As SetKfactor has set it; read once, at the start of a run.
uint32_t KFactor();

}  // namespace vellim
