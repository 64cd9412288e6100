#include "bridge/color_maps.h"

#include <algorithm>
#include <cstring>

#include "bridge/dib.h"
#include "bridge/dib_palettes.h"
#include "bridge/dib_rows.h"
#include "bridge/save_choices.h"
#include "container/failure.h"
#include "container/sizes.h"
#include "platform/graphics/graphics_guards.h"
#include "platform/guards.h"
#include "vellim/streams.h"
#include "vellim/tags.h"

namespace vellim {
namespace {

constexpr uint32_t kLists = 3;
constexpr uint32_t kByteBits = 8;
constexpr ColorRef kWhite = 0x00FFFFFF;
constexpr ColorRef kBlack = 0;
constexpr ColorRef kPaletteIndex = 0x01000000;

constexpr uint16_t InHighByte(uint32_t value) {
    return static_cast<uint16_t>((value & 0xFFU) << kByteBits);
}

bool DefinePhotometric(TiffFileHandle file, int32_t image, uint32_t photometric) {
    return DefineTiffImageInfo(file, image, TIFF_TAG_PHOTOMETRIC, TIFF_TYPE_SHORT, photometric) !=
           0;
}

// The map of the colours that `colorAt` gives for 0 to `colors` - 1.
template <typename ColorAt>
bool DefineColorMap(TiffFileHandle file, int32_t image, uint32_t colors, ColorAt colorAt) {
    const auto bytes = CheckedSize(colors, kLists * int64_t{sizeof(uint16_t)});
    const OwnedBlock mapBlock(bytes ? GlobalAlloc(GHND, *bytes) : 0);
    const LockedBlock locked(mapBlock.Get());
    if (!locked) return Fail(TIFF_NO_MEMORY, false);
    auto* map = locked.As<uint16_t>();
    for (uint32_t i = 0; i < colors; i++) {
        const ColorRef color = colorAt(i);
        for (uint32_t list = 0; list < kLists; list++)
            map[list * colors + i] = InHighByte(color >> list * kByteBits);
    }
    return DefineTiffImageInfoBuffer(file, image, TIFF_TAG_COLOR_MAP, map, TIFF_TYPE_SHORT,
                                     kLists * colors) != 0;
}

ColorRef ColorIn(const uint8_t* table, uint32_t entry) {
    RGBQUAD color;
    std::memcpy(&color, table + size_t{entry} * sizeof color, sizeof color);
    return color.rgbRed | uint32_t{color.rgbGreen} << kByteBits |
           uint32_t{color.rgbBlue} << 2 * kByteBits;
}

bool DefineDisplayColors(TiffFileHandle file, int32_t image, uint32_t colors) {
    const ScopedContext display(ScopedContext::Kind::Display);
    const OwnedObject palette(CreateExplicitPalette(display.Get(), static_cast<uint16_t>(colors)));
    if (!palette) return false;
    const SelectedPalette selected(display.Get(), palette.Get());
    return DefineColorMap(file, image, colors, [&display](uint32_t i) {
        return GetNearestColor(display.Get(), kPaletteIndex + i);
    });
}

}  // namespace

bool DefineColorMapFromDib(TiffFileHandle file, int32_t image, uint32_t photometric,
                           const BITMAPINFOHEADER* header, uint32_t blockBytes) {
    if (!DefinePhotometric(file, image, photometric)) return false;
    // No pixel has a number beyond its bits, and readers look for the lists by that many.
    const uint32_t most = header->biBitCount <= kPaletteBits ? 1U << header->biBitCount : 0;
    const uint32_t colors = std::min(DibColorCount(header), most);
    if (photometric != kPalette || colors == 0) return true;
    if (DibBitsOffset(header) > blockBytes) return Fail(TIFF_UNEXPECTED_END, false);
    const auto* table = reinterpret_cast<const uint8_t*>(header) + header->biSize;
    return DefineColorMap(file, image, colors,
                          [table](uint32_t entry) { return ColorIn(table, entry); });
}

// Of two colours a reader here takes 0 for white whatever the map says, and the display's own may
// be two shades of anything.
bool DefineColorMapFromSystem(TiffFileHandle file, int32_t image) {
    const SaveChoices& choices = ThreadSaveChoices();
    if (!DefinePhotometric(file, image, choices.PhotometricChoice)) return false;
    if (choices.PhotometricChoice != kPalette) return true;
    if (choices.ColorCount == kTwoColors) {
        DefineColorMap(file, image, kTwoColors,
                       [](uint32_t bit) { return bit == 0 ? kWhite : kBlack; });
    } else {
        DefineDisplayColors(file, image, static_cast<uint32_t>(choices.ColorCount));
    }
    return true;
}

}  // namespace vellim
