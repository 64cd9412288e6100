// An attempt at changing a file, with every fault that can strike in it.
#pragma once

#include <gtest/gtest.h>

#include <functional>

#include "platform/memory/memory_blocks.h"
#include "support/faults.h"
#include "support/test_files.h"
#include "vellim/failures.h"

namespace vellim::test {

// Prepares and attempts with every single fault, and once more killed at every call. `check` sees
// each result, or -1 from a process that was killed. A failure must tell its code, and no memory
// be kept. More than `least` faults must strike in either way.
inline void WhateverFails(uint32_t least, const std::function<void()>& prepare,
                          const std::function<int32_t()>& attempt,
                          const std::function<void(const Fault&, int32_t)>& check) {
    const uint32_t struck = WithEveryFault([&](Fault& fault) {
        prepare();
        SetTiffError(TIFF_SUCCESS);
        const uint32_t blocks = LiveGlobalBlocks();
        int32_t result = 0;
        {
            const Armed armed(fault);
            result = attempt();
        }
        EXPECT_TRUE(result == 1 || TiffError() != TIFF_SUCCESS) << fault;
        EXPECT_EQ(LiveGlobalBlocks(), blocks) << fault;
        check(fault, result);
    });
    EXPECT_GT(struck, least);
    EXPECT_GT(KilledEverywhere(prepare, attempt, [&](const Fault& fault) { check(fault, -1); }),
              least);
}

}  // namespace vellim::test
