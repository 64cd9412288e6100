// IOCA files: image segments in a row, each with one image content or more.
#include "ioca_page.h"
#include "segment_start.h"

namespace vellim::tool {

std::vector<uint64_t> FindInARow(int descriptor, uint64_t offset, Beside& beside) {
    std::vector<uint64_t> places;
    SegmentWalk walk;
    walk.bytes = BytesInARow(descriptor, offset);
    AddPlaces(walk, places);
    TellStray(beside.stray, walk.stray.total, "segment");
    return places;
}

bool IsIoca(std::string_view head) {
    return !IsModca(head) && FindBareSegment(head).has_value();
}

std::vector<uint64_t> FindIocaImages(int descriptor, Beside& beside) {
    const auto start = FindBareSegment(ReadHead(descriptor));
    return start ? FindInARow(descriptor, *start, beside) : std::vector<uint64_t>();
}

std::optional<RasterPage> OpenIoca(int descriptor, uint64_t offset, std::string& why) {
    SegmentWalk walk;
    walk.bytes = BytesInARow(descriptor, offset);
    walk.inSegment = true;
    return OpenContent(walk, why);
}

}  // namespace vellim::tool
