// The end of a file's chain of directories, where the next one is hooked in.
#pragma once

#include "container/tiff_file.h"

namespace vellim {

// Moves TailLinkOffset on to where the chain ends now: reading may have failed for a moment when
// the file was opened, or somebody has added images since, and a link written where it was would
// take those out of the chain. It stays where the link is 0 or leads to nothing that can be read,
// as that of a broken chain. False, with code 6, when the link can't be read, or for more images
// than a file may have.
bool FindChainEnd(TiffFile& file, StreamHandle stream);

}  // namespace vellim
