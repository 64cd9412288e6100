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

bool IsUnderstood(const BITMAPINFOHEADER& header) {
    const uint32_t bits = header.biBitCount;
    return header.biSize == sizeof header && header.biPlanes == 1 && header.biCompression == 0 &&
           header.biWidth > 0 && header.biHeight > 0 &&
           (bits == 1 || bits == 4 || bits == 8 || bits == 24);
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

std::optional<DibFormat> ReadDibFormat(const BITMAPINFO* info, uint32_t use) {
    if (info == nullptr || (use != DIB_RGB_COLORS && use != DIB_PAL_COLORS)) return std::nullopt;
    BITMAPINFOHEADER header;
    std::memcpy(&header, static_cast<const void*>(info), sizeof header);
    if (!IsUnderstood(header)) return std::nullopt;
    const uint32_t bits = header.biBitCount;
    const uint64_t stride = DibStride(header.biWidth, bits);
    if (stride > kMostRowBytes) return std::nullopt;
    const uint32_t all = bits == 24 ? 0 : 1U << bits;
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

uint64_t DibStride(int32_t width, uint32_t bits) {
    return (static_cast<uint64_t>(width) * bits + 31) / 32 * 4;
}

}  // namespace vellim
