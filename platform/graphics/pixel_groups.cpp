#include "platform/graphics/pixel_groups.h"

#include <algorithm>
#include <utility>

namespace vellim {
namespace {

struct Clip {
    int64_t size;

    [[nodiscard]] int32_t operator()(int64_t place) const {
        return static_cast<int32_t>(std::clamp<int64_t>(place, 0, size));
    }
};

// What a copy within its source goes without.
struct NoClip {
    [[nodiscard]] int32_t operator()(int64_t place) const { return static_cast<int32_t>(place); }
};

// The quotient of (index x fromCount) by toCount is carried on from pixel to pixel, for a division
// costs more than all else here. Both counts have 32 bits: so the product fits 64.
template <typename ClipPlace>
void FindInSteps(const Axis& axis, uint64_t index, std::span<PixelGroup> groups, ClipPlace clip) {
    const auto fromCount = static_cast<uint64_t>(axis.fromCount);
    const auto toCount = static_cast<uint64_t>(axis.toCount);
    const uint64_t product = index * fromCount;
    int64_t first = axis.from + static_cast<int64_t>(product / toCount);
    uint64_t rest = product % toCount;
    const auto step = static_cast<int64_t>(fromCount / toCount);
    const uint64_t restOfStep = fromCount % toCount;
    for (PixelGroup& group : groups) {
        rest += restOfStep;
        const bool carries = rest >= toCount;
        rest -= carries ? toCount : 0;
        const int64_t next = first + step + static_cast<int64_t>(carries);
        group = {clip(first), clip(std::max(next, first + 1))};
        first = next;
    }
}

}  // namespace

Axis AxisOf(int64_t to, int64_t toEnd, int64_t from, int64_t fromEnd) {
    Axis axis;
    axis.isMirrored = (to > toEnd) != (from > fromEnd);
    if (to > toEnd) std::swap(to, toEnd);
    if (from > fromEnd) std::swap(from, fromEnd);
    axis.to = to;
    axis.toCount = toEnd - to;
    axis.from = from;
    axis.fromCount = fromEnd - from;
    return axis;
}

void FindGroups(const Axis& axis, int32_t place, std::span<PixelGroup> groups) {
    const int64_t offset = place - axis.to;
    const auto count = static_cast<int64_t>(groups.size());
    const auto index =
        static_cast<uint64_t>(axis.isMirrored ? axis.toCount - offset - count : offset);
    if (axis.from >= 0 && axis.from + axis.fromCount <= axis.sourceSize)
        FindInSteps(axis, index, groups, NoClip{});
    else
        FindInSteps(axis, index, groups, Clip{axis.sourceSize});
    if (axis.isMirrored) std::reverse(groups.begin(), groups.end());
    if (!axis.takesLast) return;
    for (PixelGroup& group : groups)
        if (!group.IsEmpty()) group.first = group.end - 1;
}

PixelGroup GroupAt(const Axis& axis, int32_t place) {
    PixelGroup group;
    FindGroups(axis, place, {&group, 1});
    return group;
}

}  // namespace vellim
