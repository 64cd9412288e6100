// Fonts as they are asked for.
#pragma once

#include "vellim/text.h"

namespace vellim {

// The face of the library's own font.
inline constexpr char kBuiltInFace[] = "VELLIM";

// Height of a line where a font doesn't tell, in units.
inline constexpr int32_t kDefaultLineHeight = 16;

// What contexts begin with, one of the system's own.
FontHandle DefaultFont();

// The font that a null one stands for.
extern const LOGFONT kDefaultFont;

}  // namespace vellim
