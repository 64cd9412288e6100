// The header of a DIB, checked, and its colour table. An application's header need not be aligned:
// all is copied out of it by bytes.
#include "platform/dib_format.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "platform/display.h"

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

std::optional<DibFormat> ReadDibFormat(const BITMAPINFO* info, uint32_t use,
                                       const Palette* palette) {
    if (info == nullptr || (use != DIB_RGB_COLORS && use != DIB_PAL_COLORS)) return std::nullopt;
    const auto* bytes = reinterpret_cast<const uint8_t*>(info);
    BITMAPINFOHEADER header;
    std::memcpy(&header, bytes, sizeof header);
    if (!IsUnderstood(header)) return std::nullopt;
    const uint32_t bits = header.biBitCount;
    const uint64_t stride = DibStride(header.biWidth, bits);
    if (stride > kMostRowBytes) return std::nullopt;

    DibFormat dib{header.biWidth, header.biHeight, static_cast<uint32_t>(stride), {}};
    dib.pixels.bits = bits;
    if (bits == 24) return dib;
    const uint32_t all = 1U << bits;
    const uint32_t count = header.biClrUsed != 0 ? std::min(header.biClrUsed, all) : all;
    const uint8_t* table = bytes + sizeof header;
    dib.pixels.colorCount = count;
    for (uint32_t i = 0; i < count; i++)
        dib.pixels.colors[i] =
            use == DIB_RGB_COLORS ? ColorOfQuad(table, i) : ColorOfIndex(table, i, palette);
    return dib;
}

uint64_t DibStride(int32_t width, uint32_t bits) {
    return (static_cast<uint64_t>(width) * bits + 31) / 32 * 4;
}

}  // namespace vellim
