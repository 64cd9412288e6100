// Memory blocks: zero-filled bytes behind a handle, with an exact size and spare room behind it.
//
// Memory comes zeroed, large areas as untouched pages (large_memory.h). Spare room lets a block
// that grows by small steps, as that of a stream does, be moved a logarithmic number of times;
// there realloc serves, which moves without copying where it can. What may not be zero is cleared
// when it becomes part of the block.
//
// Locking, unlocking and asking for the size touch the slot's atomics alone. Growing and freeing
// take the block's own mutex: two threads that free the same block must not both succeed.
#include "platform/memory/memory_blocks.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <mutex>

#include "platform/handle_table.h"
#include "platform/memory/large_memory.h"

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VELLIM_POISONS_SPARE_ROOM 1
#endif
#elif defined(__SANITIZE_ADDRESS__)
#define VELLIM_POISONS_SPARE_ROOM 1
#endif
#if defined(VELLIM_POISONS_SPARE_ROOM)
#include <sanitizer/asan_interface.h>
#endif

namespace vellim {
namespace {

struct MemoryBlock {
    std::mutex change;
    std::atomic<uint8_t*> bytes{nullptr};
    std::atomic<uint32_t> size{0};
    std::atomic<uint32_t> locks{0};
    uint32_t room = 0;    // bytes behind `bytes`, at least 1
    uint32_t widest = 0;  // what lies behind this much of `bytes` is zero
};

constinit HandleTable<MemoryBlock, HandleKind::kMemoryBlock> blocks;

// A block of no bytes has an address too.
uint32_t RoomFor(uint32_t size) {
    return std::max(size, 1U);
}

// Room for a block that outgrew `room` once and may do so again: half as much again.
uint32_t RoomToGrow(uint32_t room, uint32_t size) {
    const uint64_t generous = uint64_t{room} + room / 2;
    const uint64_t limit = std::numeric_limits<uint32_t>::max();
    return static_cast<uint32_t>(std::min(limit, std::max<uint64_t>(generous, size)));
}

// Under the address sanitizer a touch of the spare room is reported like one beyond the block.
void OpenSpareRoom([[maybe_unused]] const uint8_t* bytes, [[maybe_unused]] uint32_t room) {
#if defined(VELLIM_POISONS_SPARE_ROOM)
    ASAN_UNPOISON_MEMORY_REGION(bytes, room);
#endif
}

void CloseSpareRoom([[maybe_unused]] const uint8_t* bytes, [[maybe_unused]] uint32_t size,
                    [[maybe_unused]] uint32_t room) {
#if defined(VELLIM_POISONS_SPARE_ROOM)
    ASAN_POISON_MEMORY_REGION(bytes + size, room - size);
#endif
}

void ResizeInPlace(MemoryBlock& block, uint32_t size, bool clear) {
    uint8_t* bytes = block.bytes.load(std::memory_order_relaxed);
    const uint32_t before = block.size.load(std::memory_order_relaxed);
    OpenSpareRoom(bytes, block.room);
    if (clear && size > before) {
        const uint32_t used = std::min(size, block.widest);
        if (used > before) std::memset(bytes + before, 0, used - before);
    }
    block.widest = std::max(block.widest, size);
    block.size.store(size, std::memory_order_release);
    CloseSpareRoom(bytes, size, block.room);
}

// Takes `fresh` over, which holds the block's bytes. What lies behind `clean` is zero.
void TakeRoom(MemoryBlock& block, uint8_t* fresh, uint32_t room, uint32_t size, uint32_t clean) {
    block.bytes.store(fresh, std::memory_order_release);
    block.size.store(size, std::memory_order_release);
    block.room = room;
    block.widest = clean;
    CloseSpareRoom(fresh, size, room);
}

// A leap: new memory, none of which is touched but what the block's bytes take.
bool LeapToRoom(MemoryBlock& block, uint32_t size) {
    uint8_t* fresh = AllocateZeroed(size);
    if (fresh == nullptr) return false;
    uint8_t* old = block.bytes.load(std::memory_order_relaxed);
    OpenSpareRoom(old, block.room);
    std::memcpy(fresh, old, block.size.load(std::memory_order_relaxed));
    TakeRoom(block, fresh, size, size, size);
    std::free(old);
    return true;
}

// A step: the system mostly has room right behind the block, or moves its pages instead of its
// bytes, but says nothing of what is in it.
bool StepToRoom(MemoryBlock& block, uint32_t size, bool clear) {
    uint8_t* old = block.bytes.load(std::memory_order_relaxed);
    const uint32_t before = block.size.load(std::memory_order_relaxed);
    uint32_t room = RoomToGrow(block.room, size);
    OpenSpareRoom(old, block.room);
    void* moved = std::realloc(old, room);
    if (moved == nullptr && room > size) {
        room = size;
        moved = std::realloc(old, room);
    }
    if (moved == nullptr) {
        CloseSpareRoom(block.bytes.load(std::memory_order_relaxed), before, block.room);
        return false;
    }
    auto* fresh = static_cast<uint8_t*>(moved);
    if (clear) std::memset(fresh + before, 0, size - before);
    TakeRoom(block, fresh, room, size, room);
    return true;
}

bool MoveToLargerRoom(MemoryBlock& block, uint32_t size, bool clear) {
    const bool leap = size / 2 > block.room;
    return leap ? LeapToRoom(block, size) : StepToRoom(block, size, clear);
}

}  // namespace

uint32_t LiveGlobalBlocks() {
    return blocks.InUse();
}

}  // namespace vellim

