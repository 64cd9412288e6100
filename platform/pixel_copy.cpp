#include "platform/pixel_copy.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "platform/clip.h"
#include "platform/mapping.h"

namespace vellim {
namespace {

struct Axes {
    Axis x;
    Axis y;
};

Axes AxesOf(const DeviceContext& to, const RECT& edges, const CopySource& source) {
    const SourceEdges& from = source.edges;
    Axes axes = {AxisOf(edges.left, edges.right, from.left, from.right),
                 AxisOf(edges.top, edges.bottom, from.top, from.bottom)};
    axes.x.sourceSize = source.width;
    axes.y.sourceSize = source.height;
    axes.x.takesLast = axes.y.takesLast = to.stretchMode == COLORONCOLOR;
    return axes;
}

// The source pixels that there are.
RECT PixelsThatAre(const Axes& axes) {
    const auto clip = [](const Axis& axis, int64_t place) {
        return static_cast<int32_t>(std::clamp<int64_t>(place, 0, axis.sourceSize));
    };
    const auto& [x, y] = axes;
    return {clip(x, x.from), clip(y, y.from), clip(x, x.from + x.fromCount),
            clip(y, y.from + y.fromCount)};
}

// Rows that the copy itself changes are kept as they were.
bool KeepRowsDrawnOver(const DeviceContext& to, const RECT& area, const RECT& pixels,
                       SourceRows& rows) {
    RECT both{};
    if (rows.surface != to.surface || IntersectRect(&both, &area, &pixels) == 0) return true;
    const Surface& from = *rows.surface;
    const int32_t count = pixels.bottom - pixels.top;
    const std::shared_ptr<Surface> kept = MakeSurface(from.width, count, from.bits);
    if (kept == nullptr) return false;
    std::memcpy(kept->Row(0), from.Row(pixels.top),
                static_cast<size_t>(count) * static_cast<size_t>(from.stride));
    rows = {kept, pixels.top};
    return true;
}

void DrawPart(const Surface& surface, const RECT& part, const Axis& axis, CopiedRows& rows,
              PixelOperation operation) {
    const size_t toBit = static_cast<size_t>(part.left) * surface.bits;
    const size_t fromBit = static_cast<size_t>(part.left - rows.Left()) * surface.bits;
    const size_t count = static_cast<size_t>(part.right - part.left) * surface.bits;
    for (int32_t y = part.top; y < part.bottom; y++) {
        const PixelGroup group = GroupAt(axis, y);
        if (group.IsEmpty()) continue;
        const ConstBitPlace row = rows.Row(group);
        CombineBits({surface.Row(y), toBit}, {row.bytes, row.bit + fromBit}, count, operation);
    }
}

}  // namespace

bool CopyPixels(DeviceContext& to, const RECT& edges, CopySource source, PixelOperation operation) {
    const RECT bounds = BoundsOf(to);
    const Axes axes = AxesOf(to, edges, source);
    RECT area = InOrder(edges);
    if (axes.x.IsEmpty() || axes.y.IsEmpty()) return true;
    if (IntersectRect(&area, &area, &bounds) == 0) return true;
    const RECT pixels = PixelsThatAre(axes);
    if (IsRectEmpty(&pixels) != 0) return true;
    if (!KeepRowsDrawnOver(to, area, pixels, source.rows)) return false;

    const ColorChange change(to, *source.rows.surface, source.background);
    const Joining joining = to.stretchMode == BLACKONWHITE ? Joining::And : Joining::Or;
    CopiedRows rows(source.rows, axes.x, joining, change);
    if (!rows.Prepare(area.left, area.right, to.surface->bits)) return false;
    area.left = rows.Left();
    area.right = rows.Right();
    VisibleParts parts(to, area);
    for (RECT part{}; parts.Next(part);)
        DrawPart(*to.surface, part, axes.y, rows, operation);
    return true;
}

void FillWithColor(DeviceContext& to, const RECT& edges, ColorRef color) {
    const Surface& surface = *to.surface;
    const uint32_t pixel = NearestPixel(surface.bits, color);
    VisibleParts parts(to, InOrder(edges));
    for (RECT part{}; parts.Next(part);) {
        const auto count = static_cast<size_t>(part.right - part.left);
        for (int32_t y = part.top; y < part.bottom; y++)
            FillPixels(surface.Row(y), surface.bits, static_cast<size_t>(part.left), count, pixel);
    }
}

}  // namespace vellim
