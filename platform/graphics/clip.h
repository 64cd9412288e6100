// The region of a device context that is drawn to: its surface, of a window the client area,
// without the excluded rectangles.
#pragma once

#include <cstdint>

#include "platform/graphics/device_contexts.h"

namespace vellim {

// The surface, or the window's client area; the whole plane where there is neither.
RECT BoundsOf(const DeviceContext& context);

// Walks the visible parts of a rectangle: in rectangles that don't overlap, from top to bottom in
// bands and within a band from left to right.
class VisibleParts {
  public:
    VisibleParts(const DeviceContext& context, const RECT& area);

    // False when there are no more.
    bool Next(RECT& part);

  private:
    void BeginBand(int32_t top);

    const std::vector<RECT>& excluded_;  // by their left edges
    RECT area_{};
    int32_t top_ = 0;  // of the band
    int32_t bottom_ = 0;
    int32_t x_ = 0;    // the band's next pixel that may be visible
    size_t next_ = 0;  // the excluded rectangle to look at next
};

}  // namespace vellim
