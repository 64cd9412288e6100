// The clipboard and the windows that it is open for.
#pragma once

#include "vellim/windows.h"

namespace vellim {

// Closes the clipboard, of whatever thread, where it is open for this window.
void CloseClipboardOf(WindowHandle window);

}  // namespace vellim
