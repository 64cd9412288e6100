// Logical palettes, and what contexts show of them.
//
// Surfaces of 8 bits a pixel take their colours from the display's palette, which a palette that is
// realised doesn't change: its entries are found in it by the nearest colour, each time anew.
#include <algorithm>
#include <cstring>
#include <new>
#include <span>
#include <utility>

#include "platform/graphics/device_contexts.h"
#include "platform/graphics/display.h"
#include "platform/graphics/graphics_objects.h"
#include "platform/graphics/pixel_format.h"

namespace vellim {
namespace {

constexpr uint16_t kPaletteVersion = 0x300;
constexpr int32_t kPaletteDepth = 8;

// Null without memory.
std::shared_ptr<const Palette> MakePalette(const void* entries, size_t count) {
    try {
        auto palette = std::make_shared<Palette>();
        palette->entries.resize(count);
        std::memcpy(palette->entries.data(), entries, count * sizeof(PALETTEENTRY));
        return palette;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

uint32_t CopyEntries(std::span<const PALETTEENTRY> all, uint32_t first, uint32_t count,
                     PALETTEENTRY* entries) {
    if (entries == nullptr) return static_cast<uint32_t>(all.size());
    if (first >= all.size()) return 0;
    const auto wanted = all.subspan(first, std::min<size_t>(count, all.size() - first));
    if (!wanted.empty()) std::memcpy(entries, wanted.data(), wanted.size_bytes());
    return static_cast<uint32_t>(wanted.size());
}

}  // namespace

PaletteHandle DefaultPalette() {
    static SystemsObject palette;
    return palette.Get([] {
        return GraphicsObject{.kind = ObjectKind::Palette,
                              .palette = MakePalette(kSystemColors.data(), kSystemColors.size()),
                              .isSystems = true};
    });
}

ColorRef ColorOfEntry(const Palette& palette, uint32_t entry) {
    if (entry >= palette.entries.size()) return 0;
    const PALETTEENTRY& found = palette.entries[entry];
    if ((found.peFlags & PC_EXPLICIT) == 0) return ColorOf(found);
    return DisplayColor(found.peRed | uint32_t{found.peGreen} << 8U, palette.entries.size());
}

}  // namespace vellim

PaletteHandle CreatePalette(const LOGPALETTE* palette) {
    if (palette == nullptr || palette->palVersion != vellim::kPaletteVersion) return 0;
    const size_t count = palette->palNumEntries;
    if (count == 0) return 0;
    return vellim::AddObject({.kind = vellim::ObjectKind::Palette,
                              .palette = vellim::MakePalette(&palette->palPalEntry, count)});
}

uint32_t GetPaletteEntries(PaletteHandle palette, uint32_t first, uint32_t count,
                           PALETTEENTRY* entries) {
    const vellim::GraphicsObject found = vellim::FindObject(palette);
    if (found.kind != vellim::ObjectKind::Palette) return 0;
    return vellim::CopyEntries(found.palette->entries, first, count, entries);
}

uint32_t GetSystemPaletteEntries(DeviceContextHandle context, uint32_t first, uint32_t count,
                                 PALETTEENTRY* entries) {
    if (vellim::FindContext(context) == nullptr) return 0;
    if (vellim::CurrentDisplay().BitsPerPixel != vellim::kPaletteDepth) return 0;
    return vellim::CopyEntries(vellim::DisplayPalette(), first, count, entries);
}

PaletteHandle SelectPalette(DeviceContextHandle context, PaletteHandle palette,
                            int32_t /*background*/) {
    vellim::DeviceContext* found = vellim::FindContext(context);
    vellim::GraphicsObject object = vellim::FindObject(palette);
    if (found == nullptr || object.kind != vellim::ObjectKind::Palette) return 0;
    found->palette = std::move(object.palette);
    return std::exchange(found->paletteHandle, palette);
}

uint32_t RealizePalette(DeviceContextHandle context) {
    const vellim::DeviceContext* found = vellim::FindContext(context);
    if (found == nullptr || found->palette == nullptr) return 0;
    return static_cast<uint32_t>(found->palette->entries.size());
}

ColorRef GetNearestColor(DeviceContextHandle context, ColorRef color) {
    constexpr uint32_t highByteShift = 24, paletteColor = 1;
    const vellim::DeviceContext* found = vellim::FindContext(context);
    if (found == nullptr || color >> highByteShift > paletteColor) return vellim::kNoColor;
    const uint32_t bits = vellim::DepthOf(*found);
    const ColorRef wanted = vellim::ShownColor(*found, color);
    return vellim::ColorOfPixel(bits, vellim::NearestPixel(bits, wanted));
}
