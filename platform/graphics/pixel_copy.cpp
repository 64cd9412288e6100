#include "platform/graphics/pixel_copy.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

#include "platform/graphics/clip.h"
#include "platform/graphics/mapping.h"

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

struct Copy {
    const SourceRows& source;
    CopiedRows& rows;
    Axis down;
    PixelOperation operation;
};

void DrawPart(const Surface& surface, const RECT& part, const Copy& copy) {
    const size_t toBit = static_cast<size_t>(part.left) * surface.bits;
    const size_t fromBit = static_cast<size_t>(part.left - copy.rows.Left()) * surface.bits;
    const size_t count = static_cast<size_t>(part.right - part.left) * surface.bits;
    for (int32_t y = part.top; y < part.bottom; y++) {
        const PixelGroup group = GroupAt(copy.down, y);
        if (group.IsEmpty()) continue;
        const ConstBitPlace row = copy.rows.Row(copy.source, group);
        CombineBits({surface.Row(y), toBit}, {row.bytes, row.bit + fromBit}, count, copy.operation);
    }
}

// The one pixel of a row of such a surface.
uint32_t FirstPixel(const uint8_t* row, uint32_t bits) {
    constexpr uint32_t byteBits = 8;
    if (bits <= byteBits) return uint32_t{*row} >> (byteBits - bits);
    return row[0] | uint32_t{row[1]} << byteBits | uint32_t{row[2]} << 2 * byteBits;
}

// Draws a source of a single column, whose rows come to one pixel each: a turned picture comes in
// these. False where pixels need more than a look at a table.
bool DrawColumn(const Surface& surface, const RECT& part, const Copy& copy, Joining joining) {
    const uint32_t fromBits = copy.source.surface->bits;
    const bool isInverted = copy.operation == PixelOperation::CopyInverted;
    if (copy.source.surface->width != 1 || !copy.rows.Change().NewPixel(0)) return false;
    if (copy.operation != PixelOperation::Copy && !isInverted) return false;
    const uint32_t inverted = isInverted ? (1U << surface.bits) - 1 : 0;
    const auto left = static_cast<size_t>(part.left);
    const auto count = static_cast<size_t>(part.right - part.left);
    std::array<PixelGroup, 256> groups{};
    for (int32_t y = part.top; y < part.bottom;) {
        const auto rows = std::min(groups.size(), static_cast<size_t>(part.bottom - y));
        FindGroups(copy.down, y, {groups.data(), rows});
        for (size_t i = 0; i < rows; i++, y++) {
            if (groups[i].IsEmpty()) continue;
            uint32_t pixel = FirstPixel(copy.source.Row(groups[i].first), fromBits);
            for (int32_t from = groups[i].first + 1; from < groups[i].end; from++) {
                const uint32_t other = FirstPixel(copy.source.Row(from), fromBits);
                pixel = joining == Joining::And ? pixel & other : pixel | other;
            }
            const uint32_t made = copy.rows.Change().NewPixel(pixel).value_or(0);
            FillPixels(surface.Row(y), surface.bits, left, count, made ^ inverted);
        }
    }
    return true;
}

// The rows that the context keeps from copy to copy, or null without memory.
CopiedRows* RowsOf(DeviceContext& context) {
    try {
        if (context.rows == nullptr) context.rows = std::make_shared<CopiedRows>();
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
    return context.rows.get();
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

    const bool isInverted = operation == PixelOperation::CopyInverted;
    CopiedRows* rows = RowsOf(to);
    if (rows == nullptr) return false;
    const Joining joining = to.stretchMode == BLACKONWHITE ? Joining::And : Joining::Or;
    if (!rows->Begin(
            {axes.x, area.left, area.right, joining,
             ColorChange::TermsOf(to, source.rows.surface->bits, source.background, isInverted)}))
        return false;
    area.left = rows->Left();
    area.right = rows->Right();
    const bool isDone = isInverted && rows->Change().Inverts();
    const Copy copy = {source.rows, *rows, axes.y, isDone ? PixelOperation::Copy : operation};
    VisibleParts parts(to, area);
    for (RECT part{}; parts.Next(part);)
        if (!DrawColumn(*to.surface, part, copy, joining)) DrawPart(*to.surface, part, copy);
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
