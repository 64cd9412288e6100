// Putting TIFF elements into and out of a file's byte order and bit order (TIFF 6.0, section 2 for
// the types, section 8 for FillOrder). The host is little-endian.

#include <bit>
#include <cstring>

#include "container/streams.h"

namespace vellim {
namespace {

static_assert(std::endian::native == std::endian::little);

uint16_t Swapped(uint16_t value) {
    return __builtin_bswap16(value);
}
uint32_t Swapped(uint32_t value) {
    return __builtin_bswap32(value);
}
uint64_t Swapped(uint64_t value) {
    return __builtin_bswap64(value);
}

// The buffer may start at any address, so elements are copied in and out.
template <typename Element>
void SwapEach(uint8_t* bytes, uint32_t count) {
    for (uint32_t i = 0; i < count; i++, bytes += sizeof(Element)) {
        Element element;
        std::memcpy(&element, bytes, sizeof element);
        element = Swapped(element);
        std::memcpy(bytes, &element, sizeof element);
    }
}

// Mirrors eight bytes at once: neighbouring bits, then pairs, then halves of each byte.
uint64_t MirroredBytes(uint64_t bytes) {
    constexpr uint64_t kOddBits = 0x5555555555555555;
    constexpr uint64_t kOddPairs = 0x3333333333333333;
    constexpr uint64_t kLowHalves = 0x0F0F0F0F0F0F0F0F;
    bytes = ((bytes >> 1) & kOddBits) | ((bytes & kOddBits) << 1);
    bytes = ((bytes >> 2) & kOddPairs) | ((bytes & kOddPairs) << 2);
    return ((bytes >> 4) & kLowHalves) | ((bytes & kLowHalves) << 4);
}

}  // namespace

void SwapElements(void* buffer, uint32_t type, uint32_t count) {
    auto* bytes = static_cast<uint8_t*>(buffer);
    switch (TiffTypeSize(type)) {
        case 2:
            return SwapEach<uint16_t>(bytes, count);
        case 4:
            return SwapEach<uint32_t>(bytes, count);
        case 8:
            return SwapEach<uint64_t>(bytes, count);
        default:
            return;
    }
}

void ReverseBits(uint8_t* buffer, size_t byteCount) {
    size_t at = 0;
    for (; byteCount - at >= sizeof(uint64_t); at += sizeof(uint64_t)) {
        uint64_t bytes = 0;
        std::memcpy(&bytes, buffer + at, sizeof bytes);
        bytes = MirroredBytes(bytes);
        std::memcpy(buffer + at, &bytes, sizeof bytes);
    }
    for (; at < byteCount; at++)
        buffer[at] = static_cast<uint8_t>(MirroredBytes(buffer[at]));
}

}  // namespace vellim
