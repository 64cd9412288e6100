// Tables of things behind 32-bit handles.
//
// A handle is a kind (3 bits), a generation (9 bits) and an index (20 bits). The kind keeps the
// handle of one table from being taken for that of another; the generation keeps a handle that was
// given back from being taken for its successor in the same slot. A slot that was given back rests
// at the end of a queue until kRestingSlots others wait before it, so that a stale value can come
// true again only after half a million handles.
//
// Slots live in segments that never move and are never freed, so that Find needs no mutex: it reads
// the slot's current handle and compares. The mutex guards the queue alone.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <new>

namespace vellim {

// Bits 29 to 31 of a handle. 0 is left out, so that no handle is 0; files come first, so that
// theirs are positive as signed numbers.
enum class HandleKind : uint32_t {
    kFile = 1,
    kMemoryBlock = 2,
    kDeviceContext = 3,
    kCursor = 4,
    kGraphicsObject = 5,
    kWindow = 6,
    kDialogWindow = 7  // dialogs and their controls
};

inline constexpr uint32_t kHandleKindShift = 29;

template <typename Entry, HandleKind kKind>
class HandleTable {
  public:
    static constexpr uint32_t kMaxEntries = 1U << 20U;

    struct Place {
        uint32_t handle;
        Entry* entry;
    };

    // A slot for a new entry, handle 0 when there is none. The handle means nothing to Find before
    // Publish, so that the entry can be filled in peace.
    Place Reserve() {
        const std::scoped_lock lock(mutex_);
        const uint32_t index = TakeIndex();
        if (index == kNoIndex) return {0, nullptr};
        Slot& slot = SlotAt(index);
        slot.generation = (slot.generation + 1) & kGenerationMask;
        inUse_++;
        const uint32_t kind = static_cast<uint32_t>(kKind) << kHandleKindShift;
        return {kind | (slot.generation << kIndexBits) | index, &slot.entry};
    }

    void Publish(uint32_t handle) {
        SlotAt(handle & kIndexMask).current.store(handle, std::memory_order_release);
    }

    // The entry of a published handle, null for any other number.
    Entry* Find(uint32_t handle) {
        if (handle >> kHandleKindShift != static_cast<uint32_t>(kKind)) return nullptr;
        const uint32_t index = handle & kIndexMask;
        Slot* segment = segments_[index / kSegmentSlots].load(std::memory_order_acquire);
        if (segment == nullptr) return nullptr;
        Slot& slot = segment[index % kSegmentSlots];
        if (slot.current.load(std::memory_order_acquire) != handle) return nullptr;
        return &slot.entry;
    }

    // Makes a handle that Find has known stale. Of several that try only one gets true: it clears
    // the entry and then calls Recycle.
    bool Withdraw(uint32_t handle) {
        uint32_t expected = handle;
        return SlotAt(handle & kIndexMask)
            .current.compare_exchange_strong(expected, 0, std::memory_order_acq_rel);
    }

    // Puts the slot of a withdrawn (or never published) handle back into the queue.
    void Recycle(uint32_t handle) {
        const std::scoped_lock lock(mutex_);
        const uint32_t index = handle & kIndexMask;
        SlotAt(index).next = kNoIndex;
        if (resting_ == 0) {
            oldest_ = index;
        } else {
            SlotAt(newest_).next = index;
        }
        newest_ = index;
        resting_++;
        inUse_--;
    }

    [[nodiscard]] uint32_t InUse() {
        const std::scoped_lock lock(mutex_);
        return inUse_;
    }

  private:
    static constexpr uint32_t kIndexBits = 20;
    static constexpr uint32_t kIndexMask = kMaxEntries - 1;
    static constexpr uint32_t kGenerationMask = (1U << (kHandleKindShift - kIndexBits)) - 1;
    static constexpr uint32_t kNoIndex = kMaxEntries;
    static constexpr uint32_t kSegmentSlots = 1024;
    static constexpr uint32_t kRestingSlots = 1024;

    struct Slot {
        std::atomic<uint32_t> current{0};  // the published handle, 0 for none
        uint32_t generation = 0;
        uint32_t next = kNoIndex;  // in the queue
        Entry entry;
    };

    Slot& SlotAt(uint32_t index) {
        Slot* segment = segments_[index / kSegmentSlots].load(std::memory_order_acquire);
        return segment[index % kSegmentSlots];
    }

    // With the mutex held: a slot never used while few rest, else the one that rested longest.
    uint32_t TakeIndex() {
        if (resting_ < kRestingSlots && MakeRoomForOneMore()) return made_++;
        if (resting_ == 0) return kNoIndex;
        const uint32_t index = oldest_;
        oldest_ = SlotAt(index).next;
        resting_--;
        return index;
    }

    bool MakeRoomForOneMore() {
        if (made_ == kMaxEntries) return false;
        std::atomic<Slot*>& segment = segments_[made_ / kSegmentSlots];
        if (segment.load(std::memory_order_relaxed) != nullptr) return true;
        std::unique_ptr<Slot[]> slots(new (std::nothrow) Slot[kSegmentSlots]);
        if (slots == nullptr) return false;
        segment.store(slots.release(), std::memory_order_release);
        return true;
    }

    std::array<std::atomic<Slot*>, kMaxEntries / kSegmentSlots> segments_{};
    std::mutex mutex_;
    uint32_t made_ = 0;     // slots ever handed out
    uint32_t resting_ = 0;  // slots in the queue
    uint32_t inUse_ = 0;
    uint32_t oldest_ = kNoIndex;
    uint32_t newest_ = kNoIndex;
};

}  // namespace vellim
