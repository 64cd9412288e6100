#include "platform/memory_blocks.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <random>
#include <set>
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
    EXPECT_TRUE(LockedBlock(block.Get())) << "a block of no bytes is a block";
    std::vector<uint8_t> model;
    for (uint32_t step = 0; step < 3000; step++) {
        const uint32_t widest = step % 1000 == 999 ? 3000000 : step % 10 == 0 ? 20000 : 600;
        const auto size = static_cast<uint32_t>(random() % widest);
        model.resize(size, 0);
        ASSERT_EQ(GlobalReAlloc(block.Get(), size, GHND), block.Get());
        const LockedBlock locked(block.Get());
        ASSERT_EQ(locked.Size(), size);
        ASSERT_TRUE(std::equal(model.begin(), model.end(), locked.As<uint8_t>())) << step;
        for (int i = 0; i < 20 && size > 0; i++) {
            const size_t at = random() % size;
            model[at] = locked.As<uint8_t>()[at] = 0x5A;
        }
        const OwnedBlock fresh(GlobalAlloc(GHND, size));  // where dirty bytes were freed before
        ASSERT_TRUE(GlobalSize(fresh.Get()) == size && Holds(fresh.Get(), 0, size, 0));
        Fill(fresh.Get(), 0xAA);
    }
    const OwnedBlock grown(GlobalAlloc(GHND, 1));
    std::set<const void*> places;
    for (uint32_t size = 2; size <= 1000000; size++) {
        ASSERT_NE(GlobalReAlloc(grown.Get(), size, GHND), 0U);
        places.insert(LockedBlock(grown.Get()).As<void>());
    }
    EXPECT_LT(places.size(), 60U) << "growth byte by byte copies the block too often";
}

int64_t KilobytesOf(const std::string& figure) {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line) && !line.starts_with(figure)) {
    }
    return std::stoll(line.substr(figure.size()));
}

// Runs in a process of its own, whose address space is cut off. 0: all was as promised.
int ExhaustMemory() {
    constexpr uint32_t mebibyte = 1U << 20U, huge = 1U << 30U;
    const int64_t before = KilobytesOf("VmRSS:");
    const GlobalHandle block = GlobalAlloc(GHND, 100), hostile = GlobalAlloc(GHND, huge);
    if (hostile == 0 || KilobytesOf("VmRSS:") - before > huge / 1024 / 4) return 1;
    GlobalFree(hostile);
    Fill(block, 0x77);
    const auto limitBytes = static_cast<rlim_t>(KilobytesOf("VmSize:")) * 1024 + 230 * mebibyte;
    const rlimit limit = {limitBytes, limitBytes};
    if (setrlimit(RLIMIT_AS, &limit) != 0) return 2;
    if (GlobalAlloc(GHND, huge) != 0 || GlobalReAlloc(block, huge, GHND) != 0) return 3;
    if (GlobalSize(block) != 100 || !Holds(block, 0, 100, 0x77)) return 4;
    // From 100 to 110 mebibytes only the exact size can be had, without spare room.
    if (GlobalReAlloc(block, 100 * mebibyte, GHND) != block) return 5;
    if (GlobalReAlloc(block, 110 * mebibyte, GHND) != block) return 6;
    return Holds(block, 0, 100, 0x77) && Holds(block, 100, 200, 0) ? 0 : 7;
}

TEST(MemoryBlocks, AHostileSizeTouchesNoMemoryAndFailsWithoutHarm) {
#if defined(VELLIM_TEST_SANITIZED)
    GTEST_SKIP() << "a sanitizer needs the address space and keeps books on every byte";
#endif
    EXPECT_EXIT(std::_Exit(ExhaustMemory()), testing::ExitedWithCode(0), "");
}

void ExpectNoBlock(GlobalHandle handle) {
    EXPECT_EQ(GlobalLock(handle), nullptr) << handle;
    EXPECT_EQ(GlobalUnlock(handle), 0) << handle;
    EXPECT_EQ(GlobalSize(handle) + GlobalReAlloc(handle, 10, GHND), 0U) << handle;
    EXPECT_EQ(GlobalFree(handle), handle);
}

TEST(MemoryBlocks, LocksAreCountedAndStaleHandlesFail) {
    const uint32_t live = LiveGlobalBlocks();
    const GlobalHandle stale = GlobalAlloc(GHND, 5);
    EXPECT_EQ(GlobalUnlock(stale), 0) << "and isn't remembered";
    EXPECT_EQ(GlobalLock(stale), GlobalLock(stale));
    EXPECT_EQ(GlobalUnlock(stale), 1);
    EXPECT_EQ(GlobalUnlock(stale), 0);
    GlobalLock(stale);
    EXPECT_EQ(GlobalFree(stale), 0U) << "locked or not";
    const OwnedBlock kept(GlobalAlloc(GHND, 5));
    const DeviceContextHandle context = GetDC(0);
    for (const GlobalHandle none : {stale, context, 0U, 1U, 0x7FFFFFFFU, 0xFFFFFFFFU})
        ExpectNoBlock(none);
    for (uint32_t bit = 1; bit != 0; bit <<= 1U)
        ExpectNoBlock(kept.Get() ^ bit);
    ReleaseDC(0, context);
    EXPECT_EQ(LiveGlobalBlocks(), live + 1);
    for (int i = 0; i < 500000; i++) {
        const OwnedBlock other(GlobalAlloc(GHND, 1));
        ASSERT_NE(other.Get(), stale) << "came true again after " << i;
    }
}

// Four threads with blocks of their own; and two that free a block which two others are copying to
// larger room: all the rest must notice that it is gone.
TEST(MemoryBlocks, ThreadsDontMeet) {
    const uint32_t live = LiveGlobalBlocks();
    const auto together = [](const auto& work) {
        std::vector<std::thread> threads;
        for (uint8_t mark = 1; mark <= 4; mark++)
            threads.emplace_back(work, mark);
        for (std::thread& thread : threads)
            thread.join();
    };
    std::atomic<int> faults{0};
    together([&](uint8_t mark) {
        std::vector<OwnedBlock> own(3000);
        for (uint32_t i = 0; i < own.size(); i++) {
            own[i].Reset(GlobalAlloc(GHND, i));
            Fill(own[i].Get(), mark);
            faults += GlobalReAlloc(own[i].Get(), i + 50, GHND) == own[i].Get() ? 0 : 1;
        }
        for (uint32_t i = 0; i < own.size(); i++)
            faults += Holds(own[i].Get(), 0, i, mark) && Holds(own[i].Get(), i, i + 50, 0) ? 0 : 1;
    });
    EXPECT_EQ(faults, 0);
    for (int round = 0; round < 20; round++) {
        constexpr uint32_t large = 8U << 20U;
        const GlobalHandle block = GlobalAlloc(GHND, large);
        Fill(block, 1);
        std::atomic<int> freed{0};
        together([&](uint8_t mark) {
            if (mark <= 2)
                GlobalReAlloc(block, (mark + 1) * large, GHND);
            else
                freed += GlobalFree(block) == 0 ? 1 : 0;
        });
        ASSERT_EQ(freed, 1);
    }
    EXPECT_EQ(LiveGlobalBlocks(), live);
}

}  // namespace
