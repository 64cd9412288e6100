// Single values out of an image's tags, for the drivers.
#pragma once

#include <array>
#include <cstdint>

#include "vellim/tags.h"

namespace vellim {

inline bool HasTag(TiffFileHandle file, int32_t image, uint32_t tag) {
    return GetTiffImageInfo(file, image, tag, nullptr) != 0;
}

// The tag's first element, or `otherwise` when the tag is missing or isn't a number. A file may
// give any tag as a RATIONAL, whose value takes two words.
inline uint32_t TagValue(TiffFileHandle file, int32_t image, uint32_t tag, uint32_t otherwise) {
    std::array<uint32_t, 2> words{otherwise, 0};
    if (GetTiffImageInfo(file, image, tag, words.data()) == 0) return otherwise;
    return words[0];
}

}  // namespace vellim
