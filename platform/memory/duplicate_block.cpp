// Copying memory blocks, on nothing but their public calls.
#include "platform/memory/duplicate_block.h"

#include <cstring>

#include "platform/guards.h"

namespace vellim {

GlobalHandle DuplicateGlobalBlock(GlobalHandle block) {
    const LockedBlock source(block);
    if (!source) return 0;
    const uint32_t bytes = source.Size();
    OwnedBlock copy(GlobalAlloc(GHND, bytes));
    {
        const LockedBlock target(copy.Get());
        if (!target) return 0;
        if (bytes != 0) std::memcpy(target.As<void>(), source.As<void>(), bytes);
    }
    return copy.Release();
}

}  // namespace vellim
