// The library's dialogs by their names.
#pragma once

#include "resources/dialog_template.h"

namespace vellim {

// Compared without regard to case. Null for another name, or none.
const DialogTemplate* FindDialogTemplate(const char* name);

}  // namespace vellim
