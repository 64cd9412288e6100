// From the header of a TIFF file along its chain of directories.
#pragma once

#include "container/tiff_file.h"

namespace vellim {

// Reads the header (TIFF 6.0, section 2) and walks the chain, filling `file`'s byte order, images
// and tail link. False, with the failure code, when the file can't be opened at all. A chain that
// breaks behind the first image is true, with code 6 and the images before the break.
bool ReadTiffHeader(TiffFile& file);

}  // namespace vellim
