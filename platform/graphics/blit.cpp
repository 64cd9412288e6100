// The calls that draw.
#include <algorithm>
#include <memory>
#include <optional>
#include <utility>

#include "platform/graphics/device_contexts.h"
#include "platform/graphics/dib_format.h"
#include "platform/graphics/mapping.h"
#include "platform/graphics/pixel_copy.h"
#include "platform/graphics/pixel_rows.h"
#include "platform/graphics/row_buffer.h"

namespace vellim {
namespace {

// The colour of an operation that takes no source.
std::optional<ColorRef> FillColor(const DeviceContext& context, uint32_t operation) {
    constexpr ColorRef black = 0;
    constexpr ColorRef white = 0x00FFFFFF;
    switch (operation) {
        case PATCOPY:
            return ShownColor(context, context.brushColor);
        case BLACKNESS:
            return black;
        case WHITENESS:
            return white;
        default:
            return std::nullopt;
    }
}

// The rows of a DIB that lie between the edges, in the format of the target.
SourceRows RowsOfDib(const DibFormat& dib, const PixelFormat& pixels, const uint8_t* bits,
                     const SourceEdges& edges, uint32_t toBits) {
    const auto clip = [&](int64_t y) {
        return static_cast<int32_t>(std::clamp<int64_t>(y, 0, dib.height));
    };
    const int32_t top = clip(std::min(edges.top, edges.bottom));
    const int32_t bottom = clip(std::max(edges.top, edges.bottom));
    const std::shared_ptr<Surface> surface = MakeSurface(dib.width, bottom - top, toBits);
    if (surface == nullptr) return {};
    const bool isDeep = dib.bits == 16 || dib.bits == 32;
    RowBuffer<uint8_t> trueColors;
    if (isDeep && !trueColors.Reserve(size_t{3} * static_cast<uint32_t>(dib.width))) return {};
    const PixelConversion conversion =
        MakeConversion(isDeep ? SurfaceFormat(24) : pixels, SurfaceFormat(toBits));
    const auto width = static_cast<uint32_t>(dib.width);
    for (int32_t y = top; y < bottom; y++) {
        const auto storedRow = static_cast<size_t>(dib.height - 1 - y);
        const uint8_t* row = bits + storedRow * dib.stride;
        if (isDeep) MakeTrueColor(row, dib.bits, trueColors.Get(), width);
        ConvertRow(conversion, isDeep ? trueColors.Get() : row, surface->Row(y - top), width);
    }
    return {surface, top};
}

}  // namespace
}  // namespace vellim

int32_t PatBlt(DeviceContextHandle context, int32_t x, int32_t y, int32_t width, int32_t height,
               uint32_t operation) {
    using namespace vellim;
    DeviceContext* to = FindContext(context);
    if (to == nullptr) return 0;
    const std::optional<ColorRef> color = FillColor(*to, operation);
    if (!color) return 0;
    if (to->surface != nullptr)
        FillWithColor(*to, EdgesInPixels(to->mapping, {x, y}, width, height), *color);
    return 1;
}

int32_t StretchBlt(DeviceContextHandle to, int32_t x, int32_t y, int32_t width, int32_t height,
                   DeviceContextHandle from, int32_t fromX, int32_t fromY, int32_t fromWidth,
                   int32_t fromHeight, uint32_t operation) {
    using namespace vellim;
    const std::optional<PixelOperation> pixelOperation = OperationOf(operation);
    if (!pixelOperation) return PatBlt(to, x, y, width, height, operation);
    DeviceContext* target = FindContext(to);
    const DeviceContext* source = FindContext(from);
    if (target == nullptr || source == nullptr) return 0;
    if (target->surface == nullptr || source->surface == nullptr) return 1;
    const RECT edges = EdgesInPixels(source->mapping, {fromX, fromY}, fromWidth, fromHeight);
    CopySource copied;
    copied.rows.surface = source->surface;
    copied.width = source->surface->width;
    copied.height = source->surface->height;
    copied.edges = {edges.left, edges.top, edges.right, edges.bottom};
    copied.background = ShownColor(*source, source->backColor);
    const RECT toEdges = EdgesInPixels(target->mapping, {x, y}, width, height);
    return CopyPixels(*target, toEdges, std::move(copied), *pixelOperation) ? 1 : 0;
}

int32_t BitBlt(DeviceContextHandle to, int32_t x, int32_t y, int32_t width, int32_t height,
               DeviceContextHandle from, int32_t fromX, int32_t fromY, uint32_t operation) {
    return StretchBlt(to, x, y, width, height, from, fromX, fromY, width, height, operation);
}

int32_t StretchDIBits(DeviceContextHandle to, int32_t x, int32_t y, int32_t width, int32_t height,
                      int32_t fromX, int32_t fromY, int32_t fromWidth, int32_t fromHeight,
                      const void* bits, const BITMAPINFO* info, uint32_t use, uint32_t operation) {
    using namespace vellim;
    DeviceContext* target = FindContext(to);
    if (target == nullptr || bits == nullptr || info == nullptr) return 0;
    const std::optional<DibFormat> dib = ReadDibFormat(info, use, DibDepths::AllDrawn);
    if (!dib) return 0;
    const std::optional<PixelOperation> pixelOperation = OperationOf(operation);
    if (!pixelOperation) return PatBlt(to, x, y, width, height, operation) != 0 ? dib->height : 0;
    if (target->surface == nullptr) return dib->height;

    // Rows count from the highest here.
    const int64_t bottom = int64_t{dib->height} - fromY;
    const SourceEdges edges = {fromX, bottom - fromHeight, int64_t{fromX} + fromWidth, bottom};
    const bool isOutside = std::max(edges.top, edges.bottom) <= 0 ||
                           std::min(edges.top, edges.bottom) >= dib->height || fromHeight == 0;
    if (isOutside) return dib->height;
    CopySource copied;
    copied.rows = RowsOfDib(*dib, ReadDibColors(info, *dib, use, target->palette.get()),
                            static_cast<const uint8_t*>(bits), edges, target->surface->bits);
    copied.width = dib->width;
    copied.height = dib->height;
    copied.edges = edges;
    if (copied.rows.surface == nullptr) return 0;
    const RECT toEdges = EdgesInPixels(target->mapping, {x, y}, width, height);
    return CopyPixels(*target, toEdges, std::move(copied), *pixelOperation) ? dib->height : 0;
}
