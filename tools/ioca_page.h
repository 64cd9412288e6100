// An image content of IOCA as a page.
#pragma once

#include "ioca_segment.h"

namespace vellim::tool {

// The page of the next content that `walk` comes to. Nothing, with the reason in `why`, if it can't
// be had. Where the content is cut, what is there of it is the page.
std::optional<RasterPage> OpenContent(SegmentWalk& walk, std::string& why);

// The contents of the segments in a row from `offset` on, as places for OpenIoca.
std::vector<uint64_t> FindInARow(int descriptor, uint64_t offset, Beside& beside);

}  // namespace vellim::tool
