// What becomes of a picture whose data ended too soon.
#pragma once

namespace vellim {

// Whether a decoding run that ended with the failure code now set left lines worth keeping: the
// data ended before the picture did, and isn't otherwise wrong. If so its message is shown in a box
// titled `caption`. The code stays set.
bool IsWorthKeeping(const char* caption);

}  // namespace vellim
