// The full path of a file, as OpenFile tells it.
#pragma once

#include "vellim/platform.h"

namespace vellim {

// Stores the absolute path of `path`. Where the file exists symbolic links are followed, the last
// one too, so that who replaces the file under this name replaces the file and not a link to it.
// Where it doesn't, the full path of its folder with the name behind it; failing that, `path` as it
// is. Empty only for a path that the buffer can't hold.
void FullPath(const char* path, char (&full)[OFSTRUCT_PATH_BYTES]);

}  // namespace vellim
