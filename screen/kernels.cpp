#include "screen/kernels.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "codec/bit_reader.h"
#include "container/streams.h"

namespace vellim {
namespace {

constexpr size_t kMonoEntryBytes = 2;
constexpr size_t kDibEntryBytes = 4;
constexpr size_t kRgbBytes = 3;

enum class Order { kForward, kReversed };

// The entry of pixel `pixel` of `count`.
template <Order order, size_t entryBytes>
uint8_t* EntryOf(uint8_t* target, size_t pixel, size_t count) {
    return target + entryBytes * (order == Order::kForward ? pixel : count - 1 - pixel);
}

// Pixels of `bits` bits, each moved to the top of its entry's first byte. Those that share a whole
// byte are taken from it together, with shifts that the compiler knows.
template <Order order, unsigned bits>
void SpreadPacked(const uint8_t* source, uint8_t* target, size_t count) {
    constexpr size_t kEntryBytes = bits == 1 ? kMonoEntryBytes : kDibEntryBytes;
    constexpr unsigned kKept = bits == 1 ? 0x80 : 0xFF;
    constexpr size_t kShared = 8 / bits;
    const auto put = [target, count](size_t pixel, unsigned byte, size_t place) {
        *EntryOf<order, kEntryBytes>(target, pixel, count) =
            static_cast<uint8_t>(byte << (place * bits) & kKept);
    };
    const size_t whole = count - count % kShared;
    for (size_t pixel = 0; pixel < whole; pixel += kShared) {
        const unsigned byte = source[pixel / kShared];
        for (size_t place = 0; place < kShared; place++)
            put(pixel + place, byte, place);
    }
    for (size_t pixel = whole; pixel < count; pixel++)
        put(pixel, source[pixel / kShared], pixel % kShared);
}

template <Order order>
void SpreadRgb(const uint8_t* source, uint8_t* target, size_t count) {
    for (size_t i = 0; i < count; i++) {
        std::memcpy(EntryOf<order, kDibEntryBytes>(target, i, count), source + i * kRgbBytes,
                    kRgbBytes);
    }
}

// Shifts a row to the left by 1 to 7 bits; zeros come in behind its end.
void ShiftLeft(uint8_t* row, size_t bytes, unsigned shift) {
    constexpr size_t kWord = sizeof(uint64_t);
    size_t at = 0;
    for (; at + kWord < bytes; at += kWord) {
        const unsigned next = row[at + kWord];
        StoreBigEndian64(row + at, LoadBigEndian64(row + at) << shift | next >> (8 - shift));
    }
    for (; at < bytes; at++) {
        const unsigned next = at + 1 < bytes ? row[at + 1] : 0;
        row[at] = static_cast<uint8_t>(unsigned{row[at]} << shift | next >> (8 - shift));
    }
}

}  // namespace

void SpreadMonoLine(const uint8_t* source, uint8_t* target, uint32_t count) {
    SpreadPacked<Order::kForward, 1>(source, target, count);
}

void SpreadMonoLineReversed(const uint8_t* source, uint8_t* target, uint32_t count) {
    SpreadPacked<Order::kReversed, 1>(source, target, count);
}

void SpreadNibbleLine(const uint8_t* source, uint8_t* target, uint32_t count) {
    SpreadPacked<Order::kForward, 4>(source, target, count);
}

void SpreadNibbleLineReversed(const uint8_t* source, uint8_t* target, uint32_t count) {
    SpreadPacked<Order::kReversed, 4>(source, target, count);
}

void SpreadByteLine(const uint8_t* source, uint8_t* target, uint32_t count) {
    SpreadPacked<Order::kForward, 8>(source, target, count);
}

void SpreadByteLineReversed(const uint8_t* source, uint8_t* target, uint32_t count) {
    SpreadPacked<Order::kReversed, 8>(source, target, count);
}

void SpreadRgbLine(const uint8_t* source, uint8_t* target, uint32_t count) {
    SpreadRgb<Order::kForward>(source, target, count);
}

void SpreadRgbLineReversed(const uint8_t* source, uint8_t* target, uint32_t count) {
    SpreadRgb<Order::kReversed>(source, target, count);
}

// With whole bytes mirrored, the source's padding stands in front, and is shifted out.
void MirrorMonoLine(const uint8_t* source, uint8_t* target, uint32_t count) {
    const size_t bytes = (size_t{count} + 7) / 8;
    std::reverse_copy(source, source + bytes, target);
    ReverseBits(target, bytes);
    if (count % 8 != 0) ShiftLeft(target, bytes, 8 - count % 8);
}

void MirrorNibbleLine(const uint8_t* source, uint8_t* target, uint32_t count) {
    const size_t bytes = (size_t{count} + 1) / 2;
    if (count % 2 == 0) {
        for (size_t k = 0; k < bytes; k++)
            target[bytes - 1 - k] = static_cast<uint8_t>(source[k] << 4 | source[k] >> 4);
        return;
    }
    // Pairs lie across two bytes of the source, their halves where they are to be; the first pixel
    // is left over.
    constexpr unsigned kHighHalf = 0xF0;
    constexpr unsigned kLowHalf = 0x0F;
    target[bytes - 1] = source[0];
    for (size_t k = 0; k + 1 < bytes; k++) {
        target[bytes - 2 - k] =
            static_cast<uint8_t>((source[k + 1] & kHighHalf) | (source[k] & kLowHalf));
    }
}

void MirrorByteLine(const uint8_t* source, uint8_t* target, uint32_t count) {
    std::reverse_copy(source, source + count, target);
}

void MirrorRgbLine(const uint8_t* source, uint8_t* target, uint32_t count) {
    for (size_t i = 0; i < count; i++)
        std::memcpy(target + (count - 1 - i) * kRgbBytes, source + i * kRgbBytes, kRgbBytes);
}

}  // namespace vellim
