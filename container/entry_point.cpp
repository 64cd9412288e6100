// The library's entry point. Nothing has to be set up but the module's handle.

#include "container/entry_point.h"

#include "platform/system_version.h"
#include "vellim/files.h"

namespace vellim {
namespace {

constexpr uint32_t kSharedDataSystem = 0x80000000;
constexpr uint32_t kOwnModule = 0;

constinit ProcessCalls processCalls;
constinit std::atomic<uint32_t> moduleInstance = kOwnModule;

[[gnu::constructor]] void AttachProcess() {
    DllMain(kOwnModule, kProcessAttach, nullptr);
}

}  // namespace

bool AdmitsCall(uint32_t systemVersion, uint32_t reason, ProcessCalls& seen) {
    const bool once = (systemVersion & kSharedDataSystem) != 0;
    switch (reason) {
        case kProcessAttach:
            return !once || !seen.Attached.exchange(true);
        case kProcessDetach:
            return !once || !seen.Detached.exchange(true);
        case kThreadAttach:
        case kThreadDetach:
            return true;
        default:
            return false;
    }
}

uint32_t ModuleInstance() {
    return moduleInstance;
}

}  // namespace vellim

int32_t DllMain(uint32_t instance, uint32_t reason, void* /*reserved*/) {
    if (!vellim::AdmitsCall(vellim::GetVersion(), reason, vellim::processCalls)) return 0;
    if (reason == vellim::kProcessAttach) vellim::moduleInstance = instance;
    return 1;
}
