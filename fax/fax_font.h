// Fonts for pages and overlays. They belong to the caller; 0 where none is to be had.
#pragma once

#include <cstdint>

#include "vellim/fax.h"

namespace vellim {

// The font of a request, whose `Font` gets its height; 0 too for an empty FontName, with `Font`
// left as it is. Beyond 31 bytes the name is cut. A height that 32 bits don't hold becomes 1, the
// smallest that there is.
FontHandle CreateFaxFont(const FaxPageRequest& request);

// Of this size at `resolution`; all else is left to the system.
FontHandle CreateOverlayFont(const char* name, int32_t pointSize, uint32_t resolution);

}  // namespace vellim