using vellim::blocks;
using vellim::MemoryBlock;

// New blocks are movable and zero-filled whatever the flags ask for.
GlobalHandle GlobalAlloc(uint32_t /*flags*/, uint32_t bytes) {
    const uint32_t room = vellim::RoomFor(bytes);
    uint8_t* zeroed = vellim::AllocateZeroed(room);
    if (zeroed == nullptr) return 0;
    const auto [handle, block] = blocks.Reserve();
    if (handle == 0) {
        std::free(zeroed);
        return 0;
    }
    block->bytes.store(zeroed, std::memory_order_relaxed);
    block->size.store(bytes, std::memory_order_relaxed);
    block->locks.store(0, std::memory_order_relaxed);
    block->room = room;
    block->widest = bytes;
    vellim::CloseSpareRoom(zeroed, bytes, room);
    blocks.Publish(handle);
    return handle;
}

// A block that shrinks keeps its room and its address.
GlobalHandle GlobalReAlloc(GlobalHandle block, uint32_t bytes, uint32_t flags) {
    MemoryBlock* found = blocks.Find(block);
    if (found == nullptr) return 0;
    const std::scoped_lock lock(found->change);
    if (blocks.Find(block) != found) return 0;
    const bool clear = (flags & GMEM_ZEROINIT) != 0;
    if (bytes <= found->room) {
        vellim::ResizeInPlace(*found, bytes, clear);
        return block;
    }
    return vellim::MoveToLargerRoom(*found, bytes, clear) ? block : 0;
}

void* GlobalLock(GlobalHandle block) {
    MemoryBlock* found = blocks.Find(block);
    if (found == nullptr) return nullptr;
    found->locks.fetch_add(1, std::memory_order_relaxed);
    return found->bytes.load(std::memory_order_acquire);
}

// One unlock too many leaves the count at 0.
int32_t GlobalUnlock(GlobalHandle block) {
    MemoryBlock* found = blocks.Find(block);
    if (found == nullptr) return 0;
    uint32_t count = found->locks.load(std::memory_order_relaxed);
    do {
        if (count == 0) return 0;
    } while (!found->locks.compare_exchange_weak(count, count - 1, std::memory_order_relaxed));
    return count > 1 ? 1 : 0;
}

GlobalHandle GlobalFree(GlobalHandle block) {
    MemoryBlock* found = blocks.Find(block);
    if (found == nullptr) return block;
    const std::scoped_lock lock(found->change);
    if (!blocks.Withdraw(block)) return block;
    uint8_t* bytes = found->bytes.exchange(nullptr, std::memory_order_relaxed);
    vellim::OpenSpareRoom(bytes, found->room);
    std::free(bytes);
    blocks.Recycle(block);
    return 0;
}

uint32_t GlobalSize(GlobalHandle block) {
    const MemoryBlock* found = blocks.Find(block);
    return found != nullptr ? found->size.load(std::memory_order_acquire) : 0;
}
