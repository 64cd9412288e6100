#include "bridge/dib_palettes.h"

#include <algorithm>
#include <cstring>
#include <span>

#include "bridge/dib.h"
#include "platform/graphics/graphics_guards.h"
#include "platform/guards.h"

namespace vellim {
namespace {

constexpr uint16_t kPaletteVersion = 0x300;
constexpr uint32_t kPaletteBytes = 8;  // of a LOGPALETTE without its entries, and some to spare
constexpr uint16_t kSpreadColors = 256;
constexpr uint16_t kTrueColorBits = 24;

constexpr PALETTEENTRY kBlack = {0, 0, 0, 0};
constexpr PALETTEENTRY kWhite = {255, 255, 255, 0};

using Entries = std::span<PALETTEENTRY>;

// The palette of the colours that `fill` puts into the entries, unless it gives false.
template <typename Fill>
PaletteHandle MakePalette(uint16_t count, Fill fill) {
    const auto bytes = static_cast<uint32_t>(kPaletteBytes + count * sizeof(PALETTEENTRY));
    const OwnedBlock work(GlobalAlloc(GHND, bytes));
    const LockedBlock locked(work.Get());
    if (!locked) return 0;
    auto* palette = locked.As<LOGPALETTE>();
    palette->palVersion = kPaletteVersion;
    palette->palNumEntries = count;
    PALETTEENTRY* first = palette->palPalEntry;
    return fill(Entries(first, count)) ? CreatePalette(palette) : 0;
}

const uint8_t* TableOf(const BITMAPINFOHEADER* header) {
    return reinterpret_cast<const uint8_t*>(header) + header->biSize;
}

PaletteHandle PaletteOfTable(const BITMAPINFOHEADER* header, uint32_t blockBytes) {
    if (DibBitsOffset(header) > blockBytes) return 0;
    // A palette counts its entries in 16 bits, and so does this.
    const auto count = static_cast<uint16_t>(DibColorCount(header));
    const uint8_t* table = TableOf(header);
    return MakePalette(count, [table](Entries entries) {
        for (size_t i = 0; i < entries.size(); i++) {
            RGBQUAD color;
            std::memcpy(&color, table + i * sizeof color, sizeof color);
            entries[i] = {color.rgbRed, color.rgbGreen, color.rgbBlue, 0};
        }
        return true;
    });
}

// The steps end short of 255, so the last colour is made white.
PaletteHandle SpreadPalette() {
    return MakePalette(kSpreadColors, [](Entries entries) {
        for (size_t i = 0; i < entries.size(); i++)
            entries[i] = {static_cast<uint8_t>(i % 8 * 32), static_cast<uint8_t>(i / 8 % 8 * 32),
                          static_cast<uint8_t>(i / 64 * 64), 0};
        entries.back() = kWhite;
        return true;
    });
}

uint16_t EntriesOf(PaletteHandle palette) {
    uint16_t count = 0;
    return GetObjectA(palette, sizeof count, &count) != 0 ? count : 0;
}

}  // namespace

PaletteHandle CreateDibPalette(DibHandle dib) {
    const LockedBlock block(dib);
    if (!block || block.Size() < sizeof(BITMAPINFOHEADER)) return 0;
    return CreatePaletteFromHeader(block.As<BITMAPINFOHEADER>(), block.Size());
}

PaletteHandle CreatePaletteFromHeader(const BITMAPINFOHEADER* header, uint32_t blockBytes) {
    if (header == nullptr || header->biSize != sizeof *header) return 0;
    if (DibColorCount(header) > 0) return PaletteOfTable(header, blockBytes);
    return header->biBitCount == kTrueColorBits ? SpreadPalette() : 0;
}

// A display without a palette tells no colours, however many it counts: black ones in their place
// would blacken whatever is shown by them.
PaletteHandle CreateSystemPalette() {
    const ScopedContext display(ScopedContext::Kind::Display);
    if (!display) return 0;
    const int32_t size = GetDeviceCaps(display.Get(), SIZEPALETTE);
    const int32_t colors = size != 0 ? size : GetDeviceCaps(display.Get(), NUMCOLORS);
    const auto count = static_cast<uint16_t>(colors);
    return MakePalette(count, [&display, count](Entries entries) {
        return GetSystemPaletteEntries(display.Get(), 0, count, entries.data()) == count;
    });
}

PaletteHandle CreateExplicitPalette(DeviceContextHandle context, uint16_t count) {
    return MakePalette(count, [context, count](Entries entries) {
        for (size_t i = 0; i < entries.size(); i++)
            entries[i] = {static_cast<uint8_t>(i), static_cast<uint8_t>(i >> 8U), 0, PC_EXPLICIT};
        GetSystemPaletteEntries(context, 0, count, entries.data());
        return true;
    });
}

PaletteHandle CreateMonoPalette() {
    return MakePalette(2, [](Entries entries) {
        entries[0] = kWhite;
        entries[1] = kBlack;
        return true;
    });
}

int32_t FillDibColorTable(PaletteHandle palette, BITMAPINFOHEADER* header, uint32_t blockBytes) {
    const uint16_t count = EntriesOf(palette);
    if (count == 0 || DibColorCount(header) < count) {
        FillDefaultColorTable(header, blockBytes);
        return 1;
    }
    const OwnedBlock work(GlobalAlloc(GHND, uint32_t{count} * sizeof(PALETTEENTRY)));
    const LockedBlock locked(work.Get());
    if (!locked) return 0;
    auto* entries = locked.As<PALETTEENTRY>();
    const uint32_t read = GetPaletteEntries(palette, 0, count, entries);
    const uint32_t table = blockBytes > header->biSize ? blockBytes - header->biSize : 0;
    const uint32_t room = table / sizeof(RGBQUAD);
    uint8_t* to = reinterpret_cast<uint8_t*>(header) + header->biSize;
    for (uint32_t i = 0; i < std::min(read, room); i++) {
        const RGBQUAD color = {entries[i].peBlue, entries[i].peGreen, entries[i].peRed, 0};
        std::memcpy(to + i * sizeof color, &color, sizeof color);
    }
    return 1;
}

}  // namespace vellim
