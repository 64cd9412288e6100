// What must hold after any input.
#pragma once

#include <cstdint>

#include "platform/guards.h"

namespace vellim::fuzz {

// Ends the process, loudly, unless `holds`: to the fuzzer that is a crash.
void Require(bool holds, const char* what);

// No memory block outlives the scope that didn't exist before it.
class BlockBalance {
  public:
    BlockBalance();
    ~BlockBalance();
    BlockBalance(const BlockBalance&) = delete;
    BlockBalance& operator=(const BlockBalance&) = delete;

  private:
    uint32_t before_;
};

// A call that gives 1 or 0 leaves a failure code behind when it gives 0.
void RequireTold(int32_t result, int32_t code);

}  // namespace vellim::fuzz
