// The resolution of an image, from XResolution, YResolution and ResolutionUnit.
#pragma once

#include <cstdint>

#include "vellim/base.h"

namespace vellim {

struct Resolution {
    double Across;  // in dots for each inch or centimetre
    double Down;
    uint32_t Unit;  // of TiffResolutionUnit, or any other number that the file says
};

enum TiffResolutionUnit { kUnitNone = 1, kUnitInch = 2, kUnitCentimetre = 3 };

// Each direction that the tags leave out is the display's.
Resolution ReadResolution(TiffFileHandle file, int32_t image);

// Dots a metre, rounded, at most what 31 bits hold; dots an inch, rounded, of which the low 16 bits
// are kept. A unit that isn't known gives 0; no absolute unit counts as inches.
int32_t PelsPerMetre(double dots, uint32_t unit);
uint16_t DotsPerInch(double dots, uint32_t unit);

}  // namespace vellim
