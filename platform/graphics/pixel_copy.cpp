#include "platform/graphics/pixel_copy.h"

#include <algorithm>
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

void FillRow(uint8_t* row, uint32_t bits, size_t first, size_t count, uint32_t pixel) {
    constexpr uint32_t trueColorBits = 24;
    if (bits != trueColorBits || count != 1) return FillPixels(row, bits, first, count, pixel);
    uint8_t* at = row + 3 * first;
    at[0] = static_cast<uint8_t>(pixel);
    at[1] = static_cast<uint8_t>(pixel >> 8U);
    at[2] = static_cast<uint8_t>(pixel >> 16U);
}

uint32_t JoinedPixel(const SourceRows& source, PixelGroup rows, Joining joining) {
    const uint32_t bits = source.surface->bits;
    uint32_t pixel = FirstPixel(source.Row(rows.first), bits);
    for (int32_t y = rows.first + 1; y < rows.end; y++) {
        const uint32_t other = FirstPixel(source.Row(y), bits);
        pixel = joining == Joining::And ? pixel & other : pixel | other;
    }
    return pixel;
}

// Draws a source of a single column, whose rows come to one pixel each: a turned picture comes in
// these. False where pixels need more than a look at a table, or without memory.
bool DrawColumn(const Surface& surface, const RECT& part, const Copy& copy, Joining joining) {
    const ColorChange& change = copy.rows.Change();
    const bool isInverted = copy.operation == PixelOperation::CopyInverted;
    if (copy.source.surface->width != 1 || !change.NewPixel(0)) return false;
    if (copy.operation != PixelOperation::Copy && !isInverted) return false;
    const auto height = static_cast<size_t>(part.bottom - part.top);
    const PixelGroup* groups = copy.rows.Down(copy.down, part.top, height);
    if (groups == nullptr) return false;
    const uint32_t inverted = isInverted ? (1U << surface.bits) - 1 : 0;
    const auto left = static_cast<size_t>(part.left);
    const auto count = static_cast<size_t>(part.right - part.left);
    for (size_t i = 0; i < height; i++) {
        if (groups[i].IsEmpty()) continue;
        const uint32_t pixel = JoinedPixel(copy.source, groups[i], joining);
        const uint32_t made = change.NewPixel(pixel).value_or(0) ^ inverted;
        FillRow(surface.Row(part.top + static_cast<int32_t>(i)), surface.bits, left, count, made);
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

bool MeetsPixels(const DeviceContext& to, POINT corner, int32_t width, int32_t height) {
    const RECT bounds = BoundsOf(to);
    const RECT area = InOrder(EdgesInPixels(to.mapping, corner, width, height));
    RECT both{};
    return IntersectRect(&both, &area, &bounds) != 0;
}

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
