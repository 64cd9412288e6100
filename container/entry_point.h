// What is kept of the calls that the system makes when it loads the library.
#pragma once

#include <atomic>
#include <cstdint>

namespace vellim {

enum AttachReason : uint32_t {
    kProcessDetach = 0,
    kProcessAttach = 1,
    kThreadAttach = 2,
    kThreadDetach = 3
};

// What a system that shares the library's data between processes allows once each.
struct ProcessCalls {
    std::atomic<bool> Attached{false};
    std::atomic<bool> Detached{false};
};

// Whether a call of the entry point is let through on a system of this version, noting in `seen`
// the calls that are allowed once. Reasons that aren't known are refused.
bool AdmitsCall(uint32_t systemVersion, uint32_t reason, ProcessCalls& seen);

// The module that the dialogs come from; 0 for the library's own.
uint32_t ModuleInstance();

}  // namespace vellim
