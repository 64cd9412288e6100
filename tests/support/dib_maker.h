// DIBs made to measure, and compared. For programs that link the bridge.
#pragma once

#include <cstring>

#include "bridge/dib.h"
#include "platform/guards.h"

namespace vellim::test {

// Of 300 x 96 dots an inch, with a rising colour table; of 1 bit with black and white, the one or
// the other first. Runs and noise take turns.
inline OwnedBlock MakeDib(int32_t width, int32_t height, uint16_t bits, bool blackFirst = true) {
    BITMAPINFOHEADER header;
    InitDibHeader(&header, width, height, bits);
    header.biXPelsPerMeter = 11811;
    header.biYPelsPerMeter = 3780;
    const auto offset = static_cast<uint32_t>(DibBitsOffset(&header));
    OwnedBlock dib(GlobalAlloc(GHND, offset + header.biSizeImage));
    const LockedBlock locked(dib.Get());
    auto* bytes = locked.As<uint8_t>();
    std::memcpy(bytes, &header, sizeof header);
    for (uint32_t i = 0; i < header.biClrUsed; i++) {
        const auto grey = static_cast<uint8_t>(i * 255 / (header.biClrUsed - 1));
        const RGBQUAD colour = {grey, uint8_t(255 - grey), uint8_t(grey / 2), 0};
        std::memcpy(bytes + 40 + 4 * i, &colour, 4);
    }
    if (bits == 1) std::memset(bytes + (blackFirst ? 40 : 44), 0, 3);
    if (bits == 1) std::memset(bytes + (blackFirst ? 44 : 40), 0xFF, 3);
    for (uint32_t i = 0; i < header.biSizeImage; i++)
        bytes[offset + i] = static_cast<uint8_t>(i % 64 < 40 ? i * 37 + i * i / 7 : 0);
    return dib;
}

// Whether the whole bytes of all rows are the same: what is behind a row's last pixel isn't kept.
inline bool SamePixels(GlobalHandle a, GlobalHandle b) {
    const LockedBlock first(a), second(b);
    if (!first || !second || first.Size() != second.Size()) return false;
    const auto* header = first.As<BITMAPINFOHEADER>();
    const uint32_t rowBits = static_cast<uint32_t>(header->biWidth) * header->biBitCount;
    for (auto row = DibBitsOffset(header); row < first.Size(); row += (rowBits + 31) / 32 * 4)
        if (std::memcmp(first.As<uint8_t>() + row, second.As<uint8_t>() + row, rowBits / 8) != 0)
            return false;
    return true;
}

}  // namespace vellim::test
