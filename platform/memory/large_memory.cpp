#include "platform/memory/large_memory.h"

#include <sys/mman.h>

#include <cstdlib>

namespace vellim {
namespace {

constexpr size_t kLargePageBytes = size_t{1} << 21U;

// The whole large pages within an area; the rest of it stays as it is. A system that has none, or
// gives none, is no worse for the question.
void AskForLargePages([[maybe_unused]] uint8_t* bytes, [[maybe_unused]] size_t count) {
#if defined(MADV_HUGEPAGE)
    const size_t before = reinterpret_cast<uintptr_t>(bytes) % kLargePageBytes;
    const size_t skipped = before == 0 ? 0 : kLargePageBytes - before;
    if (count < skipped + kLargePageBytes) return;
    const size_t whole = (count - skipped) / kLargePageBytes * kLargePageBytes;
    madvise(bytes + skipped, whole, MADV_HUGEPAGE);
#endif
}

}  // namespace

uint8_t* AllocateZeroed(size_t bytes) {
    auto* area = static_cast<uint8_t*>(std::calloc(bytes, 1));  // NOLINT(*-no-malloc)
    if (area != nullptr && bytes >= 2 * kLargePageBytes) AskForLargePages(area, bytes);
    return area;
}

}  // namespace vellim
