// The size of a CALS picture on the screen.
#pragma once

#include <optional>

#include "screen/window_view.h"

namespace vellim {

// As it is stored, or nothing, with the code of ReadCALSInfo.
std::optional<PictureSize> SizeOfCalsImage(const char* path);

}  // namespace vellim
