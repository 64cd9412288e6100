// What a user tells of a file that can't tell it itself: a bare stream of fax code.
#pragma once

#include <cstdint>
#include <optional>

#include "fax_coding.h"

namespace vellim::tool {

struct SourceHints {
    uint32_t width = 0;   // pixels; 0: not told
    uint32_t height = 0;  // lines; 0: as many as come
    std::optional<FaxCoding> coding;
    uint32_t fillOrder = 0;  // 1 or 2; 0: not told

    // Whether anything is told, which makes a file of unknown content a bare stream.
    [[nodiscard]] bool Any() const {
        return width != 0 || height != 0 || coding.has_value() || fillOrder != 0;
    }
};

}  // namespace vellim::tool
