// One loop for all pairs of formats, which the compiler makes for each pair of depths; rows that
// need no new pixels are copied, and rows of one bit go by bytes.
#include "platform/graphics/pixel_rows.h"

#include <bit>
#include <cstring>

namespace vellim {
namespace {

template <uint32_t kBits>
uint32_t PixelAt(const uint8_t* row, size_t x) {
    if constexpr (kBits == 24) {
        const uint8_t* pixel = row + 3 * x;
        return pixel[0] | uint32_t{pixel[1]} << 8U | uint32_t{pixel[2]} << 16U;
    } else {
        constexpr uint32_t perByte = 8 / kBits;
        constexpr uint32_t mask = (1U << kBits) - 1;
        const auto behind = static_cast<uint32_t>(perByte - 1 - x % perByte);
        return uint32_t{row[x / perByte]} >> behind * kBits & mask;
    }
}

// `fresh` in place of the first `bits` bits of a byte.
uint8_t WithFirstBits(uint8_t byte, uint32_t fresh, uint32_t bits) {
    const uint32_t kept = 0xFFU >> bits;
    return static_cast<uint8_t>((byte & kept) | (fresh & ~kept));
}

// Up to 8 pixels of less than 8 bits in one byte, the first in the high bits.
template <uint32_t kFrom, uint32_t kTo, typename Map>
uint32_t GatherByte(Map& map, const uint8_t* from, size_t x, uint32_t count) {
    uint32_t byte = 0;
    for (uint32_t i = 0; i < count; i++)
        byte = byte << kTo | map(PixelAt<kFrom>(from, x + i));
    return byte << (8 - count * kTo);
}

template <uint32_t kFrom, uint32_t kTo, typename Map>
void ConvertPixels(Map map, const uint8_t* from, uint8_t* to, size_t width) {
    constexpr bool isLittleEndian = std::endian::native == std::endian::little;
    if constexpr (kTo == 24) {
        size_t x = 0;
        // Two pixels at a time; the two bytes that go along are the next one's.
        for (; isLittleEndian && x + 2 < width; x += 2, to += 6) {
            const uint64_t second = map(PixelAt<kFrom>(from, x + 1));
            const uint64_t both = map(PixelAt<kFrom>(from, x)) | second << 24U;
            std::memcpy(to, &both, sizeof both);
        }
        for (; x < width; x++, to += 3) {
            const uint32_t pixel = map(PixelAt<kFrom>(from, x));
            to[0] = static_cast<uint8_t>(pixel);
            to[1] = static_cast<uint8_t>(pixel >> 8U);
            to[2] = static_cast<uint8_t>(pixel >> 16U);
        }
    } else {
        constexpr uint32_t perByte = 8 / kTo;
        size_t x = 0;
        for (; x + perByte <= width; x += perByte)
            *to++ = static_cast<uint8_t>(GatherByte<kFrom, kTo>(map, from, x, perByte));
        const auto left = static_cast<uint32_t>(width - x);
        if (left != 0)
            *to = WithFirstBits(*to, GatherByte<kFrom, kTo>(map, from, x, left), left * kTo);
    }
}

template <uint32_t kFrom, typename Map>
void ConvertFrom(Map map, uint32_t toBits, const uint8_t* from, uint8_t* to, size_t width) {
    switch (toBits) {
        case 1:
            return ConvertPixels<kFrom, 1>(map, from, to, width);
        case 4:
            return ConvertPixels<kFrom, 4>(map, from, to, width);
        case 8:
            return ConvertPixels<kFrom, 8>(map, from, to, width);
        default:
            return ConvertPixels<kFrom, 24>(map, from, to, width);
    }
}

// Each bit is kept, inverted, or set to what both colours become.
void ConvertBits(uint32_t zero, uint32_t one, const uint8_t* from, uint8_t* to, size_t width) {
    const uint32_t invert = zero != 0 ? 0xFFU : 0;
    const uint32_t keep = zero != one ? 0xFFU : 0;
    const auto convert = [=](uint8_t byte) { return (byte & keep) ^ invert; };
    const size_t whole = width / 8;
    for (size_t i = 0; i < whole; i++)
        to[i] = static_cast<uint8_t>(convert(from[i]));
    const auto left = static_cast<uint32_t>(width % 8);
    if (left != 0) to[whole] = WithFirstBits(to[whole], convert(from[whole]), left);
}

void CopyPixels(uint32_t bits, const uint8_t* from, uint8_t* to, size_t width) {
    const size_t all = width * bits;
    const size_t whole = all / 8;
    if (whole != 0) std::memcpy(to, from, whole);
    const auto left = static_cast<uint32_t>(all % 8);
    if (left != 0) to[whole] = WithFirstBits(to[whole], from[whole], left);
}

bool KeepsAll(const PixelConversion& conversion) {
    for (uint32_t i = 0; i < 1U << conversion.fromBits; i++)
        if (conversion.pixels[i] != i) return false;
    return true;
}

}  // namespace

PixelConversion MakeConversion(const PixelFormat& from, const PixelFormat& to) {
    PixelConversion conversion;
    conversion.fromBits = from.bits;
    conversion.to = to;
    using Way = PixelConversion::Way;
    if (from.bits == 24) {
        conversion.way = to.bits == 24 ? Way::Copy : Way::Search;
        return conversion;
    }
    for (uint32_t i = 0; i < 1U << from.bits; i++) {
        const ColorRef color = from.colors[i];
        if (to.bits == 24) {
            conversion.pixels[i] = SwapRedAndBlue(color);
        } else {
            const bool same = i < to.colorCount && to.colors[i] == color;
            conversion.pixels[i] = same ? i : NearestIndex(to, color);
        }
    }
    conversion.way = from.bits == to.bits && KeepsAll(conversion) ? Way::Copy : Way::Table;
    return conversion;
}

size_t BytesOfPixels(uint32_t bits, uint32_t width) {
    return static_cast<size_t>((uint64_t{width} * bits + 7) / 8);
}

void ConvertRow(const PixelConversion& conversion, const uint8_t* from, uint8_t* to,
                uint32_t width) {
    const uint32_t toBits = conversion.to.bits;
    const auto& pixels = conversion.pixels;
    if (conversion.way == PixelConversion::Way::Copy) return CopyPixels(toBits, from, to, width);
    if (conversion.way == PixelConversion::Way::Search) {
        ColorSearch& search = ColorSearch::For(conversion.to);
        const auto nearest = [&search](uint32_t pixel) {
            return search.Nearest(SwapRedAndBlue(pixel));
        };
        return ConvertFrom<24>(nearest, toBits, from, to, width);
    }
    const auto look = [&pixels](uint32_t pixel) { return pixels[pixel]; };
    switch (conversion.fromBits) {
        case 1:
            if (toBits == 1) return ConvertBits(pixels[0], pixels[1], from, to, width);
            return ConvertFrom<1>(look, toBits, from, to, width);
        case 4:
            return ConvertFrom<4>(look, toBits, from, to, width);
        default:
            return ConvertFrom<8>(look, toBits, from, to, width);
    }
}

// Whole bytes on both sides are what turned pictures come in.
void ConvertColumn(const PixelConversion& conversion, FromColumn from, ToColumn to,
                   uint32_t count) {
    const bool isLookedUp = conversion.way == PixelConversion::Way::Table &&
                            conversion.fromBits == 8 && conversion.to.bits >= 8;
    const size_t bytes = conversion.to.bits / 8;
    for (; count != 0; count--, from.first += from.step, to.first += to.step) {
        if (!isLookedUp) {
            ConvertRow(conversion, from.first, to.first, 1);
            continue;
        }
        const uint32_t pixel = conversion.pixels[*from.first];
        for (size_t i = 0; i < bytes; i++)
            to.first[i] = static_cast<uint8_t>(pixel >> 8 * i);
    }
}

}  // namespace vellim
