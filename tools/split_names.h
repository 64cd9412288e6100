// Names of numbered files, by a pattern as in "page-%03d.tif".
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace vellim::tool {

struct NamePattern {
    std::string before;
    size_t digits = 0;  // at least; filled up with zeros
    std::string behind;
};

// `text` taken apart: exactly one %d or %0Nd (N from 1 to 9), and %% for a percent sign. Nothing
// for any other text.
std::optional<NamePattern> ParseNamePattern(const std::string& text);

std::string NumberedName(const NamePattern& pattern, uint32_t number);

}  // namespace vellim::tool
