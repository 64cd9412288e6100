// The colour table of an image, by PhotometricInterpretation (TIFF 6.0, section 8) and depth. 24
// bits have none.

#include <algorithm>
#include <array>
#include <optional>

#include "container/failure.h"
#include "container/tag_buffer.h"
#include "vellim/queries.h"
#include "vellim/tags.h"

namespace vellim {
namespace {

enum Photometric : uint32_t {
    kWhiteIsZero = 0,
    kBlackIsZero = 1,
    kRgb = 2,
    kPalette = 3,
    kTransparencyMask = 4,
    kNoPhotometric = UINT32_MAX
};

constexpr uint32_t kBilevelColors = 2;

RGBQUAD Grey(uint32_t level) {
    const auto value = static_cast<uint8_t>(std::min(level, 255U));
    return {.rgbBlue = value, .rgbGreen = value, .rgbRed = value, .rgbReserved = 0};
}

void FillBilevel(RGBQUAD* table, uint32_t photometric) {
    if (photometric == kRgb) return;
    const uint32_t first = photometric == kBlackIsZero ? 0 : 255;
    table[0] = Grey(first);
    table[1] = Grey(255 - first);
}

// Entry 0 of the descending table, 256 in theory, is white.
void FillGreys(RGBQUAD* table, uint32_t colors, uint32_t photometric) {
    const uint32_t step = 256 / colors;
    for (uint32_t i = 0; i < colors; i++) {
        if (photometric == kBlackIsZero) table[i] = Grey(i * step);
        if (photometric == kWhiteIsZero || photometric == kTransparencyMask)
            table[i] = Grey(256 - i * step);
    }
}

// High byte of the 16-bit number at `index`; 0 behind the value's end.
uint8_t MapByte(const TagRecord& map, uint32_t index) {
    const uint32_t at = 2 * index + 1;
    return at < map.ValueBytes ? map.Value[at] : 0;
}

// ColorMap holds all reds, then all greens, then all blues. A map that is too short fills what it
// can, and its three parts are as long as it has colours.
void FillFromMap(RGBQUAD* table, uint32_t colors, const TagRecord& map) {
    colors = std::min(colors, map.Head.Count / 3);
    for (uint32_t i = 0; i < colors; i++) {
        table[i] = {.rgbBlue = MapByte(map, 2 * colors + i),
                    .rgbGreen = MapByte(map, colors + i),
                    .rgbRed = MapByte(map, i),
                    .rgbReserved = 0};
    }
}

// False, with code 10, for a palette image without a map, even where its colours are fixed.
bool FillTable(RGBQUAD* table, uint32_t colors, TiffFileHandle file, int32_t image) {
    const uint32_t photometric = TagNumber(file, image, TIFF_TAG_PHOTOMETRIC, kNoPhotometric);
    if (colors == 0) return true;
    std::optional<TagRecord> map;
    const TagBuffer tags(TagBufferOf(file, image));
    if (photometric == kPalette) {
        map = tags ? tags.Find(TIFF_TAG_COLOR_MAP) : std::nullopt;
        if (!map) return Fail(TIFF_TAG_MISSING, false);
    }
    if (colors == kBilevelColors)
        FillBilevel(table, photometric);
    else if (map)
        FillFromMap(table, colors, *map);
    else
        FillGreys(table, colors, photometric);
    return true;
}

}  // namespace
}  // namespace vellim

using namespace vellim;

GlobalHandle GetTiffRGBQuad(TiffFileHandle file, int32_t image) {
    TiffDimensions dimensions;
    if (GetTiffDimensions(file, image, &dimensions) != 0) return 0;
    const auto bytes =
        static_cast<uint32_t>(sizeof dimensions + dimensions.biClrUsed * sizeof(RGBQUAD));
    OwnedBlock block(GlobalAlloc(GHND, bytes));
    {
        const LockedBlock locked(block.Get());
        if (!locked) return Fail(TIFF_NO_MEMORY, GlobalHandle{0});
        auto* header = locked.As<TiffDimensions>();
        *header = dimensions;
        void* table = header + 1;
        if (!FillTable(static_cast<RGBQUAD*>(table), dimensions.biClrUsed, file, image)) return 0;
    }
    return block.Release();
}
