// The dialogs that stand in front of loading and saving. No dialog can be run in this process,
// which counts as one that failed to: each gives false with code 1.
#pragma once

#include "vellim/base.h"

namespace vellim {

// Tells of the image and asks whether to load it: TIFFINFO. False, with the code set, for a no.
bool ShowTiffInfo(TiffFileHandle file, int32_t image);

// Asks how to save a picture of this size and depth, and leaves the answers in ThreadSaveChoices:
// SAVETIFF. False, with the code set, for a no.
bool AskHowToSave(const char* fileName, const BITMAP& picture);

}  // namespace vellim
