// A page's lengths in pixels.
#pragma once

#include <array>
#include <cstdint>

#include "vellim/fax.h"

namespace vellim {

// Places count from the page's upper left corner. The limits are W - L and H - T in unsigned
// arithmetic of 32 bits: margins wider than the page put a limit beyond any page.
struct PageGeometry {
    uint32_t width = 0;
    uint32_t height = 0;
    uint32_t left = 0;  // where lines begin, and the first of them
    uint32_t top = 0;
    uint32_t rightLimit = 0;  // what reaches it is too far
    uint32_t bottomLimit = 0;
    uint32_t lineSpacing = 0;
    std::array<uint32_t, FAX_TAB_STOPS> tabStops{};  // from `left`
};

// Each step is cut to whole numbers: millimetres to hundredths of an inch, and those to pixels.
// What 32 bits don't hold is as much as they do.
PageGeometry GeometryOf(const FaxPageRequest& request);

// Dots an inch as dots a metre, cut to a whole number that a DIB's header can hold.
int32_t DotsPerMeter(uint32_t dotsPerInch);

}  // namespace vellim
