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

// Whether a range may run backwards, as "9-7" does.
enum class Direction { Forwards, Both };

// The ranges of `text`, or nothing if it isn't such a list (page 0 included).
std::optional<std::vector<PageRange>> ParsePageList(std::string_view text,
                                                    Direction direction = Direction::Forwards);

// The pages, counted from 1, that `ranges` name in a document of `count` pages: ascending, each
// once. If a range begins or ends behind the last page, `missing` gets the page that isn't there.
std::vector<uint32_t> PagesOf(const std::vector<PageRange>& ranges, uint32_t count,
                              uint32_t& missing);

// The same in the order in which they are written, a page as often as it is named. Stops once there
// are more than `most`.
std::vector<uint32_t> PagesAsWritten(const std::vector<PageRange>& ranges, uint32_t count,
                                     size_t most, uint32_t& missing);

}  // namespace vellim::tool
