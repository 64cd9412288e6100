// An image content of IOCA as a page.
#pragma once

#include "ioca_segment.h"

namespace vellim::tool {

// The page of content `number` of those that `walk` comes to. Nothing, with the reason in `why`, if
// it can't be had. Where the content is cut, what is there of it is the page.
std::optional<RasterPage> OpenContent(SegmentWalk& walk, uint32_t number, std::string& why);

}  // namespace vellim::tool
