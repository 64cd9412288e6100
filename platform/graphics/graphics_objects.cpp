// The table of bitmaps, palettes, brushes and fonts.
//
// An object is a handful of shared parts: whoever uses it takes a share of its own, and a handle
// that is given back lets go of the table's.
#include "platform/graphics/graphics_objects.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "platform/graphics/device_contexts.h"
#include "platform/handle_table.h"

namespace vellim {
namespace {

constinit HandleTable<GraphicsObject, HandleKind::kGraphicsObject> objects;

constexpr ColorRef kWhite = 0x00FFFFFF;

GraphicsHandle AddBitmap(std::shared_ptr<Surface> surface) {
    return AddObject({.kind = ObjectKind::Bitmap, .surface = std::move(surface)});
}

// Copies as much of `value` as there is room for.
template <typename T>
int32_t Describe(const T& value, int32_t room, void* record) {
    constexpr auto all = static_cast<int32_t>(sizeof value);
    if (record == nullptr) return all;
    const int32_t bytes = std::clamp(room, 0, all);
    std::memcpy(record, &value, static_cast<size_t>(bytes));
    return bytes;
}

BITMAP RecordOf(const Surface& surface) {
    BITMAP record{};
    record.bmWidth = surface.width;
    record.bmHeight = surface.height;
    record.bmWidthBytes = static_cast<int32_t>(surface.stride);
    record.bmPlanes = 1;
    record.bmBitsPixel = static_cast<uint16_t>(surface.bits);
    return record;
}

// At most 31 bits: a surface has no more.
size_t BytesOf(const Surface& surface) {
    return static_cast<size_t>(surface.height) * surface.stride;
}

}  // namespace

GraphicsHandle AddObject(GraphicsObject object) {
    if (object.kind == ObjectKind::Bitmap && object.surface == nullptr) return 0;
    if (object.kind == ObjectKind::Palette && object.palette == nullptr) return 0;
    if (object.kind == ObjectKind::Font && object.font == nullptr) return 0;
    const auto [handle, entry] = objects.Reserve();
    if (handle == 0) return 0;
    *entry = std::move(object);
    objects.Publish(handle);
    return handle;
}

GraphicsObject FindObject(GraphicsHandle object) {
    const GraphicsObject* found = objects.Find(object);
    return found != nullptr ? *found : GraphicsObject{};
}

uint32_t LiveObjects() {
    return objects.InUse();
}

BitmapHandle DefaultBitmap() {
    static SystemsObject bitmap;
    return bitmap.Get([] {
        return GraphicsObject{
            .kind = ObjectKind::Bitmap, .surface = MakeSurface(1, 1, 1), .isSystems = true};
    });
}

BrushHandle WhiteBrush() {
    static SystemsObject brush;
    return brush.Get([] {
        return GraphicsObject{.kind = ObjectKind::Brush, .brush = kWhite, .isSystems = true};
    });
}

}  // namespace vellim

using vellim::FindObject;
using vellim::GraphicsObject;
using vellim::ObjectKind;

BitmapHandle CreateBitmap(int32_t width, int32_t height, uint32_t planes, uint32_t bitsPerPixel,
                          const void* bits) {
    constexpr uint32_t most = 24;
    if (planes > most || bitsPerPixel > most) return 0;
    auto surface = vellim::MakeSurface(width, height, planes * bitsPerPixel);
    if (surface == nullptr) return 0;
    if (bits != nullptr) std::memcpy(surface->pixels.get(), bits, vellim::BytesOf(*surface));
    return vellim::AddBitmap(std::move(surface));
}

// Rows of the record may be longer than they have to be.
BitmapHandle CreateBitmapIndirect(const BITMAP* bitmap) {
    if (bitmap == nullptr) return 0;
    const BitmapHandle made = CreateBitmap(bitmap->bmWidth, bitmap->bmHeight, bitmap->bmPlanes,
                                           bitmap->bmBitsPixel, nullptr);
    if (made == 0 || bitmap->bmBits == nullptr) return made;
    const std::shared_ptr<vellim::Surface> surface = FindObject(made).surface;
    if (bitmap->bmWidthBytes < 0 || static_cast<uint32_t>(bitmap->bmWidthBytes) < surface->stride) {
        DeleteObject(made);
        return 0;
    }
    const auto* from = static_cast<const uint8_t*>(bitmap->bmBits);
    for (int32_t y = 0; y < surface->height; y++, from += bitmap->bmWidthBytes)
        std::memcpy(surface->Row(y), from, surface->stride);
    return made;
}

BitmapHandle CreateCompatibleBitmap(DeviceContextHandle context, int32_t width, int32_t height) {
    const vellim::DeviceContext* found = vellim::FindContext(context);
    if (found == nullptr) return 0;
    return vellim::AddBitmap(vellim::MakeSurface(width, height, vellim::DepthOf(*found)));
}

BrushHandle CreateSolidBrush(ColorRef color) {
    return vellim::AddObject({.kind = ObjectKind::Brush, .brush = color});
}

int32_t GetObjectA(GraphicsHandle object, int32_t bytes, void* record) {
    const GraphicsObject found = FindObject(object);
    if (found.kind == ObjectKind::Bitmap)
        return vellim::Describe(vellim::RecordOf(*found.surface), bytes, record);
    if (found.kind != ObjectKind::Palette) return 0;
    const auto count = static_cast<uint16_t>(found.palette->entries.size());
    return vellim::Describe(count, bytes, record);
}

int32_t DeleteObject(GraphicsHandle object) {
    using vellim::objects;
    GraphicsObject* found = objects.Find(object);
    if (found == nullptr || found->isSystems || !objects.Withdraw(object)) return 0;
    *found = {};
    objects.Recycle(object);
    return 1;
}

int32_t SetBitmapBits(BitmapHandle bitmap, uint32_t bytes, const void* bits) {
    const GraphicsObject found = FindObject(bitmap);
    if (found.kind != ObjectKind::Bitmap || bits == nullptr) return 0;
    const size_t count = std::min<size_t>(bytes, vellim::BytesOf(*found.surface));
    std::memcpy(found.surface->pixels.get(), bits, count);
    return static_cast<int32_t>(count);
}

int32_t GetBitmapBits(BitmapHandle bitmap, int32_t bytes, void* bits) {
    const GraphicsObject found = FindObject(bitmap);
    if (found.kind != ObjectKind::Bitmap || bits == nullptr || bytes <= 0) return 0;
    const size_t count = std::min(static_cast<size_t>(bytes), vellim::BytesOf(*found.surface));
    std::memcpy(bits, found.surface->pixels.get(), count);
    return static_cast<int32_t>(count);
}
