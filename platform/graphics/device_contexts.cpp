// The table of device contexts, and what is selected into them.
//
// A context keeps the pixels, palette, brush and font that it uses, so that they outlive their
// handles. One of the display has no pixels: what it tells is what the display is at that moment.
#include "platform/graphics/device_contexts.h"

#include <utility>

#include "platform/graphics/display.h"
#include "platform/graphics/fonts.h"
#include "platform/handle_table.h"
#include "vellim/platform.h"

namespace vellim {
namespace {

constinit HandleTable<DeviceContext, HandleKind::kDeviceContext> contexts;

constexpr uint32_t kPaletteColor = 0x01;  // in the high byte of a ColorRef
constexpr uint32_t kHighByteShift = 24;
constexpr ColorRef kColorMask = 0x00FFFFFF;

// Colours that a display of few colours always has: two, or the twenty that the system keeps of a
// palette's.
int32_t FixedColors(int32_t depth) {
    if (depth == 1) return 2;
    return depth == 8 ? 20 : 0;
}

// The system's bitmap of one pixel is a name that contexts share; the pixel is each one's own, so
// that threads may draw at the same time.
std::shared_ptr<Surface> PixelsToDrawOn(BitmapHandle bitmap, const GraphicsObject& object) {
    return bitmap == DefaultBitmap() ? MakeSurface(1, 1, 1) : object.surface;
}

GraphicsHandle SelectBitmap(DeviceContext& context, BitmapHandle bitmap,
                            const GraphicsObject& object) {
    if (context.kind != ContextKind::Memory) return 0;
    std::shared_ptr<Surface> surface = PixelsToDrawOn(bitmap, object);
    if (surface == nullptr) return 0;
    context.surface = std::move(surface);
    return std::exchange(context.bitmap, bitmap);
}

GraphicsHandle SelectBrush(DeviceContext& context, BrushHandle brush,
                           const GraphicsObject& object) {
    context.brushColor = object.brush;
    return std::exchange(context.brush, brush);
}

GraphicsHandle SelectFont(DeviceContext& context, FontHandle font, const GraphicsObject& object) {
    context.font = object.font;
    return std::exchange(context.fontHandle, font);
}

}  // namespace

DeviceContext* FindContext(DeviceContextHandle context) {
    return contexts.Find(context);
}

uint32_t DepthOf(const DeviceContext& context) {
    if (context.surface != nullptr) return context.surface->bits;
    return static_cast<uint32_t>(CurrentDisplay().BitsPerPixel);
}

ColorRef ShownColor(const DeviceContext& context, ColorRef color) {
    if (color >> kHighByteShift != kPaletteColor) return color & kColorMask;
    constexpr uint32_t entryMask = 0xFFFF;
    return context.palette != nullptr ? ColorOfEntry(*context.palette, color & entryMask) : 0;
}

DeviceContextHandle AddContext(DeviceContext context) {
    if (context.brush == 0) SelectBrush(context, WhiteBrush(), FindObject(WhiteBrush()));
    if (context.fontHandle == 0) SelectFont(context, DefaultFont(), FindObject(DefaultFont()));
    if (context.paletteHandle == 0) {
        context.paletteHandle = DefaultPalette();
        context.palette = FindObject(context.paletteHandle).palette;
    }
    const auto [handle, entry] = contexts.Reserve();
    if (handle == 0) return 0;
    *entry = std::move(context);
    contexts.Publish(handle);
    return handle;
}

bool RemoveContext(DeviceContextHandle handle, ContextKind kind) {
    DeviceContext* context = contexts.Find(handle);
    if (context == nullptr || context->kind != kind || !contexts.Withdraw(handle)) return false;
    *context = DeviceContext{};
    contexts.Recycle(handle);
    return true;
}

uint32_t LiveContexts() {
    return contexts.InUse();
}

}  // namespace vellim

DeviceContextHandle CreateCompatibleDC(DeviceContextHandle context) {
    using namespace vellim;
    if (context != 0 && FindContext(context) == nullptr) return 0;
    DeviceContext made;
    made.kind = ContextKind::Memory;
    SelectBitmap(made, DefaultBitmap(), {});
    return made.surface != nullptr ? AddContext(std::move(made)) : 0;
}

int32_t DeleteDC(DeviceContextHandle context) {
    return vellim::RemoveContext(context, vellim::ContextKind::Memory) ? 1 : 0;
}

GraphicsHandle SelectObject(DeviceContextHandle context, GraphicsHandle object) {
    using namespace vellim;
    DeviceContext* to = FindContext(context);
    if (to == nullptr) return 0;
    const GraphicsObject found = FindObject(object);
    switch (found.kind) {
        case ObjectKind::Bitmap:
            return SelectBitmap(*to, object, found);
        case ObjectKind::Brush:
            return SelectBrush(*to, object, found);
        case ObjectKind::Font:
            return SelectFont(*to, object, found);
        case ObjectKind::Palette:  // SelectPalette is for those
        case ObjectKind::None:
            break;
    }
    return 0;
}

int32_t SetStretchBltMode(DeviceContextHandle context, int32_t mode) {
    vellim::DeviceContext* found = vellim::FindContext(context);
    if (found == nullptr || mode < BLACKONWHITE || mode > COLORONCOLOR) return 0;
    return std::exchange(found->stretchMode, mode);
}

int32_t SetBkMode(DeviceContextHandle context, int32_t mode) {
    vellim::DeviceContext* found = vellim::FindContext(context);
    if (found == nullptr || (mode != TRANSPARENT && mode != OPAQUE)) return 0;
    return std::exchange(found->backgroundMode, mode);
}

ColorRef SetTextColor(DeviceContextHandle context, ColorRef color) {
    vellim::DeviceContext* found = vellim::FindContext(context);
    return found != nullptr ? std::exchange(found->textColor, color) : vellim::kNoColor;
}

ColorRef SetBkColor(DeviceContextHandle context, ColorRef color) {
    vellim::DeviceContext* found = vellim::FindContext(context);
    return found != nullptr ? std::exchange(found->backColor, color) : vellim::kNoColor;
}

int32_t GetDeviceCaps(DeviceContextHandle context, int32_t capability) {
    constexpr int32_t paletteDepth = 8;
    const vellim::DeviceContext* found = vellim::FindContext(context);
    if (found == nullptr) return 0;
    const DisplaySettings now = vellim::CurrentDisplay();
    switch (capability) {
        case BITSPIXEL:  // a window keeps the depth that it was made with
            return found->kind == vellim::ContextKind::Window
                       ? static_cast<int32_t>(vellim::DepthOf(*found))
                       : now.BitsPerPixel;
        case PLANES:
            return 1;
        case NUMCOLORS:
            return vellim::FixedColors(now.BitsPerPixel);
        case LOGPIXELSX:
            return now.DotsPerInchX;
        case LOGPIXELSY:
            return now.DotsPerInchY;
        case SIZEPALETTE:
            return now.BitsPerPixel == paletteDepth ? 1 << paletteDepth : 0;
        default:
            return 0;
    }
}
