#include "fuzz/checks.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "platform/memory_blocks.h"
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

OwnedBlock BlockOf(std::span<const uint8_t> bytes) {
    OwnedBlock block(GlobalAlloc(GHND, static_cast<uint32_t>(bytes.size())));
    const LockedBlock locked(block.Get());
    Require(static_cast<bool>(locked), "a block for the input");
    if (!bytes.empty()) std::memcpy(locked.As<uint8_t>(), bytes.data(), bytes.size());
    return block;
}

void RequireTold(int32_t result, int32_t code) {
    Require(result == 0 || result == 1, "the result is 1 or 0");
    if (result == 0)
        Require(code > TIFF_SUCCESS && code <= TIFF_UNEXPECTED_EOFB, "a failure has a code");
}

}  // namespace vellim::fuzz
