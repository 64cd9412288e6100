// The colours of displays: the palette of one that has 8 bits a pixel, and the sixteen that every
// system knows.
#include <algorithm>
#include <mutex>

#include "platform/graphics/display.h"

namespace vellim {
namespace {

using DisplayColors = std::array<PALETTEENTRY, 256>;

// The twenty that a system keeps for itself stand at either end.
constexpr size_t kKept = 10;
constexpr std::array<PALETTEENTRY, kKept> kFirstKept = {{{0x00, 0x00, 0x00, 0},
                                                         {0x80, 0x00, 0x00, 0},
                                                         {0x00, 0x80, 0x00, 0},
                                                         {0x80, 0x80, 0x00, 0},
                                                         {0x00, 0x00, 0x80, 0},
                                                         {0x80, 0x00, 0x80, 0},
                                                         {0x00, 0x80, 0x80, 0},
                                                         {0xC0, 0xC0, 0xC0, 0},
                                                         {0xC0, 0xDC, 0xC0, 0},
                                                         {0xA6, 0xCA, 0xF0, 0}}};
constexpr std::array<PALETTEENTRY, kKept> kLastKept = {{{0xFF, 0xFB, 0xF0, 0},
                                                        {0xA0, 0xA0, 0xA4, 0},
                                                        {0x80, 0x80, 0x80, 0},
                                                        {0xFF, 0x00, 0x00, 0},
                                                        {0x00, 0xFF, 0x00, 0},
                                                        {0xFF, 0xFF, 0x00, 0},
                                                        {0x00, 0x00, 0xFF, 0},
                                                        {0xFF, 0x00, 0xFF, 0},
                                                        {0x00, 0xFF, 0xFF, 0},
                                                        {0xFF, 0xFF, 0xFF, 0}}};

constexpr DisplayColors MakeDefaultPalette() {
    constexpr size_t steps = 6;  // of each primary
    constexpr size_t step = 255 / (steps - 1);
    DisplayColors colors{};
    std::copy(kFirstKept.begin(), kFirstKept.end(), colors.begin());
    size_t next = kKept;
    for (size_t i = 0; i < steps * steps * steps; i++) {
        colors[next++] = {static_cast<uint8_t>(i / (steps * steps) * step),
                          static_cast<uint8_t>(i / steps % steps * step),
                          static_cast<uint8_t>(i % steps * step), 0};
    }
    const size_t greys = colors.size() - kKept - next;
    for (size_t i = 1; i <= greys; i++) {
        const auto grey = static_cast<uint8_t>(i * 255 / (greys + 1));
        colors[next++] = {grey, grey, grey, 0};
    }
    std::copy(kLastKept.begin(), kLastKept.end(), colors.begin() + static_cast<ptrdiff_t>(next));
    return colors;
}
constexpr DisplayColors kDefaultPalette = MakeDefaultPalette();

constinit std::mutex paletteMutex;
constinit DisplayColors palette = kDefaultPalette;

bool IsSystemColor(ColorRef color) {
    return std::ranges::any_of(kSystemColors,
                               [color](const auto& entry) { return ColorOf(entry) == color; });
}

}  // namespace

// Red, green, blue: eight dark colours, then the bright ones, light grey standing before dark.
constexpr std::array<PALETTEENTRY, 16> kSystemColors = {{{0x00, 0x00, 0x00, 0},
                                                         {0x80, 0x00, 0x00, 0},
                                                         {0x00, 0x80, 0x00, 0},
                                                         {0x80, 0x80, 0x00, 0},
                                                         {0x00, 0x00, 0x80, 0},
                                                         {0x80, 0x00, 0x80, 0},
                                                         {0x00, 0x80, 0x80, 0},
                                                         {0xC0, 0xC0, 0xC0, 0},
                                                         {0x80, 0x80, 0x80, 0},
                                                         {0xFF, 0x00, 0x00, 0},
                                                         {0x00, 0xFF, 0x00, 0},
                                                         {0xFF, 0xFF, 0x00, 0},
                                                         {0x00, 0x00, 0xFF, 0},
                                                         {0xFF, 0x00, 0xFF, 0},
                                                         {0x00, 0xFF, 0xFF, 0},
                                                         {0xFF, 0xFF, 0xFF, 0}}};

std::array<PALETTEENTRY, 256> DisplayPalette() {
    const std::scoped_lock lock(paletteMutex);
    return palette;
}

// Without a palette a picture of two colours gets black and white, one of sixteen the system's, and
// one of 256 all that surfaces of 8 bits have.
ColorRef DisplayColor(uint32_t index) {
    constexpr int32_t paletteDepth = 8;
    const DisplayColors colors = DisplayPalette();
    if (CurrentDisplay().BitsPerPixel == paletteDepth)
        return index < colors.size() ? ColorOf(colors[index]) : 0;
    constexpr size_t systems = kSystemColors.size();
    if (index == 1) return ColorOf(kSystemColors.back());
    if (index < systems) return ColorOf(kSystemColors[index == 0 ? 0 : index - 1]);
    size_t left = index - systems;
    for (const PALETTEENTRY& entry : colors) {
        const ColorRef color = ColorOf(entry);
        if (!IsSystemColor(color) && left-- == 0) return color;
    }
    return 0;
}

}  // namespace vellim

int32_t SetDisplayPalette(const PALETTEENTRY* colors) {
    vellim::DisplayColors wanted = vellim::kDefaultPalette;
    if (colors != nullptr) std::copy_n(colors, wanted.size(), wanted.begin());
    for (PALETTEENTRY& entry : wanted)
        entry.peFlags = 0;
    const std::scoped_lock lock(vellim::paletteMutex);
    vellim::palette = wanted;
    vellim::NoteDisplayChange();
    return 1;
}
