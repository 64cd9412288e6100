// Guards for what the platform lends: each puts back on every way out what it took.
#pragma once

#include <cstdint>
#include <utility>

#include "vellim/platform.h"

namespace vellim {

// A block locked for the length of a scope. Converts to false when the block can't be locked.
class LockedBlock {
  public:
    explicit LockedBlock(GlobalHandle block) : block_(block), bytes_(GlobalLock(block)) {}
    ~LockedBlock() {
        if (bytes_ != nullptr) GlobalUnlock(block_);
    }
    LockedBlock(const LockedBlock&) = delete;
    LockedBlock& operator=(const LockedBlock&) = delete;

    explicit operator bool() const { return bytes_ != nullptr; }
    template <typename T>
    [[nodiscard]] T* As() const {
        return static_cast<T*>(bytes_);
    }
    [[nodiscard]] uint32_t Size() const { return GlobalSize(block_); }

  private:
    GlobalHandle block_;
    void* bytes_;
};

// A block freed at the end of the scope, unless it is released.
class OwnedBlock {
  public:
    OwnedBlock() = default;
    explicit OwnedBlock(GlobalHandle block) : block_(block) {}
    ~OwnedBlock() { Reset(); }
    OwnedBlock(OwnedBlock&& other) noexcept : block_(other.Release()) {}
    OwnedBlock& operator=(OwnedBlock&& other) noexcept {
        if (this != &other) Reset(other.Release());
        return *this;
    }
    OwnedBlock(const OwnedBlock&) = delete;
    OwnedBlock& operator=(const OwnedBlock&) = delete;

    explicit operator bool() const { return block_ != 0; }
    [[nodiscard]] GlobalHandle Get() const { return block_; }
    GlobalHandle Release() { return std::exchange(block_, 0); }
    void Reset(GlobalHandle block = 0) {
        if (block_ != 0) GlobalFree(block_);
        block_ = block;
    }

  private:
    GlobalHandle block_ = 0;
};

// The wait cursor for the length of a scope.
class WaitCursor {
  public:
    WaitCursor() : before_(SetCursor(LoadCursorA(0, IDC_WAIT))) {}
    ~WaitCursor() { SetCursor(before_); }
    WaitCursor(const WaitCursor&) = delete;
    WaitCursor& operator=(const WaitCursor&) = delete;

  private:
    CursorHandle before_;
};

}  // namespace vellim
