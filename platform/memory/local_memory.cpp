// The blocks of edit controls, which are memory blocks like any other, and the heap that isn't one.
#include <limits>

#include "vellim/platform.h"

LocalHandle LocalAlloc(uint32_t flags, uint32_t bytes) {
    return GlobalAlloc(flags, bytes);
}

void* LocalLock(LocalHandle block) {
    return GlobalLock(block);
}

int32_t LocalUnlock(LocalHandle block) {
    return GlobalUnlock(block);
}

LocalHandle LocalFree(LocalHandle block) {
    return GlobalFree(block);
}

uint32_t LocalSize(LocalHandle block) {
    return GlobalSize(block);
}

// Callers that take the figure for a signed number see a large one all the same.
uint32_t GlobalCompact(uint32_t /*bytes*/) {
    return std::numeric_limits<int32_t>::max();
}
