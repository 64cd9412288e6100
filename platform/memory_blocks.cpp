// Memory blocks: zero-filled bytes behind a handle, with an exact size and spare room behind it.
//
// Memory comes zeroed from calloc, which gives large areas as untouched pages: a size out of a
// hostile file costs address space only. Spare room lets a block that grows by small steps, as that
// of a stream does, be copied a logarithmic number of times. What was never part of the block is
// still zero; what once was and was cut off is cleared when it comes back.
//
// Locking, unlocking and asking for the size touch the slot's atomics alone. Growing and freeing
// take the block's own mutex: two threads that free the same block must not both succeed.
#include "platform/memory_blocks.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <mutex>

#include "platform/handle_table.h"

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
    uint32_t widest = 0;  // largest size since `bytes` was allocated
};

constinit HandleTable<MemoryBlock, HandleKind::kMemoryBlock> blocks;

// A block of no bytes has an address too.
uint32_t RoomFor(uint32_t size) {
    return std::max(size, 1U);
}

// Never null without being out of memory.
uint8_t* AllocateZeroed(uint32_t room) {
    return static_cast<uint8_t*>(std::calloc(room, 1));
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

void ResizeInPlace(MemoryBlock& block, uint32_t size) {
    uint8_t* bytes = block.bytes.load(std::memory_order_relaxed);
    const uint32_t before = block.size.load(std::memory_order_relaxed);
    OpenSpareRoom(bytes, block.room);
    if (size > before) {
        const uint32_t used = std::min(size, block.widest);
        if (used > before) std::memset(bytes + before, 0, used - before);
    }
    block.widest = std::max(block.widest, size);
    block.size.store(size, std::memory_order_release);
    CloseSpareRoom(bytes, size, block.room);
}

bool MoveToLargerRoom(MemoryBlock& block, uint32_t size) {
    uint32_t room = RoomToGrow(block.room, size);
    uint8_t* fresh = AllocateZeroed(room);
    if (fresh == nullptr && room > size) {
        room = size;
        fresh = AllocateZeroed(room);
    }
    if (fresh == nullptr) return false;

    uint8_t* old = block.bytes.load(std::memory_order_relaxed);
    OpenSpareRoom(old, block.room);
    std::memcpy(fresh, old, block.size.load(std::memory_order_relaxed));
    block.bytes.store(fresh, std::memory_order_release);
    block.size.store(size, std::memory_order_release);
    block.room = room;
    block.widest = size;
    CloseSpareRoom(fresh, size, room);
    std::free(old);
    return true;
}

}  // namespace

uint32_t LiveGlobalBlocks() {
    return blocks.InUse();
}

}  // namespace vellim

using vellim::blocks;
using vellim::MemoryBlock;

// Blocks are movable and zero-filled whatever the flags ask for.
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
GlobalHandle GlobalReAlloc(GlobalHandle block, uint32_t bytes, uint32_t /*flags*/) {
    MemoryBlock* found = blocks.Find(block);
    if (found == nullptr) return 0;
    const std::scoped_lock lock(found->change);
    if (blocks.Find(block) != found) return 0;
    if (bytes <= found->room) {
        vellim::ResizeInPlace(*found, bytes);
        return block;
    }
    return vellim::MoveToLargerRoom(*found, bytes) ? block : 0;
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
