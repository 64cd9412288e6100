// The header of a DIB, checked, and its colour table. An application's header need not be aligned:
// all is copied out of it by bytes.
#include "platform/graphics/dib_format.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "platform/graphics/display.h"

namespace vellim {
namespace {

constexpr uint64_t kMostRowBytes = std::numeric_limits<int32_t>::max();

bool IsUnderstood(const BITMAPINFOHEADER& header, DibDepths depths) {
    const uint32_t bits = header.biBitCount;
    const bool isDeep = depths == DibDepths::AllDrawn && (bits == 16 || bits == 32);
    return header.biSize == sizeof header && header.biPlanes == 1 && header.biCompression == 0 &&
           header.biWidth > 0 && header.biHeight > 0 &&
           (bits == 1 || bits == 4 || bits == 8 || bits == 24 || isDeep);
}

ColorRef ColorOfQuad(const uint8_t* table, uint32_t entry) {
    RGBQUAD quad;
    std::memcpy(&quad, table + size_t{entry} * sizeof quad, sizeof quad);
    return ColorOf({quad.rgbRed, quad.rgbGreen, quad.rgbBlue, 0});
}

ColorRef ColorOfIndex(const uint8_t* table, uint32_t entry, const Palette* palette) {
    uint16_t index = 0;
    std::memcpy(&index, table + size_t{entry} * sizeof index, sizeof index);
    return palette != nullptr ? ColorOfEntry(*palette, index) : 0;
}

}  // namespace

std::optional<DibFormat> ReadDibFormat(const BITMAPINFO* info, uint32_t use, DibDepths depths) {
    if (info == nullptr || (use != DIB_RGB_COLORS && use != DIB_PAL_COLORS)) return std::nullopt;
    BITMAPINFOHEADER header;
    std::memcpy(&header, static_cast<const void*>(info), sizeof header);
    if (!IsUnderstood(header, depths)) return std::nullopt;
    const uint32_t bits = header.biBitCount;
    const uint64_t stride = DibStride(header.biWidth, bits);
    if (stride > kMostRowBytes) return std::nullopt;
    const uint32_t all = bits <= 8 ? 1U << bits : 0;
    const uint32_t count = header.biClrUsed != 0 ? std::min(header.biClrUsed, all) : all;
    return DibFormat{header.biWidth, header.biHeight, static_cast<uint32_t>(stride), bits, count};
}

PixelFormat ReadDibColors(const BITMAPINFO* info, const DibFormat& dib, uint32_t use,
                          const Palette* palette) {
    const uint8_t* table = reinterpret_cast<const uint8_t*>(info) + sizeof(BITMAPINFOHEADER);
    PixelFormat pixels;
    pixels.bits = dib.bits;
    pixels.colorCount = dib.colorCount;
    for (uint32_t i = 0; i < dib.colorCount; i++)
        pixels.colors[i] =
            use == DIB_RGB_COLORS ? ColorOfQuad(table, i) : ColorOfIndex(table, i, palette);
    return pixels;
}

void MakeTrueColor(const uint8_t* from, uint32_t fromBits, uint8_t* to, uint32_t width) {
    constexpr uint32_t fiveBits = 0x1F;
    for (uint32_t x = 0; x < width; x++, to += 3) {
        if (fromBits == 32) {
            std::copy_n(from + size_t{4} * x, 3, to);
            continue;
        }
        const uint8_t* pixel = from + size_t{2} * x;
        const uint32_t both = pixel[0] | uint32_t{pixel[1]} << 8U;
        for (uint32_t i = 0; i < 3; i++) {
            const uint32_t level = both >> 5 * i & fiveBits;
            to[i] = static_cast<uint8_t>(level << 3U | level >> 2U);
        }
    }
}

uint64_t DibStride(int32_t width, uint32_t bits) {
    return (static_cast<uint64_t>(width) * bits + 31) / 32 * 4;
}

}  // namespace vellim
