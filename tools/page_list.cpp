// Page lists. A page that isn't there is told rather than passed over: who asks for page 7 of a
// document of 3 pages has most likely mistaken the document.
#include "page_list.h"

#include <charconv>

namespace vellim::tool {
namespace {

// A page number that takes the whole of `text`.
std::optional<uint32_t> ParsePage(std::string_view text) {
    uint32_t page = 0;
    const char* end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, page);
    if (error != std::errc() || rest != end || page == 0 || page == UINT32_MAX) return {};
    return page;
}

std::optional<PageRange> ParseRange(std::string_view text, Direction direction) {
    const size_t dash = text.find('-');
    if (dash == std::string_view::npos) {
        const auto page = ParsePage(text);
        if (!page) return {};
        return PageRange{*page, *page};
    }
    if (text.size() == 1) return {};
    PageRange range;
    if (dash > 0) {
        const auto first = ParsePage(text.substr(0, dash));
        if (!first) return {};
        range.first = *first;
    }
    if (dash + 1 < text.size()) {
        const auto last = ParsePage(text.substr(dash + 1));
        if (!last || (*last < range.first && direction == Direction::Forwards)) return {};
        range.last = *last;
    }
    return range;
}

}  // namespace

std::optional<std::vector<PageRange>> ParsePageList(std::string_view text, Direction direction) {
    std::vector<PageRange> ranges;
    for (;;) {
        const size_t comma = text.find(',');
        const auto range = ParseRange(text.substr(0, comma), direction);
        if (!range) return {};
        ranges.push_back(*range);
        if (comma == std::string_view::npos) return ranges;
        text.remove_prefix(comma + 1);
    }
}

std::vector<uint32_t> PagesOf(const std::vector<PageRange>& ranges, uint32_t count,
                              uint32_t& missing) {
    std::vector<bool> wanted(count, false);
    missing = 0;
    for (const PageRange& range : ranges) {
        const uint32_t last = range.last == UINT32_MAX ? count : range.last;
        if (range.first > count) missing = range.first;
        if (last > count) missing = last;
        for (uint32_t page = range.first; page <= last && page <= count; ++page) {
            wanted[page - 1] = true;
        }
    }
    std::vector<uint32_t> pages;
    for (uint32_t page = 1; page <= count; ++page) {
        if (wanted[page - 1]) pages.push_back(page);
    }
    return pages;
}

std::vector<uint32_t> PagesAsWritten(const std::vector<PageRange>& ranges, uint32_t count,
                                     size_t most, uint32_t& missing) {
    std::vector<uint32_t> pages;
    missing = 0;
    for (const PageRange& range : ranges) {
        const uint32_t last = range.last == UINT32_MAX ? count : range.last;
        if (range.first > count) missing = range.first;
        if (last > count) missing = last;
        if (missing != 0) return pages;
        const bool backwards = last < range.first;
        for (uint32_t page = range.first; pages.size() <= most; backwards ? --page : ++page) {
            pages.push_back(page);
            if (page == last) break;
        }
    }
    return pages;
}

}  // namespace vellim::tool
