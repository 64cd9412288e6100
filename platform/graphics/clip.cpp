#include "platform/graphics/clip.h"

#include <algorithm>
#include <limits>
#include <new>

#include "platform/graphics/mapping.h"

namespace vellim {
namespace {

// A host that goes on taking out bits and pieces for ever is stopped here.
constexpr size_t kMostExcluded = 1000;

bool Holds(const RECT& outer, const RECT& inner) {
    return outer.left <= inner.left && outer.top <= inner.top && outer.right >= inner.right &&
           outer.bottom >= inner.bottom;
}

// The list stays sorted, and free of rectangles that lie in others: a host that takes out the same
// one at every paint doesn't make it grow.
bool Exclude(std::vector<RECT>& excluded, const RECT& rect) {
    const bool isKnown = std::any_of(excluded.begin(), excluded.end(),
                                     [&](const RECT& known) { return Holds(known, rect); });
    if (isKnown || IsRectEmpty(&rect) != 0) return true;
    std::erase_if(excluded, [&](const RECT& known) { return Holds(rect, known); });
    if (excluded.size() == kMostExcluded) return false;
    const auto isFurtherLeft = [](const RECT& a, const RECT& b) { return a.left < b.left; };
    try {
        excluded.insert(std::upper_bound(excluded.begin(), excluded.end(), rect, isFurtherLeft),
                        rect);
    } catch (const std::bad_alloc&) {
        return false;
    }
    return true;
}

// No part at all, one rectangle, or more: parts that fill the box around them are one.
int32_t KindOfRegion(const DeviceContext& context) {
    VisibleParts parts(context, BoundsOf(context));
    RECT box{};
    if (!parts.Next(box)) return NULLREGION;
    const auto areaOf = [](const RECT& rect) {
        return static_cast<uint64_t>(int64_t{rect.right} - rect.left) *
               static_cast<uint64_t>(int64_t{rect.bottom} - rect.top);
    };
    uint64_t area = areaOf(box);
    for (RECT part{}; parts.Next(part);) {
        area += areaOf(part);
        box = {std::min(box.left, part.left), std::min(box.top, part.top),
               std::max(box.right, part.right), std::max(box.bottom, part.bottom)};
    }
    return area == areaOf(box) ? SIMPLEREGION : COMPLEXREGION;
}

}  // namespace

RECT BoundsOf(const DeviceContext& context) {
    using Limits = std::numeric_limits<int32_t>;
    if (context.clientArea != nullptr) return *context.clientArea;
    if (context.surface == nullptr)
        return {Limits::min(), Limits::min(), Limits::max(), Limits::max()};
    return {0, 0, context.surface->width, context.surface->height};
}

VisibleParts::VisibleParts(const DeviceContext& context, const RECT& area)
    : excluded_(context.excluded) {
    const RECT bounds = BoundsOf(context);
    IntersectRect(&area_, &area, &bounds);
    BeginBand(area_.top);
}

// A band ends where a rectangle begins or ends.
void VisibleParts::BeginBand(int32_t top) {
    top_ = top;
    bottom_ = area_.bottom;
    x_ = area_.left;
    next_ = 0;
    for (const RECT& rect : excluded_) {
        if (rect.top > top) bottom_ = std::min(bottom_, rect.top);
        if (rect.bottom > top) bottom_ = std::min(bottom_, rect.bottom);
    }
}

bool VisibleParts::Next(RECT& part) {
    while (top_ < area_.bottom) {
        while (x_ < area_.right) {
            int32_t end = area_.right;
            int32_t after = area_.right;
            for (; next_ < excluded_.size() && end == area_.right; next_++) {
                const RECT& rect = excluded_[next_];
                if (rect.top > top_ || rect.bottom <= top_ || rect.right <= x_) continue;
                end = std::min(rect.left, area_.right);
                after = rect.right;
            }
            part = {x_, top_, end, bottom_};
            x_ = after;
            if (part.left < part.right) return true;
        }
        BeginBand(bottom_);
    }
    return false;
}

}  // namespace vellim

int32_t ExcludeClipRect(DeviceContextHandle context, int32_t left, int32_t top, int32_t right,
                        int32_t bottom) {
    using namespace vellim;
    DeviceContext* found = FindContext(context);
    if (found == nullptr) return CLIP_ERROR;
    const POINT first = PixelOf(found->mapping, {left, top});
    const POINT end = PixelOf(found->mapping, {right, bottom});
    const RECT rect = InOrder({first.x, first.y, end.x, end.y});
    return Exclude(found->excluded, rect) ? KindOfRegion(*found) : CLIP_ERROR;
}
