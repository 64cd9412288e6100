#include "platform/graphics/row_stretching.h"

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

// The most bits that a word read at any bit is sure to have.
constexpr uint32_t kMostAtOnce = kWordBits - (kByteBits - 1);

// `count` bits of the row as `inverted` turns it, at the low end of the result. At least one.
uint64_t BitsFrom(const uint8_t* row, uint32_t first, uint32_t count, uint64_t inverted) {
    const uint64_t word = BigEndianWord(row + first / kByteBits) ^ inverted;
    return word << first % kByteBits >> (kWordBits - count);
}

// Whether the group has a one.
bool HasOne(const uint8_t* row, PixelGroup group, uint64_t inverted) {
    auto first = static_cast<uint32_t>(group.first);
    const auto end = static_cast<uint32_t>(group.end);
    uint64_t ones = 0;
    for (; end - first > kMostAtOnce; first += kMostAtOnce)
        ones |= BitsFrom(row, first, kMostAtOnce, inverted);
    return (ones | BitsFrom(row, first, end - first, inverted)) != 0;
}

// A bit for each of up to eight groups, set where it has a one. Groups that lie close together are
// looked at together first: most of a page is blank.
uint32_t OnesOf(const uint8_t* row, std::span<const PixelGroup> groups, uint64_t inverted) {
    const auto [low, high] = std::minmax(groups.front().first, groups.back().first);
    const auto first = static_cast<uint32_t>(low);
    const auto end = static_cast<uint32_t>(std::max(groups.front().end, groups.back().end));
    const uint32_t span = end - first;
    uint32_t ones = 0;
    if (span > kMostAtOnce) {
        for (const PixelGroup& group : groups)
            ones = ones << 1U | static_cast<uint32_t>(HasOne(row, group, inverted));
        return ones;
    }
    const uint64_t bits = BitsFrom(row, first, span, inverted);
    if (bits == 0) return 0;
    const uint64_t word = bits << (kWordBits - span);
    for (const PixelGroup& group : groups) {
        const uint64_t from = word << (static_cast<uint32_t>(group.first) - first);
        const auto count = static_cast<uint32_t>(group.end - group.first);
        ones = ones << 1U | static_cast<uint32_t>(from >> (kWordBits - count) != 0);
    }
    return ones;
}

// AND has a zero where the inverted row has a one.
void StretchBits(const uint8_t* from, std::span<const PixelGroup> groups, Joining joining,
                 uint8_t* to) {
    const uint64_t inverted = joining == Joining::And ? ~uint64_t{0} : 0;
    const uint32_t mask = joining == Joining::And ? 0xFF : 0;
    for (; groups.size() >= kByteBits; groups = groups.subspan(kByteBits))
        *to++ = static_cast<uint8_t>(OnesOf(from, groups.first<kByteBits>(), inverted) ^ mask);
    if (groups.empty()) return;
    const auto few = static_cast<uint32_t>(groups.size());
    const uint32_t ones = OnesOf(from, groups, inverted) ^ (mask >> (kByteBits - few));
    *to = static_cast<uint8_t>(ones << (kByteBits - few));
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
