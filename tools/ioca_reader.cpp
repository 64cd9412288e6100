// IOCA files: image segments in a row, each with one image content or more.
#include "content_place.h"
#include "ioca_page.h"
#include "segment_start.h"

namespace vellim::tool {

void TellBeside(std::vector<std::string>& beside, std::string_view words, uint64_t count,
                std::string_view unit) {
    if (count == 0) return;
    std::string text(words);
    text.append(" (").append(std::to_string(count)).append(" ").append(unit);
    beside.push_back(text.append(count == 1 ? ")" : "s)"));
}

void TellBeyond(std::vector<std::string>& beside, const ContentPlaces& places) {
    TellBeside(beside, "too many images in one segment or object", places.beyond, "image");
}

std::vector<uint64_t> ContentsInARow(int descriptor, uint64_t offset,
                                     std::vector<std::string>& beside) {
    ContentPlaces places;
    SegmentWalk walk;
    walk.bytes = BytesInARow(descriptor, offset);
    while (NextContent(walk))
        AddContent(places, walk.segmentAt);
    TellBeyond(beside, places);
    return std::move(places.packed);
}

bool IsIoca(std::string_view head) {
    return !IsModca(head) && FindBareSegment(head).has_value();
}

std::vector<uint64_t> FindIocaImages(int descriptor, std::vector<std::string>& beside) {
    const std::string head = ReadHead(descriptor);
    const auto start = FindBareSegment(head);
    return start ? ContentsInARow(descriptor, *start, beside) : std::vector<uint64_t>();
}

std::optional<RasterPage> OpenIoca(int descriptor, uint64_t offset, std::string& why) {
    const ContentPlace place = Unpacked(offset);
    SegmentWalk walk;
    walk.bytes = BytesInARow(descriptor, place.at);
    return OpenContent(walk, place.number, why);
}

}  // namespace vellim::tool
