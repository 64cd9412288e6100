#include "platform/memory_blocks.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "platform/guards.h"

#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define VELLIM_TEST_SANITIZED 1
#endif
#elif defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define VELLIM_TEST_SANITIZED 1
#endif

namespace {

using vellim::LiveGlobalBlocks;
using vellim::LockedBlock;
using vellim::OwnedBlock;

void Fill(GlobalHandle block, uint8_t value) {
    const LockedBlock locked(block);
    if (locked) std::memset(locked.As<void>(), value, locked.Size());
}

uint32_t Below(uint32_t limit, std::mt19937& random) {
    return static_cast<uint32_t>(random() % limit);
}

// Whether the block's bytes `from` to `to` - 1 are there and all have this value.
bool Holds(GlobalHandle block, uint32_t from, uint32_t to, uint8_t value) {
    const LockedBlock locked(block);
    const auto* bytes = locked.As<uint8_t>();
    return locked && to <= locked.Size() &&
           std::all_of(bytes + from, bytes + to, [&](uint8_t byte) { return byte == value; });
}

TEST(MemoryBlocks, SizesAreExactAndNewBytesZero) {
    for (const uint32_t size : {0U, 1U, 7U, 16U, 17U, 4095U, 1000001U}) {
        OwnedBlock junk(GlobalAlloc(GHND, size));
        Fill(junk.Get(), 0xAA);
        junk.Reset();
        const OwnedBlock block(GlobalAlloc(GMEM_FIXED, size));
        EXPECT_TRUE(LockedBlock(block.Get())) << size;
        EXPECT_EQ(GlobalSize(block.Get()), size);
        EXPECT_TRUE(Holds(block.Get(), 0, size, 0)) << size;
    }
    std::mt19937 random(7);
    const OwnedBlock block(GlobalAlloc(GHND, 0));
    std::vector<uint8_t> model;
    for (int step = 0; step < 3000; step++) {
        const uint32_t widest = step % 1000 == 999 ? 3000000 : step % 10 == 0 ? 20000 : 600;
        const uint32_t size = Below(widest, random);
        model.resize(size, 0);
        ASSERT_EQ(GlobalReAlloc(block.Get(), size, GHND), block.Get());
        const LockedBlock locked(block.Get());
        ASSERT_EQ(locked.Size(), size);
        ASSERT_TRUE(std::equal(model.begin(), model.end(), locked.As<uint8_t>())) << step;
        for (int i = 0; i < 20 && size > 0; i++) {
            const uint32_t at = Below(size, random);
            model[at] = locked.As<uint8_t>()[at] = 0x5A;
        }
    }
}

TEST(MemoryBlocks, GrowthByteByByteMovesRarely) {
    const OwnedBlock block(GlobalAlloc(GHND, 1));
    const void* before = nullptr;
    int moves = 0;
    for (uint32_t size = 2; size <= 1000000; size++) {
        ASSERT_NE(GlobalReAlloc(block.Get(), size, GHND), 0U);
        const LockedBlock locked(block.Get());
        moves += locked.As<void>() != before ? 1 : 0;
        before = locked.As<void>();
    }
    EXPECT_LT(moves, 60);
}

int64_t KilobytesOf(const char* figure) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with(figure)) return std::stoll(line.substr(std::strlen(figure)));
    }
    return -1;
}

TEST(MemoryBlocks, AHostileSizeTouchesNoMemory) {
#if defined(VELLIM_TEST_SANITIZED)
    GTEST_SKIP() << "a sanitizer keeps books on every byte";
#endif
    constexpr uint32_t huge = 1U << 30U;
    const int64_t before = KilobytesOf("VmRSS:");
    ASSERT_GT(before, 0);
    const OwnedBlock grown(GlobalAlloc(GHND, 40));
    const OwnedBlock fresh(GlobalAlloc(GHND, huge));
    if (!fresh || GlobalReAlloc(grown.Get(), huge, GHND) == 0) GTEST_SKIP() << "no gibibyte here";
    EXPECT_LT(KilobytesOf("VmRSS:") - before, int64_t{huge} / 1024 / 4);
}

// Runs in a process of its own, whose address space is cut off. 0: all was as promised.
int ExhaustMemory() {
    const GlobalHandle block = GlobalAlloc(GHND, 100);
    Fill(block, 0x77);
    const auto limitBytes = static_cast<rlim_t>(KilobytesOf("VmSize:")) * 1024 + (230U << 20U);
    const rlimit limit = {limitBytes, limitBytes};
    if (setrlimit(RLIMIT_AS, &limit) != 0) return 2;
    if (GlobalAlloc(GHND, 1U << 30U) != 0 || GlobalReAlloc(block, 1U << 30U, GHND) != 0) return 3;
    if (GlobalSize(block) != 100 || !Holds(block, 0, 100, 0x77)) return 4;
    // From 100 to 110 mebibytes only the exact size can be had, without spare room.
    if (GlobalReAlloc(block, 100U << 20U, GHND) != block) return 5;
    if (GlobalReAlloc(block, 110U << 20U, GHND) != block) return 6;
    return Holds(block, 0, 100, 0x77) && Holds(block, 100, 200, 0) ? 0 : 7;
}

