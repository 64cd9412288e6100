// What a TIFF page keeps besides its pixels when it is converted, and what it doesn't.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tag_values.h"

namespace vellim::tool {

// The tags of an image in memory that go with its page, of the type and count that is laid down for
// them: a text without its closing zero gets one, other deviants are left out.
std::vector<TagValue> ReadCarriedTags(TiffFileHandle file, int32_t image);

// What such an image has that no output gets, in words, each kind once.
std::vector<std::string> TagsGivenUp(TiffFileHandle file, int32_t image);

}  // namespace vellim::tool
