// How one axis of a copy is stretched.
//
// Source and destination are cut into the same number of equal steps: a destination pixel takes the
// source pixels from the step that it begins in to the one that the next begins in, and at least
// one. So source pixels fall together where the copy shrinks, and are repeated where it grows.
#pragma once

#include <cstdint>
#include <span>

namespace vellim {

// Source pixels; none where end isn't beyond first.
struct PixelGroup {
    int32_t first = 0;
    int32_t end = 0;

    bool operator==(const PixelGroup&) const = default;
    [[nodiscard]] bool IsEmpty() const { return first >= end; }
};

struct Axis {
    int64_t to = 0;  // the destination's first pixel
    int64_t toCount = 0;
    int64_t from = 0;
    int64_t fromCount = 0;  // below 33 bits, as the other
    bool isMirrored = false;
    bool takesLast = false;  // of each group, its last pixel alone
    int32_t sourceSize = 0;  // source pixels from 0 on; there are no others

    bool operator==(const Axis&) const = default;
    [[nodiscard]] bool IsEmpty() const { return toCount == 0 || fromCount == 0; }
    [[nodiscard]] bool IsOneToOne() const { return toCount == fromCount && !isMirrored; }
};

// Edges may be in either order: the copy is mirrored where they differ in that.
Axis AxisOf(int64_t to, int64_t toEnd, int64_t from, int64_t fromEnd);

// The groups of the destination pixels from `place` on, which lie within the axis.
void FindGroups(const Axis& axis, int32_t place, std::span<PixelGroup> groups);
PixelGroup GroupAt(const Axis& axis, int32_t place);

}  // namespace vellim
