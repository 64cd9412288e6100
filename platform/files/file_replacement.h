// Putting a whole new file in an old one's place in a single step, so that whoever opens the path,
// at any moment and after any failure, finds the old file or the new one.
#pragma once

#include <cstdint>

namespace vellim {

// Makes or empties the file `temporary`, which is to take the place of the ordinary file
// `original`, and locks it: as long as it is open nobody else gets it by this call. Gives a handle
// open for writing; -1 when another has it locked, when it is a link, no ordinary file or the
// original itself under another name, or when the system refuses.
int32_t CreateReplacement(const char* original, const char* temporary);

// Brings what was written to the disk, gives the new file the old one's mode and, as far as the
// system lets it, its owner and group, and then the old one's name. Open files stay open; the
// handle is still to be closed. False: both files stand as they are under their names.
bool CommitReplacement(int32_t file, const char* temporary, const char* original);

// Whether two paths lead to one and the same file that exists.
bool SameFile(const char* a, const char* b);

}  // namespace vellim
