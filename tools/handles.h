// Guards for what the library and the system lend: each gives back at the end of its scope.
#pragma once

#include <unistd.h>

#include <cstdint>
#include <utility>

#include "vellim/files.h"
#include "vellim/platform.h"
#include "vellim/tags.h"

namespace vellim::tool {

// A handle that `close` ends, unless it is `none`.
template <typename Handle, Handle none, auto close>
class Owned {
  public:
    Owned() = default;
    explicit Owned(Handle handle) : handle_(handle) {}
    ~Owned() { Reset(); }
    Owned(Owned&& other) noexcept : handle_(other.Release()) {}
    Owned& operator=(Owned&& other) noexcept {
        if (this != &other) Reset(other.Release());
        return *this;
    }
    Owned(const Owned&) = delete;
    Owned& operator=(const Owned&) = delete;

    explicit operator bool() const { return handle_ != none; }
    [[nodiscard]] Handle Get() const { return handle_; }
    Handle Release() { return std::exchange(handle_, none); }
    void Reset(Handle handle = none) {
        if (handle_ != none) close(handle_);
        handle_ = handle;
    }

  private:
    Handle handle_ = none;
};

using OwnedBlock = Owned<GlobalHandle, 0U, &GlobalFree>;
using OwnedTiff = Owned<TiffFileHandle, 0U, &CloseTiffFile>;
using OwnedDescriptor = Owned<int, -1, &::close>;

// A block's bytes for the length of a scope; null when it can't be locked.
class LockedBlock {
  public:
    explicit LockedBlock(GlobalHandle block)
        : block_(block), bytes_(static_cast<uint8_t*>(GlobalLock(block))) {}
    ~LockedBlock() {
        if (bytes_ != nullptr) GlobalUnlock(block_);
    }
    LockedBlock(const LockedBlock&) = delete;
    LockedBlock& operator=(const LockedBlock&) = delete;

    [[nodiscard]] uint8_t* Bytes() const { return bytes_; }

  private:
    GlobalHandle block_;
    uint8_t* bytes_;
};

// The tags of one image in memory for the length of a scope, so that a file of a thousand pages
// never has more than one page's tags loaded.
class LoadedImage {
  public:
    LoadedImage(TiffFileHandle file, int32_t image)
        : file_(file), image_(image), loaded_(GetTiffImage(file, image) != 0) {}
    ~LoadedImage() {
        if (loaded_) DropTiffImage(file_, image_);
    }
    LoadedImage(const LoadedImage&) = delete;
    LoadedImage& operator=(const LoadedImage&) = delete;

    explicit operator bool() const { return loaded_; }

  private:
    TiffFileHandle file_;
    int32_t image_;
    bool loaded_;
};

}  // namespace vellim::tool
