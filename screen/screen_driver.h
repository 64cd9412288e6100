// Painting an image of an open TIFF file.
#pragma once

#include <optional>

#include "screen/window_view.h"
#include "vellim/files.h"

namespace vellim {

// As DecompressTiffToScreen (vellim/screen.h), of an image that is in memory (GetTiffImage).
int32_t PaintTiffImage(TiffFileHandle file, int32_t image, WindowHandle window,
                       DeviceContextHandle context, const ZoomRatios* zoom, uint32_t flags);

// The size of such an image, as it is stored, or nothing, with the code of GetTiffDimensions.
std::optional<PictureSize> SizeOfTiffImage(TiffFileHandle file, int32_t image);

}  // namespace vellim
