#include "screen/line_ranges.h"

#include <algorithm>
#include <limits>

#include "screen/view_layout.h"

namespace vellim {
namespace {

// A place in 64 bits, where no sum of rectangles and line numbers overflows.
int32_t Place(int64_t place) {
    using Limits = std::numeric_limits<int32_t>;
    return static_cast<int32_t>(std::clamp<int64_t>(place, Limits::min(), Limits::max()));
}

bool Within(int64_t at, int64_t first, int64_t last) {
    return first <= at && at <= last;
}

}  // namespace

std::optional<LineCopy> CopyOfLine(uint32_t flags, const RECT& image, const RECT& source,
                                   const RECT& dest, const RECT& paint, uint32_t line) {
    // After one or two turns line n ends, rather than begins, n from the picture's edge.
    const int64_t n = line;
    const int64_t right = image.right;
    const int64_t bottom = image.bottom;
    const auto row = [&](int64_t y) {
        return LineCopy{dest.left, Place(y - source.top), dest.right, 1, source.left, 0};
    };
    const auto column = [&](int64_t x) {
        return LineCopy{Place(x), paint.top, 1, Place(int64_t{source.bottom} - source.top),
                        0,        source.top};
    };
    switch (flags & VIEW_TURN_MASK) {
        case 0:
            if (!Within(n, source.top, source.bottom)) return {};
            return row(n);
        case 1:
            if (!Within(right - n, source.left, source.right)) return {};
            return column(int64_t{dest.right} - source.right - n + right - 1);
        case 2:
            if (!Within(bottom - n, source.top, source.bottom)) return {};
            return row(bottom - 1 - n);
        default:
            if (!Within(n, source.left, source.right)) return {};
            return column(n - source.left);
    }
}

// The line beyond those on show falls behind the last one unless the lines run backwards.
RECT CoverOfLines(uint32_t flags, const RECT& image, const RECT& source) {
    const uint32_t turns = flags & VIEW_TURN_MASK;
    const auto edge = [](int64_t from, int64_t to, int64_t end, bool isPassed) {
        return Place(std::min(to + static_cast<int64_t>(isPassed), end) - from);
    };
    return {0, 0, edge(source.left, source.right, image.right, turns == 3),
            edge(source.top, source.bottom, image.bottom, turns == 0)};
}

uint32_t LineOperation(uint32_t bitsPerPixel, std::optional<uint32_t> photometric, uint32_t flags) {
    constexpr uint32_t kWhiteIsZero = 0;
    const bool whiteIsZero = bitsPerPixel == 1 && photometric == kWhiteIsZero;
    const bool inverted = (flags & VIEW_INVERTED) != 0;
    return whiteIsZero != inverted ? NOTSRCCOPY : SRCCOPY;
}

}  // namespace vellim
