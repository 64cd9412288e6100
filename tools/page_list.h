// Lists of pages as people write them: "1-3,7", "5-" (to the end), "-2" (from the start).
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace vellim::tool {

struct PageRange {
    uint32_t first = 1;
    uint32_t last = UINT32_MAX;  // UINT32_MAX: the document's last page
};

// The ranges of `text`, or nothing if it isn't such a list (page 0 and a range that runs backwards
// included).
std::optional<std::vector<PageRange>> ParsePageList(std::string_view text);

// The pages, counted from 1, that `ranges` name in a document of `count` pages: ascending, each
// once. If a range begins or ends behind the last page, `missing` gets the page that isn't there.
std::vector<uint32_t> PagesOf(const std::vector<PageRange>& ranges, uint32_t count,
                              uint32_t& missing);

}  // namespace vellim::tool
