// Where the picture data that is being written begins, so that its tail can tell.
#pragma once

#include <cstdint>

#include "vellim/base.h"

namespace vellim {

// Keeps where the calling thread began a picture in `file`. A file has one picture at a time; of
// more than 16 files the one that was begun first is forgotten.
void RememberPictureStart(StreamHandle file, int32_t position);

// Gives the position and forgets it; -1 for a file that none is known of.
int32_t TakePictureStart(StreamHandle file);

}  // namespace vellim
