#include "platform/graphics/mapping.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace vellim {
namespace {

int32_t Saturated(int64_t value) {
    using Limits = std::numeric_limits<int32_t>;
    return static_cast<int32_t>(std::clamp<int64_t>(value, Limits::min(), Limits::max()));
}

int64_t FloorOfQuotient(int64_t dividend, int64_t divisor) {
    const int64_t quotient = dividend / divisor;
    return dividend % divisor < 0 ? quotient - 1 : quotient;
}

// The difference has 33 bits and an extent 32, sign included: their product and half a divisor more
// stay within 64.
int32_t Scaled(int32_t place, int32_t origin, int32_t extent, int32_t newOrigin,
               int32_t newExtent) {
    if (extent == newExtent) return Saturated(int64_t{place} - origin + newOrigin);
    int64_t dividend = (int64_t{place} - origin) * newExtent;
    int64_t divisor = extent;
    if (divisor < 0) {
        dividend = -dividend;
        divisor = -divisor;
    }
    constexpr int64_t farOff = int64_t{1} << 33;  // with any origin added still beyond 32 bits
    const int64_t quotient = FloorOfQuotient(dividend + divisor / 2, divisor);
    return Saturated(std::clamp(quotient, -farOff, farOff) + newOrigin);
}

bool HasExtents(const Mapping& mapping) {
    return mapping.mode == MM_ANISOTROPIC;
}

using PointField = POINT Mapping::*;

int32_t SetPoint(DeviceContextHandle context, PointField field, POINT value, POINT* before) {
    DeviceContext* found = FindContext(context);
    if (found == nullptr) return 0;
    const POINT old = std::exchange(found->mapping.*field, value);
    if (before != nullptr) *before = old;
    return 1;
}

int32_t SetExtent(DeviceContextHandle context, PointField field, POINT value, POINT* before) {
    const DeviceContext* found = FindContext(context);
    if (found == nullptr || !HasExtents(found->mapping)) return 0;
    if (value.x == 0 || value.y == 0) return 0;
    return SetPoint(context, field, value, before);
}

int32_t MapPoints(DeviceContextHandle context, POINT* points, int32_t count,
                  POINT (*map)(const Mapping&, POINT)) {
    const DeviceContext* found = FindContext(context);
    if (found == nullptr || points == nullptr || count < 0) return 0;
    std::transform(points, points + count, points,
                   [&](POINT point) { return map(found->mapping, point); });
    return 1;
}

}  // namespace

POINT PixelOf(const Mapping& mapping, POINT units) {
    const auto& [mode, windowOrigin, windowExtent, viewportOrigin, viewportExtent] = mapping;
    return {Scaled(units.x, windowOrigin.x, windowExtent.x, viewportOrigin.x, viewportExtent.x),
            Scaled(units.y, windowOrigin.y, windowExtent.y, viewportOrigin.y, viewportExtent.y)};
}

POINT UnitsOf(const Mapping& mapping, POINT pixel) {
    const auto& [mode, windowOrigin, windowExtent, viewportOrigin, viewportExtent] = mapping;
    return {Scaled(pixel.x, viewportOrigin.x, viewportExtent.x, windowOrigin.x, windowExtent.x),
            Scaled(pixel.y, viewportOrigin.y, viewportExtent.y, windowOrigin.y, windowExtent.y)};
}

RECT EdgesInPixels(const Mapping& mapping, POINT corner, int32_t width, int32_t height) {
    const POINT first = PixelOf(mapping, corner);
    const POINT end = PixelOf(
        mapping, {Saturated(int64_t{corner.x} + width), Saturated(int64_t{corner.y} + height)});
    return {first.x, first.y, end.x, end.y};
}

RECT InOrder(const RECT& edges) {
    const auto [left, right] = std::minmax(edges.left, edges.right);
    const auto [top, bottom] = std::minmax(edges.top, edges.bottom);
    return {left, top, right, bottom};
}

}  // namespace vellim

int32_t SetMapMode(DeviceContextHandle context, int32_t mode) {
    vellim::DeviceContext* found = vellim::FindContext(context);
    if (found == nullptr || (mode != MM_TEXT && mode != MM_ANISOTROPIC)) return 0;
    vellim::Mapping& mapping = found->mapping;
    if (mode == MM_TEXT) mapping.windowExtent = mapping.viewportExtent = {1, 1};
    return std::exchange(mapping.mode, mode);
}

int32_t SetWindowOrgEx(DeviceContextHandle context, int32_t x, int32_t y, POINT* before) {
    return vellim::SetPoint(context, &vellim::Mapping::windowOrigin, {x, y}, before);
}

int32_t SetWindowExtEx(DeviceContextHandle context, int32_t x, int32_t y, POINT* before) {
    return vellim::SetExtent(context, &vellim::Mapping::windowExtent, {x, y}, before);
}

int32_t SetViewportOrgEx(DeviceContextHandle context, int32_t x, int32_t y, POINT* before) {
    return vellim::SetPoint(context, &vellim::Mapping::viewportOrigin, {x, y}, before);
}

int32_t SetViewportExtEx(DeviceContextHandle context, int32_t x, int32_t y, POINT* before) {
    return vellim::SetExtent(context, &vellim::Mapping::viewportExtent, {x, y}, before);
}

int32_t DPtoLP(DeviceContextHandle context, POINT* points, int32_t count) {
    return vellim::MapPoints(context, points, count, vellim::UnitsOf);
}

int32_t LPtoDP(DeviceContextHandle context, POINT* points, int32_t count) {
    return vellim::MapPoints(context, points, count, vellim::PixelOf);
}
