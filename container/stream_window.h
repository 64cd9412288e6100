// A few kilobytes of a stream held in memory, so that fields which lie close together cost one
// read. Directories are read through it field by field, as if each were read from the stream
// itself: a field is there or it isn't, wherever the window happens to end.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>

#include "vellim/streams.h"

namespace vellim {

class StreamWindow {
  public:
    // The stream stays its owner's. Its position moves.
    explicit StreamWindow(StreamHandle stream) : stream_(stream) {}

    // The `wanted` bytes at `offset`, or fewer where the stream ends before. At most kBytes can be
    // wanted. Valid until the next call.
    std::span<const uint8_t> Peek(uint64_t offset, uint32_t wanted) {
        if (!Holds(offset, wanted)) MoveTo(offset, wanted);
        const auto at = static_cast<uint32_t>(offset - start_);
        return {bytes_.data() + at, std::min(wanted, filled_ - at)};
    }

    // The bytes at `offset`, all of them, or null. The same limits.
    const uint8_t* At(uint64_t offset, uint32_t wanted);

    // Copies `bytes` bytes at `offset`, of any number, to `to`; false when they aren't all there.
    bool Copy(uint64_t offset, uint8_t* to, uint32_t bytes);

    static constexpr uint32_t kBytes = 4096;

  private:
    [[nodiscard]] bool Holds(uint64_t offset, uint32_t bytes) const {
        return offset >= start_ && offset + bytes <= start_ + filled_;
    }
    void MoveTo(uint64_t offset, uint32_t wanted);
    [[nodiscard]] bool SeekTo(uint64_t offset) const;
    [[nodiscard]] uint32_t ReadUpTo(uint8_t* to, uint32_t wanted, uint32_t room) const;

    StreamHandle stream_;
    uint64_t start_ = 0;
    uint32_t filled_ = 0;
    std::array<uint8_t, kBytes> bytes_;  // only the first filled_ are set
};

}  // namespace vellim
