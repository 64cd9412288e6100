// The first steps of every load.
#pragma once

#include "container/open_tiff.h"

namespace vellim {

// Brings the image's tags into memory, and asks whether to go on if `showInfo` isn't 0. False, with
// the code set, when the file isn't open, has no such image, or the answer is no.
bool IsReadyToLoad(const OpenTiff& file, int32_t image, int32_t showInfo);

}  // namespace vellim
