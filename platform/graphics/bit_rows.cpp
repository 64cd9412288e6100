#include "platform/graphics/bit_rows.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "vellim/graphics.h"

namespace vellim {
namespace {

constexpr size_t kByteBits = 8;
constexpr size_t kWordBits = 64;
constexpr uint32_t kByteMask = 0xFF;

template <PixelOperation kOperation, typename Word>
Word Joined(Word before, Word from) {
    switch (kOperation) {
        case PixelOperation::Copy:
            return from;
        case PixelOperation::CopyInverted:
            return static_cast<Word>(~from);
        case PixelOperation::Or:
            return before | from;
        case PixelOperation::And:
            return before & from;
        case PixelOperation::ExclusiveOr:
            return before ^ from;
    }
    return from;
}

// 1 to 8 bits, at the high end of the result. The second byte is read where they reach into it.
uint32_t FewBits(ConstBitPlace from, size_t count) {
    const size_t shift = from.bit % kByteBits;
    const uint8_t* bytes = from.bytes + from.bit / kByteBits;
    uint32_t both = static_cast<uint32_t>(bytes[0]) << kByteBits;
    if (shift + count > kByteBits) both |= bytes[1];
    return both << shift >> kByteBits & kByteMask;
}

// 64 bits in the order of their bytes in memory.
uint64_t WordOfBits(ConstBitPlace from) {
    constexpr bool isLittle = std::endian::native == std::endian::little;
    const size_t shift = from.bit % kByteBits;
    const uint8_t* bytes = from.bytes + from.bit / kByteBits;
    uint64_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    if (shift == 0) return word;
    if constexpr (isLittle) word = __builtin_bswap64(word);
    word = word << shift | bytes[sizeof word] >> (kByteBits - shift);
    return isLittle ? __builtin_bswap64(word) : word;
}

template <PixelOperation kOperation>
void CombineFew(BitPlace to, ConstBitPlace from, size_t count) {
    uint8_t& byte = to.bytes[to.bit / kByteBits];
    const size_t shift = to.bit % kByteBits;
    const uint32_t mask = kByteMask << (kByteBits - count) >> shift & (kByteMask >> shift);
    const uint32_t joined = Joined<kOperation, uint32_t>(byte, FewBits(from, count) >> shift);
    byte = static_cast<uint8_t>((byte & ~mask) | (joined & mask));
}

// Few bits up to a byte's edge, words from there, and the rest byte by byte.
template <PixelOperation kOperation>
void Combine(BitPlace to, ConstBitPlace from, size_t count) {
    const auto advance = [&](size_t bits) {
        to.bit += bits;
        from.bit += bits;
        count -= bits;
    };
    if (const size_t shift = to.bit % kByteBits; shift != 0 && count != 0) {
        const size_t few = std::min(kByteBits - shift, count);
        CombineFew<kOperation>(to, from, few);
        advance(few);
    }
    if (kOperation == PixelOperation::Copy && from.bit % kByteBits == 0) {
        std::memcpy(to.bytes + to.bit / kByteBits, from.bytes + from.bit / kByteBits,
                    count / kByteBits);
        advance(count / kByteBits * kByteBits);
    }
    while (count >= kWordBits) {
        uint8_t* place = to.bytes + to.bit / kByteBits;
        uint64_t before = 0;
        std::memcpy(&before, place, sizeof before);
        const uint64_t joined = Joined<kOperation>(before, WordOfBits(from));
        std::memcpy(place, &joined, sizeof joined);
        advance(kWordBits);
    }
    for (size_t few = 0; count != 0; count -= few) {
        few = std::min(kByteBits, count);
        CombineFew<kOperation>(to, from, few);
        to.bit += few;
        from.bit += few;
    }
}

void FillBits(uint8_t* row, size_t first, size_t count, uint8_t pattern) {
    const auto fillFew = [&](size_t few) {
        CombineFew<PixelOperation::Copy>({row, first}, {&pattern, 0}, few);
        first += few;
        count -= few;
    };
    if (const size_t shift = first % kByteBits; shift != 0 && count != 0)
        fillFew(std::min(kByteBits - shift, count));
    std::memset(row + first / kByteBits, pattern, count / kByteBits);
    first += count / kByteBits * kByteBits;
    count %= kByteBits;
    if (count != 0) fillFew(count);
}

void FillTriples(uint8_t* at, size_t count, uint32_t pixel) {
    constexpr size_t pixelBytes = 3;
    for (const uint8_t* end = at + count * pixelBytes; at != end; at += pixelBytes) {
        at[0] = static_cast<uint8_t>(pixel);
        at[1] = static_cast<uint8_t>(pixel >> kByteBits);
        at[2] = static_cast<uint8_t>(pixel >> 2 * kByteBits);
    }
}

}  // namespace

std::optional<PixelOperation> OperationOf(uint32_t rasterOperation) {
    switch (rasterOperation) {
        case SRCCOPY:
            return PixelOperation::Copy;
        case NOTSRCCOPY:
            return PixelOperation::CopyInverted;
        case SRCPAINT:
            return PixelOperation::Or;
        case SRCAND:
            return PixelOperation::And;
        case SRCINVERT:
            return PixelOperation::ExclusiveOr;
        default:
            return std::nullopt;
    }
}

void CombineBits(BitPlace to, ConstBitPlace from, size_t count, PixelOperation operation) {
    switch (operation) {
        case PixelOperation::Copy:
            return Combine<PixelOperation::Copy>(to, from, count);
        case PixelOperation::CopyInverted:
            return Combine<PixelOperation::CopyInverted>(to, from, count);
        case PixelOperation::Or:
            return Combine<PixelOperation::Or>(to, from, count);
        case PixelOperation::And:
            return Combine<PixelOperation::And>(to, from, count);
        case PixelOperation::ExclusiveOr:
            return Combine<PixelOperation::ExclusiveOr>(to, from, count);
    }
}

// Pixels of less than a byte fill it evenly, so that any bit of the pattern may come first.
void FillPixels(uint8_t* row, uint32_t bits, size_t first, size_t count, uint32_t pixel) {
    if (bits > kByteBits) return FillTriples(row + first * bits / kByteBits, count, pixel);
    uint32_t pattern = pixel;
    for (uint32_t filled = bits; filled < kByteBits; filled *= 2)
        pattern |= pattern << filled;
    FillBits(row, first * bits, count * bits, static_cast<uint8_t>(pattern));
}

}  // namespace vellim
