// Large areas of zeros for pictures.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vellim {

// `bytes` zero bytes as untouched pages, so that a size out of a hostile file costs address space
// only; to be freed with std::free. Null without memory. A large area asks the system for pages of
// a large size, which come to be touched many times as fast.
uint8_t* AllocateZeroed(size_t bytes);

}  // namespace vellim
