// What the library itself needs of streams beyond the exported calls.
#pragma once

#include <cstddef>
#include <cstdint>

#include "vellim/streams.h"

namespace vellim {

// A memory stream over the first `size` bytes of `block`, or -1 when all 29 are taken. `block` may
// be 0 with `size` 0 for a stream that is still to be written.
StreamHandle mOpen(GlobalHandle block, int32_t size);

// The block of a memory stream as it is now; 0 for any other handle.
GlobalHandle mBlock(StreamHandle handle);

// Width in bytes of one element.
constexpr uint32_t TiffTypeSize(uint32_t type) {
    switch (type) {
        case TIFF_TYPE_SHORT:
            return 2;
        case TIFF_TYPE_LONG:
        case TIFF_TYPE_OFFSET:
            return 4;
        case TIFF_TYPE_RATIONAL:
            return 8;
        default:
            return 1;
    }
}

// Reverses the bytes of each of `count` elements in place: SHORT, LONG and OFFSET by their width,
// RATIONAL as one unit of 8. Other types are left as they are.
void SwapElements(void* buffer, uint32_t type, uint32_t count);

// Mirrors the bits of every byte.
void ReverseBits(uint8_t* buffer, size_t byteCount);

// An open stream, closed at the end of the scope.
class OpenStream {
  public:
    explicit OpenStream(StreamHandle handle) : handle_(handle) {}
    ~OpenStream() { Close(); }
    OpenStream(const OpenStream&) = delete;
    OpenStream& operator=(const OpenStream&) = delete;

    explicit operator bool() const { return handle_ != -1 && handle_ != 0; }
    [[nodiscard]] StreamHandle Get() const { return handle_; }
    void Close() {
        if (*this) mClose(handle_);
        handle_ = -1;
    }

  private:
    StreamHandle handle_;
};

}  // namespace vellim
