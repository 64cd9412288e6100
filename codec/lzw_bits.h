// The bits of one LZW strip: codes of 9 to 12 bits, most significant bit first, in a 64-bit window
// whose topmost bits come next.
//
// How far the stream must reach for a code to count is part of the format as it is read here: bytes
// belong together in pairs from the strip's first byte on, and a code can be taken once the pairs
// in hand hold it and at least one bit more. A stream that ends short of that has ended too soon,
// even when the code's own bits are there. While the code buffer has bytes enough for any code,
// the window is filled eight at a time and that rule is met without asking; near the buffer's end
// Reserve follows it to the byte.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "vellim/codec.h"
#include "vellim/failures.h"

namespace vellim {

struct LzwBits {
    uint64_t window = 0;
    unsigned count = 0;  // bits of the window that are accounted for
    const uint8_t* cursor = nullptr;
    const uint8_t* end = nullptr;
    const uint8_t* origin = nullptr;  // first byte of the strip, or of the buffer behind it
    uint64_t before = 0;              // bytes of the strip in the buffers before this one

    // A full window holds four codes, and the pair rule looks at most two bytes beyond it.
    static constexpr int kCodesPerFill = 4;
    static constexpr ptrdiff_t kBytesForFill = 16;
    static constexpr unsigned kWindowBits = 64;
    static constexpr unsigned kPairBits = 16;

    // Begins a strip at the first byte of the code buffer that isn't used yet.
    void BeginStrip(const CodecState& state) {
        window = 0;
        count = 0;
        before = 0;
        TakeBuffer(state);
    }

    [[nodiscard]] bool CanFill() const { return end - cursor >= kBytesForFill; }

    // At least 56 bits; the bits behind them are right as well, and are found again next time.
    void Fill() {
        uint64_t bytes = 0;
        std::memcpy(&bytes, cursor, sizeof(bytes));
        if constexpr (std::endian::native == std::endian::little) bytes = __builtin_bswap64(bytes);
        window |= bytes >> count;
        cursor += (kWindowBits - 1 - count) >> 3;
        count |= kWindowBits - 8;
    }

    [[nodiscard]] uint32_t Peek(unsigned width) const {
        return static_cast<uint32_t>(window >> (kWindowBits - width));
    }

    void Skip(unsigned width) {
        window <<= width;
        count -= width;
    }

    // Gets the bytes that a code of `width` bits needs, from the stream if the buffer has too few.
    // 0 or a failure code.
    uint32_t Reserve(CodecState& state, unsigned width) {
        const uint64_t used = Loaded() * 8 - count;
        const uint64_t pairs = (used + width + 1 + kPairBits - 1) / kPairBits;
        while (Loaded() < pairs * 2) {
            if (cursor == end) {
                const uint32_t result = NextBuffer(state);
                if (result != TIFF_SUCCESS) return result;
            }
            window |= uint64_t{*cursor++} << (kWindowBits - 8 - count);
            count += 8;
        }
        return TIFF_SUCCESS;
    }

  private:
    [[nodiscard]] uint64_t Loaded() const {
        return before + static_cast<uint64_t>(cursor - origin);
    }

    void TakeBuffer(const CodecState& state) {
        origin = cursor = state.CodeCursor;
        end = cursor + state.CodeLeft;
    }

    uint32_t NextBuffer(CodecState& state) {
        before = Loaded();
        origin = cursor;  // should the fill fail, nothing is counted twice
        const uint32_t result = FillCodeBuffer(&state);
        if (result != TIFF_SUCCESS) return result;
        if (state.CodeLeft == 0) return TIFF_BAD_CODE;
        TakeBuffer(state);
        return TIFF_SUCCESS;
    }
};

}  // namespace vellim
