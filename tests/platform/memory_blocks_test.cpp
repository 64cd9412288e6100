#include "platform/memory/memory_blocks.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <random>
#include <thread>
#include <vector>

#include "platform/guards.h"

namespace {

using vellim::LockedBlock;
using vellim::OwnedBlock;

void Fill(GlobalHandle block, uint8_t value) {
    const LockedBlock locked(block);
    if (locked) std::memset(locked.As<void>(), value, locked.Size());
}

// Whether the block's bytes `from` to `to` - 1 are there and all have this value.
bool Holds(GlobalHandle block, uint32_t from, uint32_t to, uint8_t value) {
    const LockedBlock locked(block);
    const auto* bytes = locked.As<uint8_t>();
    return locked && to <= locked.Size() &&
           std::all_of(bytes + from, bytes + to, [&](uint8_t byte) { return byte == value; });
}

TEST(MemoryBlocks, SizesAreExactAndNewBytesZero) {
    std::mt19937 random(7);
    const OwnedBlock block(GlobalAlloc(GMEM_FIXED, 0));
    std::vector<uint8_t> model;
    for (uint32_t step = 0; step < 3000; step++) {
        const uint32_t widest = step % 1000 == 999 ? 3000000 : step % 10 == 0 ? 20000 : 600;
        const auto size = static_cast<uint32_t>(random() % widest);
        model.resize(size, 0);
        ASSERT_EQ(GlobalReAlloc(block.Get(), size, GHND), block.Get());
        const LockedBlock locked(block.Get());
        ASSERT_EQ(locked.Size(), size);
        ASSERT_TRUE(std::equal(model.begin(), model.end(), locked.As<uint8_t>())) << step;
        for (size_t at = step % 7; at < size; at += 31)
            model[at] = locked.As<uint8_t>()[at] = 0x5A;
        const OwnedBlock fresh(GlobalAlloc(GHND, size));  // where dirty bytes were freed before
        ASSERT_TRUE(GlobalSize(fresh.Get()) == size && Holds(fresh.Get(), 0, size, 0));
        Fill(fresh.Get(), 0xAA);
    }
}

// In a process of its own with little address space, of which the sanitizers need all.
#if !defined(__clang__) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
int ExhaustMemory() {
    constexpr uint32_t huge = 1U << 30U;
    const GlobalHandle block = GlobalAlloc(GHND, 100);
    Fill(block, 0x77);
    const rlimit limit = {huge, huge};
    if (setrlimit(RLIMIT_AS, &limit) != 0) return 1;
    if (GlobalAlloc(GHND, huge) != 0 || GlobalReAlloc(block, huge, GHND) != 0) return 2;
    return GlobalSize(block) == 100 && Holds(block, 0, 100, 0x77) ? 0 : 3;
}

TEST(MemoryBlocks, AHostileSizeFailsWithoutHarm) {
    EXPECT_EXIT(std::_Exit(ExhaustMemory()), testing::ExitedWithCode(0), "");
}
#endif

TEST(MemoryBlocks, LocksAreCountedAndStaleHandlesFail) {
    const GlobalHandle stale = GlobalAlloc(GHND, 5);
    EXPECT_EQ(GlobalUnlock(stale), 0) << "and isn't remembered";
    EXPECT_EQ(GlobalLock(stale), GlobalLock(stale));
    EXPECT_EQ(GlobalUnlock(stale), 1);
    EXPECT_EQ(GlobalFree(stale), 0U) << "locked or not";
    const OwnedBlock kept(GlobalAlloc(GHND, 5));
    for (const GlobalHandle none : {stale, 0U, 0xFFFFFFFFU, kept.Get() ^ 1U << 31U}) {
        EXPECT_EQ(GlobalLock(none), nullptr) << none;
        EXPECT_EQ(GlobalSize(none) + GlobalReAlloc(none, 10, GHND), 0U) << none;
        EXPECT_EQ(GlobalFree(none), none);
    }
    for (int i = 0; i < 500000; i++)
        ASSERT_NE(OwnedBlock(GlobalAlloc(GHND, 1)).Get(), stale) << "came true again after " << i;
}

// Two threads free a block that two others are copying to larger room: one of them frees it.
TEST(MemoryBlocks, ThreadsDontMeet) {
    const uint32_t live = vellim::LiveGlobalBlocks();
    for (int round = 0; round < 20; round++) {
        constexpr uint32_t large = 8U << 20U;
        const GlobalHandle block = GlobalAlloc(GHND, large);
        std::atomic<int> freed{0}, faults{0};
        std::vector<std::jthread> threads(4);
        for (uint8_t mark = 0; mark < 4; mark++)
            threads[mark] = std::jthread([&, mark] {
                const OwnedBlock own(GlobalAlloc(GHND, 1000));
                Fill(own.Get(), mark);
                if (mark < 2) GlobalReAlloc(block, (mark + 2) * large, GHND);
                if (mark >= 2) freed += GlobalFree(block) == 0 ? 1 : 0;
                faults += Holds(own.Get(), 0, 1000, mark) ? 0 : 1;
            });
        threads.clear();
        ASSERT_EQ(freed * 1000 + faults, 1000);
    }
    EXPECT_EQ(vellim::LiveGlobalBlocks(), live);
}

}  // namespace
