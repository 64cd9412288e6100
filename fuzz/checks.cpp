#include "fuzz/checks.h"

#include <cstdio>
#include <cstdlib>

#include "platform/memory/memory_blocks.h"
#include "vellim/failures.h"

namespace vellim::fuzz {

void Require(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "broken: %s\n", what);
    std::abort();
}

BlockBalance::BlockBalance() : before_(LiveGlobalBlocks()) {}

BlockBalance::~BlockBalance() {
    Require(LiveGlobalBlocks() == before_, "every block is freed that was taken");
}

void RequireTold(int32_t result, int32_t code) {
    Require(result == 0 || result == 1, "the result is 1 or 0");
    if (result == 0)
        Require(code > TIFF_SUCCESS && code <= TIFF_UNEXPECTED_EOFB, "a failure has a code");
}

}  // namespace vellim::fuzz
