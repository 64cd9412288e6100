// The library's entry point. Nothing has to be set up, so it only tells which reasons it knows.

#include "vellim/files.h"

namespace {

constexpr uint32_t kProcessAttach = 1;
constexpr uint32_t kLastReason = 3;  // 0: process detach, 2 and 3: thread attach and detach

[[gnu::constructor]] void AttachProcess() {
    DllMain(0, kProcessAttach, nullptr);
}

}  // namespace

int32_t DllMain(uint32_t /*instance*/, uint32_t reason, void* /*reserved*/) {
    return reason <= kLastReason ? 1 : 0;
}
