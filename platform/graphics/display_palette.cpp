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

ColorRef DisplayColor(uint32_t index, size_t count) {
    constexpr int32_t paletteDepth = 8;
    constexpr size_t blackAndWhite = 2;
    const bool hasPalette = CurrentDisplay().BitsPerPixel == paletteDepth;
    if (!hasPalette && count <= blackAndWhite)
        return index == 0 ? 0 : ColorOf(kSystemColors.back());
    if (!hasPalette && count <= kSystemColors.size())
        return index < kSystemColors.size() ? ColorOf(kSystemColors[index]) : 0;
    const DisplayColors colors = DisplayPalette();
    return index < colors.size() ? ColorOf(colors[index]) : 0;
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