TEST(MemoryBlocks, WithoutMemoryTheBlockStaysAsItWas) {
#if defined(VELLIM_TEST_SANITIZED)
    GTEST_SKIP() << "a sanitizer needs the address space";
#endif
    EXPECT_EXIT(std::_Exit(ExhaustMemory()), testing::ExitedWithCode(0), "");
}

TEST(MemoryBlocks, LockCount) {
    const OwnedBlock block(GlobalAlloc(GHND, 8));
    EXPECT_EQ(GlobalUnlock(block.Get()), 0) << "and isn't remembered";
    const void* first = GlobalLock(block.Get());
    EXPECT_EQ(GlobalLock(block.Get()), first);
    EXPECT_EQ(GlobalUnlock(block.Get()), 1);
    EXPECT_EQ(GlobalUnlock(block.Get()), 0);
}

void ExpectNoBlock(GlobalHandle handle) {
    EXPECT_EQ(GlobalLock(handle), nullptr) << handle;
    EXPECT_EQ(GlobalUnlock(handle), 0) << handle;
    EXPECT_EQ(GlobalSize(handle), 0U) << handle;
    EXPECT_EQ(GlobalReAlloc(handle, 10, GHND), 0U) << handle;
    EXPECT_EQ(GlobalFree(handle), handle);
}

TEST(MemoryBlocks, StaleAndForeignHandlesFail) {
    const uint32_t live = LiveGlobalBlocks();
    const GlobalHandle stale = GlobalAlloc(GHND, 5);
    GlobalLock(stale);
    EXPECT_EQ(GlobalFree(stale), 0U) << "locked or not";
    const OwnedBlock kept(GlobalAlloc(GHND, 5));
    const DeviceContextHandle context = GetDC(0);
    for (const GlobalHandle none : {stale, context, 0U, 1U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
        ExpectNoBlock(none);
    }
    for (uint32_t bit = 1; bit != 0; bit <<= 1U)
        ExpectNoBlock(kept.Get() ^ bit);
    ReleaseDC(0, context);
    EXPECT_EQ(LiveGlobalBlocks(), live + 1);
    for (int i = 0; i < 500000; i++) {
        const GlobalHandle other = GlobalAlloc(GHND, 1);
        ASSERT_NE(other, stale) << "came true again after " << i;
        ASSERT_EQ(GlobalFree(other), 0U);
    }
}

TEST(MemoryBlocks, ThreadsDontMeet) {
    const uint32_t live = LiveGlobalBlocks();
    const OwnedBlock shared(GlobalAlloc(GHND, 64));
    std::atomic<int> faults{0};
    const auto work = [&](uint8_t mark) {
        std::mt19937 random(mark);
        std::vector<GlobalHandle> own(3000);
        for (GlobalHandle& block : own) {
            const uint32_t size = 1 + Below(300, random);
            block = GlobalAlloc(GHND, size);
            Fill(block, mark);
            faults += GlobalReAlloc(block, size + 50, GHND) == block ? 0 : 1;
            faults += Holds(block, size, size + 50, 0) ? 0 : 1;
            faults += LockedBlock(shared.Get()).Size() == 64 ? 0 : 1;
        }
        for (const GlobalHandle block : own) {
            faults += Holds(block, 0, GlobalSize(block) - 50, mark) ? 0 : 1;
            faults += GlobalFree(block) == 0 && GlobalLock(block) == nullptr ? 0 : 1;
        }
    };
    std::vector<std::thread> threads;
    for (uint8_t mark = 1; mark <= 4; mark++)
        threads.emplace_back(work, mark);
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(faults, 0);
    EXPECT_EQ(GlobalUnlock(shared.Get()), 0) << "every lock was undone";
    EXPECT_EQ(LiveGlobalBlocks(), live + 1);
}

// While one thread copies a large block, others find it still there and wait for their turn: one of
// them frees it, and all the rest must notice.
TEST(MemoryBlocks, OneOfSeveralThatFreeABlockSucceeds) {
    constexpr uint32_t large = 8U << 20U;
    const uint32_t live = LiveGlobalBlocks();
    for (int round = 0; round < 20; round++) {
        const GlobalHandle block = GlobalAlloc(GHND, large);
        Fill(block, 1);
        std::atomic<bool> copying{false};
        std::atomic<int> freed{0};
        const auto free = [&] {
            copying.wait(false);
            freed += GlobalFree(block) == 0 ? 1 : 0;
        };
        const auto grow = [&] {
            copying.wait(false);
            GlobalReAlloc(block, 3 * large, GHND);
        };
        std::thread threads[] = {std::thread(free), std::thread(free), std::thread(grow)};
        copying = true;
        copying.notify_all();
        GlobalReAlloc(block, 2 * large, GHND);
        for (std::thread& thread : threads)
            thread.join();
        ASSERT_EQ(freed, 1);
    }
    EXPECT_EQ(LiveGlobalBlocks(), live);
}

}  // namespace
