// Message boxes in the midst of a call.
#pragma once

#include <cstdint>

#include "vellim/platform.h"

namespace vellim {

// Shows a message without an owner. The failure code is what the caller reads next, so it stays
// as it is whatever the desktop's own calls do meanwhile.
void ShowMessage(const char* text, const char* caption, uint32_t style = MB_ICONEXCLAMATION);

// That of a save which came to nothing.
void ShowSaveFailed();

}  // namespace vellim
