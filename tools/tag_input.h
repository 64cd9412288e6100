// Tag values as people type them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tag_values.h"

namespace vellim::tool {

// The most bytes that a value may take: a longer one couldn't be read back.
constexpr size_t kMostValueBytes = 32767;

// `words` as the elements of `type`, in host order; for ASCII each word is a string, and all are
// stored one behind the other, each with its terminator. Integers may be hexadecimal (0x1F),
// rationals are 300, 300/1 or 2.54. Nothing, with the reason in `why`, if a word doesn't fit.
std::optional<TagValue> ParseTagValue(uint32_t tag, uint32_t type,
                                      const std::vector<std::string>& words, std::string& why);

}  // namespace vellim::tool
