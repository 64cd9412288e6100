// The pixels of a device bitmap on their way into a new image.
#pragma once

#include "bridge/appended_image.h"

namespace vellim {

// Encodes the bitmap as the image that `description` (GetTiffRGBQuad of its tags) tells of; colours
// are the nearest that this has, by the context's palette. False, with the code set, when the run
// fails. The description is spent afterwards.
bool EncodeBitmap(const AppendedImage& image, BitmapHandle bitmap, DeviceContextHandle context,
                  DibHandle description);

}  // namespace vellim
