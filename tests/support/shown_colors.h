// The colours that DIBs and device bitmaps show. For programs that link the bridge.
#pragma once

#include "bridge/dib_bitmaps.h"
#include "platform/graphics/device_contexts.h"
#include "platform/graphics/fonts.h"
#include "platform/graphics/graphics_guards.h"
#include "platform/memory/memory_blocks.h"
#include "support/dib_maker.h"

namespace vellim::test {

using Colors = std::vector<ColorRef>;

// Lowest row first, read byte by byte: no call of the graphics plays a part.
inline Colors ColorsOf(DibHandle dib) {
    const LockedBlock block(dib);
    const auto* header = block.As<BITMAPINFOHEADER>();
    const auto width = static_cast<uint32_t>(header->biWidth);
    const uint32_t bits = header->biBitCount, stride = (width * bits + 31) / 32 * 4;
    const uint8_t* row = DibBitsPointer(block.As<void>(), block.Size());
    Colors colors;
    for (int32_t y = 0; y < header->biHeight; y++, row += stride) {
        for (uint32_t at = 0; at < width * bits; at += bits) {
            const uint8_t* color = row + at / 8;
            const uint32_t index = *color >> (8 - bits % 24 - at % 8) % 8 & ((1U << bits) - 1);
            if (bits != 24) color = block.As<uint8_t>() + 40 + size_t{4} * index;
            colors.push_back(color[2] | uint32_t{color[1]} << 8U | uint32_t{color[0]} << 16U);
        }
    }
    return colors;
}

// What the display in force shows in their place.
inline Colors Shown(Colors colors) {
    const ScopedContext display(ScopedContext::Kind::Display);
    for (ColorRef& color : colors)
        color = GetNearestColor(display.Get(), color);
    return colors;
}

inline void SetDisplayDepth(int32_t bits) {
    const DisplaySettings display = {96, 96, bits};
    SetDisplay(&display);
}

// Blocks, objects, contexts; the system's own count from the start.
inline std::vector<uint32_t> Live() {
    DefaultBitmap(), DefaultPalette(), WhiteBrush(), DefaultFont();
    return {LiveGlobalBlocks(), LiveObjects(), LiveContexts()};
}

}  // namespace vellim::test
