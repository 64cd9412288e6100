// Filling with a brush that isn't selected.
#include "platform/graphics/device_contexts.h"
#include "platform/graphics/mapping.h"
#include "platform/graphics/pixel_copy.h"

int32_t FillRect(DeviceContextHandle context, const RECT* rect, BrushHandle brush) {
    using namespace vellim;
    DeviceContext* to = FindContext(context);
    const GraphicsObject object = FindObject(brush);
    if (to == nullptr || rect == nullptr || object.kind != ObjectKind::Brush) return 0;
    if (to->surface == nullptr || IsRectEmpty(rect) != 0) return 1;
    const POINT first = PixelOf(to->mapping, {rect->left, rect->top});
    const POINT end = PixelOf(to->mapping, {rect->right, rect->bottom});
    FillWithColor(*to, {first.x, first.y, end.x, end.y}, ShownColor(*to, object.brush));
    return 1;
}
