// Which lines of a picture a view shows, where the screen takes each of them, and how.
#pragma once

#include <cstdint>
#include <optional>

#include "vellim/graphics.h"

namespace vellim {

// A copy from the bitmap of one line to the screen, in the picture's units: a row of it, or a
// column.
struct LineCopy {
    int32_t X;
    int32_t Y;
    int32_t Width;
    int32_t Height;
    int32_t SourceX;
    int32_t SourceY;
};

// The copy of line `line`, or nothing where the view doesn't show it. `flags` are the view's, the
// rectangles those of its layout. One line beyond those on show is taken as well; its copy falls
// just outside of them.
std::optional<LineCopy> CopyOfLine(uint32_t flags, const RECT& image, const RECT& source,
                                   const RECT& dest, const RECT& paint, uint32_t line);

// What the copies of all lines on show cover, in the picture's units from (0, 0). Where a pixel of
// the picture is several of the device, rounding may leave that a little short of the view's
// PaintRect.
RECT CoverOfLines(uint32_t flags, const RECT& image, const RECT& source);

// NOTSRCCOPY for one bit a pixel with a Photometric of white is zero, for a set bit is white on the
// screen; SRCCOPY for all else. An inverted view exchanges the two, at any depth. `photometric` is
// nothing where the picture doesn't tell.
uint32_t LineOperation(uint32_t bitsPerPixel, std::optional<uint32_t> photometric, uint32_t flags);

}  // namespace vellim
