// Rectangles that a host computes with.
#include <algorithm>
#include <cstdint>
#include <limits>

#include "vellim/graphics.h"

namespace vellim {
namespace {

// A place moved beyond 32 bits stays at their edge.
int32_t Moved(int32_t place, int32_t by) {
    using Limits = std::numeric_limits<int32_t>;
    return static_cast<int32_t>(
        std::clamp<int64_t>(int64_t{place} + by, Limits::min(), Limits::max()));
}

}  // namespace
}  // namespace vellim

int32_t SetRect(RECT* rect, int32_t left, int32_t top, int32_t right, int32_t bottom) {
    if (rect == nullptr) return 0;
    *rect = {left, top, right, bottom};
    return 1;
}

int32_t CopyRect(RECT* to, const RECT* from) {
    if (to == nullptr || from == nullptr) return 0;
    *to = *from;
    return 1;
}

int32_t OffsetRect(RECT* rect, int32_t x, int32_t y) {
    using vellim::Moved;
    if (rect == nullptr) return 0;
    *rect = {Moved(rect->left, x), Moved(rect->top, y), Moved(rect->right, x),
             Moved(rect->bottom, y)};
    return 1;
}

int32_t IntersectRect(RECT* both, const RECT* a, const RECT* b) {
    if (both == nullptr) return 0;
    RECT common{};
    if (a != nullptr && b != nullptr)
        common = {std::max(a->left, b->left), std::max(a->top, b->top),
                  std::min(a->right, b->right), std::min(a->bottom, b->bottom)};
    const bool isEmpty = IsRectEmpty(&common) != 0;
    *both = isEmpty ? RECT{} : common;
    return isEmpty ? 0 : 1;
}

int32_t IsRectEmpty(const RECT* rect) {
    return rect == nullptr || rect->left >= rect->right || rect->top >= rect->bottom ? 1 : 0;
}
