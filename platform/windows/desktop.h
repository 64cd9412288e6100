// The desktop driver in force.
#pragma once

#include "vellim/platform.h"

namespace vellim {

// A copy, so that a driver's functions run with nothing locked: they may install another one.
DesktopDriver CurrentDesktop();

}  // namespace vellim
