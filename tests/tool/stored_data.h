// What a TIFF file holds, as a user's programs see it.
#pragma once

#include <string>
#include <vector>

#include "run_tool.h"

namespace vellim::test {

// The strips of each image, as stored.
std::vector<std::vector<Bytes>> StoredStrips(const std::string& path);

// What libtiff's tiffinfo says of a file, but for its warnings that a private tag is unknown.
ToolRun TiffInfo(const std::string& path);

}  // namespace vellim::test
