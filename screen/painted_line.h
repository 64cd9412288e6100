// One line of one bit a pixel on its way to the screen: what the line functions of TIFF and of CALS
// pictures have in common.
#pragma once

#include <cstdint>

#include "screen/line_ranges.h"

namespace vellim {

struct MonoLinePaint {
    DeviceContextHandle To;
    DeviceContextHandle LineDC;  // of memory, with LineBitmap
    BitmapHandle LineBitmap;
    uint32_t RowPixels;
    uint32_t LineBytes;  // handed to SetBitmapBits
    uint32_t RasterOp;
    uint8_t* Scratch;  // not read without a turn
};

// Whether a copy reaches a pixel of the device at all: where a picture is drawn smaller, most lines
// needn't be looked at.
bool IsDrawn(const LineCopy& copy, DeviceContextHandle to);

// The line bitmap's part that `copy` tells, drawn on `to`.
void DrawLine(const LineCopy& copy, DeviceContextHandle to, DeviceContextHandle lineContext,
              uint32_t operation);

// Brings a line into the line bitmap, turned clockwise by `turns` quarters, and draws it.
void PaintMonoLine(const MonoLinePaint& paint, const LineCopy& copy, uint32_t turns,
                   const uint8_t* line);

}  // namespace vellim
