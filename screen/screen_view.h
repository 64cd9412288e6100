// The paint under way on this thread, as its line functions read it.
#pragma once

#include "screen/view_layout.h"

namespace vellim {

struct ScreenView {
    ViewLayout View;
    DeviceContextHandle LineDC = 0;  // of memory, with the bitmap of one line; 0: no paint runs
};

// Set from scratch by every paint.
ScreenView& ThreadScreenView();

}  // namespace vellim
