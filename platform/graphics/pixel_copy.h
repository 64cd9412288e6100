// Copying pixels into a device context, and filling it.
#pragma once

#include <cstdint>

#include "platform/graphics/bit_rows.h"
#include "platform/graphics/copied_rows.h"
#include "platform/graphics/device_contexts.h"

namespace vellim {

// Edges in either order, beyond 32 bits too.
struct SourceEdges {
    int64_t left = 0;
    int64_t top = 0;
    int64_t right = 0;
    int64_t bottom = 0;
};

// What is copied: `width` x `height` pixels, of which the rows that `edges` take are at hand.
struct CopySource {
    SourceRows rows;
    int32_t width = 0;
    int32_t height = 0;
    SourceEdges edges;
    ColorRef background = 0;  // what becomes 1 on a surface of one bit
};

// Whether a copy or a fill of such a rectangle, in units of the context, meets any pixel of it.
bool MeetsPixels(const DeviceContext& to, POINT corner, int32_t width, int32_t height);

// Both draw to the surface of `to`, which has one, between edges in either order. Pixels that the
// source doesn't have, and those out of the clip region, stay as they are. False without memory.
bool CopyPixels(DeviceContext& to, const RECT& edges, CopySource source, PixelOperation operation);
void FillWithColor(DeviceContext& to, const RECT& edges, ColorRef color);

}  // namespace vellim
