#include "platform/row_stretching.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace vellim {
namespace {

constexpr uint32_t kByteBits = 8;
constexpr uint32_t kWordBits = 64;

uint64_t BigEndianWord(const uint8_t* bytes) {
    uint64_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return std::endian::native == std::endian::little ? __builtin_bswap64(word) : word;
}

// Whether the group has a one, in the row as `inverted` turns it.
bool HasOne(const uint8_t* row, PixelGroup group, uint64_t inverted) {
    constexpr uint32_t mostAtOnce = kWordBits - (kByteBits - 1);
    const auto onesFrom = [row, inverted](uint32_t first, uint32_t count) {
        const uint64_t word = BigEndianWord(row + first / kByteBits) ^ inverted;
        return word << first % kByteBits >> (kWordBits - count);
    };
    auto first = static_cast<uint32_t>(group.first);
    const auto end = static_cast<uint32_t>(group.end);
    uint64_t ones = 0;
    for (; end - first > mostAtOnce; first += mostAtOnce)
        ones |= onesFrom(first, mostAtOnce);
    return (ones | onesFrom(first, end - first)) != 0;
}

// AND has a zero where the inverted row has a one.
void StretchBits(const uint8_t* from, std::span<const PixelGroup> groups, Joining joining,
                 uint8_t* to) {
    const bool isAnd = joining == Joining::And;
    const uint64_t inverted = isAnd ? ~uint64_t{0} : 0;
    const auto byteOf = [&](std::span<const PixelGroup> few) {
        uint32_t byte = 0;
        for (const PixelGroup& group : few)
            byte = byte << 1U | static_cast<uint32_t>(HasOne(from, group, inverted) != isAnd);
        return byte;
    };
    for (; groups.size() >= kByteBits; groups = groups.subspan(kByteBits))
        *to++ = static_cast<uint8_t>(byteOf(groups.first<kByteBits>()));
    if (!groups.empty()) *to = static_cast<uint8_t>(byteOf(groups) << (kByteBits - groups.size()));
}

template <typename PixelAt>
uint32_t Joined(PixelGroup group, Joining joining, PixelAt pixelAt) {
    uint32_t pixel = pixelAt(group.first);
    for (int32_t i = group.first + 1; i < group.end; i++) {
        const uint32_t other = pixelAt(i);
        pixel = joining == Joining::And ? pixel & other : pixel | other;
    }
    return pixel;
}

void StretchNibbles(const uint8_t* from, std::span<const PixelGroup> groups, Joining joining,
                    uint8_t* to) {
    constexpr uint32_t nibbleMask = 0xF;
    constexpr uint32_t nibbleBits = 4;
    const auto pixelAt = [from](int32_t x) {
        return static_cast<uint32_t>(from[x / 2]) >> (x % 2 == 0 ? nibbleBits : 0) & nibbleMask;
    };
    for (size_t i = 0; i < groups.size(); i++) {
        const uint32_t pixel = Joined(groups[i], joining, pixelAt);
        to[i / 2] = static_cast<uint8_t>(i % 2 == 0 ? pixel << nibbleBits : to[i / 2] | pixel);
    }
}

void StretchBytes(const uint8_t* from, std::span<const PixelGroup> groups, Joining joining,
                  uint8_t* to) {
    const auto pixelAt = [from](int32_t x) -> uint32_t { return from[x]; };
    for (const PixelGroup& group : groups)
        *to++ = static_cast<uint8_t>(Joined(group, joining, pixelAt));
}

void StretchTriples(const uint8_t* from, std::span<const PixelGroup> groups, Joining joining,
                    uint8_t* to) {
    constexpr ptrdiff_t pixelBytes = 3;
    const auto pixelAt = [from](int32_t x) {
        const uint8_t* pixel = from + x * pixelBytes;
        return pixel[0] | static_cast<uint32_t>(pixel[1]) << kByteBits |
               static_cast<uint32_t>(pixel[2]) << 2 * kByteBits;
    };
    for (const PixelGroup& group : groups) {
        const uint32_t pixel = Joined(group, joining, pixelAt);
        *to++ = static_cast<uint8_t>(pixel);
        *to++ = static_cast<uint8_t>(pixel >> kByteBits);
        *to++ = static_cast<uint8_t>(pixel >> 2 * kByteBits);
    }
}

}  // namespace

void StretchRow(uint32_t bits, const uint8_t* from, std::span<const PixelGroup> groups,
                Joining joining, uint8_t* to) {
    if (bits == 1) return StretchBits(from, groups, joining, to);
    if (bits == 4) return StretchNibbles(from, groups, joining, to);
    if (bits == 8) return StretchBytes(from, groups, joining, to);
    StretchTriples(from, groups, joining, to);
}

}  // namespace vellim
