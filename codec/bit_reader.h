// The bits of a run's code buffer, most significant bit first (FillOrder has been undone when the
// buffer was filled).
//
// Two ways lead through the same bits. With eight bytes left in the code buffer Refill tops the
// window up in one step and nothing needs checking for the next 56 bits. Near a buffer's end Ensure
// takes byte by byte, across buffers, and has the buffer filled anew only when a bit of the next
// buffer is really wanted: when a stream ends, the failure comes at the code that lacks bits, not
// before.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

#include "vellim/codec.h"

namespace vellim {

inline uint64_t LoadNative64(const uint8_t* bytes) {
    uint64_t value = 0;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

inline void StoreNative64(uint8_t* bytes, uint64_t value) {
    std::memcpy(bytes, &value, sizeof value);
}

inline uint64_t LoadBigEndian64(const uint8_t* bytes) {
    const uint64_t value = LoadNative64(bytes);
    return std::endian::native == std::endian::little ? __builtin_bswap64(value) : value;
}

inline void StoreBigEndian64(uint8_t* bytes, uint64_t value) {
    StoreNative64(bytes,
                  std::endian::native == std::endian::little ? __builtin_bswap64(value) : value);
}

// A run whose work memory has been taken, and what brings more code into its buffer:
// FillCodeBuffer, unless the stream is cut into blocks. All of it in one place, so that a reader is
// small enough to live in registers.
struct CodeSource {
    CodecState* state;
    uint32_t (*fill)(CodecState* state);
    const uint8_t* base;  // of the code buffer

    explicit CodeSource(CodecState& run, uint32_t (*fillBuffer)(CodecState*) = FillCodeBuffer)
        : state(&run), fill(fillBuffer), base(run.CodeBufferBase) {}
};

// The source must outlive its readers.
class BitReader {
  public:
    explicit BitReader(const CodeSource& source) : source_(&source) { Reload(); }

    // Drops what is in the window and goes on at the run's CodeCursor.
    void Reload() {
        TakeOver();
        window_ = 0;
        count_ = 0;
    }

    // Eight bytes can be loaded at the cursor.
    [[nodiscard]] bool HasRoom() const { return end_ - cursor_ >= 8; }

    // Needs HasRoom. Afterwards at least 56 bits are in the window.
    void Refill() {
        window_ |= LoadBigEndian64(cursor_) >> count_;
        const uint32_t bytes = (63 - count_) >> 3;
        cursor_ += bytes;
        count_ += bytes * 8;
    }

    // Whether `bits` bits (up to 56) could be had without care.
    bool TopUp(uint32_t bits) {
        if (count_ >= bits) return true;
        if (!HasRoom()) return false;
        Refill();
        return true;
    }

    // Brings at least `bits` bits (up to 56) into the window. 0, or the failure of the fill.
    uint32_t Ensure(uint32_t bits) {
        while (count_ < bits) {
            if (cursor_ == end_) {
                const uint32_t failure = source_->fill(source_->state);
                if (failure != 0) return failure;
                TakeOver();
                continue;
            }
            window_ |= uint64_t{*cursor_++} << (56 - count_);
            count_ += 8;
        }
        return 0;
    }

    void Consume(uint32_t bits) {
        window_ <<= bits;
        count_ -= bits;
    }

    // The next bits from bit 63 on. Those beyond Count are zero or the stream's own.
    [[nodiscard]] uint64_t Window() const { return window_; }
    [[nodiscard]] uint32_t Count() const { return count_; }

    // Bits of the window alone, in its top `bits` bits; bits beyond Count are not counted on.
    [[nodiscard]] uint32_t Peek(uint32_t bits) const {
        return static_cast<uint32_t>(window_ >> 32) >> (32 - bits);
    }

    // Drops the rest of a byte that has been begun.
    void AlignToByte() { Consume(count_ & 7U); }

    // Bits from the code buffer's start to the next bit; negative while bits of the buffer before
    // are still in the window.
    [[nodiscard]] int64_t Position() const {
        return (cursor_ - source_->base) * 8 - int64_t{count_};
    }

    // The 64 bits at a position of the code buffer that lies behind its start and before Position.
    // Bits beyond the buffer's valid bytes are the slack's.
    [[nodiscard]] uint64_t LookBack(int64_t position) const {
        return LoadBigEndian64(source_->base + position / 8) << (position % 8);
    }

  private:
    void TakeOver() {
        cursor_ = source_->state->CodeCursor;
        end_ = cursor_ + source_->state->CodeLeft;
    }

    const CodeSource* source_;
    const uint8_t* cursor_ = nullptr;
    const uint8_t* end_ = nullptr;
    uint64_t window_ = 0;
    uint32_t count_ = 0;
};

}  // namespace vellim
