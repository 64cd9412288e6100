// The end of a file's chain of directories, where the next one is hooked in.
#pragma once

#include "container/tiff_file.h"

namespace vellim {

// Whether writing a link at the file's TailLinkOffset takes no image out of the chain. The link
// there is 0, or leads to nothing that can be read, as that of a broken chain. If a directory
// stands behind it after all, then either reading failed for a moment when the file was opened, or
// somebody has added an image since; or the link itself can't be read: false, with code 6.
bool ChainEndIsFree(const TiffFile& file, StreamHandle stream);

}  // namespace vellim
