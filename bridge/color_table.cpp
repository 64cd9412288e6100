// The colours of a DIB that brings none of its own, and its table as palette indices.
#include <algorithm>
#include <cstring>

#include "bridge/dib.h"

namespace vellim {
namespace {

constexpr std::array<RGBQUAD, 2> kBlackAndWhite = {{{0, 0, 0, 0}, {255, 255, 255, 0}}};

// Three bits of red, three of green, two of blue, each spread over a byte by whole steps: blue
// ends at 255, red and green at 252.
constexpr std::array<RGBQUAD, 256> MakeSteps() {
    std::array<RGBQUAD, 256> table{};
    for (size_t i = 0; i < table.size(); i++) {
        table[i].rgbRed = static_cast<uint8_t>(i / 32 * 36);
        table[i].rgbGreen = static_cast<uint8_t>(i / 4 % 8 * 36);
        table[i].rgbBlue = static_cast<uint8_t>(i % 4 * 85);
    }
    return table;
}
constexpr std::array<RGBQUAD, 256> kSteps = MakeSteps();

// Bytes of the block behind the header itself.
uint32_t RoomForTable(const BITMAPINFOHEADER* header, uint32_t blockBytes) {
    return blockBytes > header->biSize ? blockBytes - header->biSize : 0;
}

uint8_t* TableOf(BITMAPINFOHEADER* header) {
    return reinterpret_cast<uint8_t*>(header) + header->biSize;
}

template <size_t N>
void Store(const std::array<RGBQUAD, N>& colors, BITMAPINFOHEADER* header, uint32_t blockBytes) {
    const size_t room = RoomForTable(header, blockBytes) / sizeof(RGBQUAD);
    if (const size_t count = std::min(N, room))
        std::memcpy(TableOf(header), colors.data(), count * sizeof(RGBQUAD));
}

}  // namespace

// Blue, green, red: eight dark colours, then the bright ones, light grey standing before dark.
constexpr std::array<RGBQUAD, 16> StandardColorTable16 = {{
    {0x00, 0x00, 0x00, 0},
    {0x00, 0x00, 0x80, 0},
    {0x00, 0x80, 0x00, 0},
    {0x00, 0x80, 0x80, 0},
    {0x80, 0x00, 0x00, 0},
    {0x80, 0x00, 0x80, 0},
    {0x80, 0x80, 0x00, 0},
    {0xC0, 0xC0, 0xC0, 0},
    {0x80, 0x80, 0x80, 0},
    {0x00, 0x00, 0xFF, 0},
    {0x00, 0xFF, 0x00, 0},
    {0x00, 0xFF, 0xFF, 0},
    {0xFF, 0x00, 0x00, 0},
    {0xFF, 0x00, 0xFF, 0},
    {0xFF, 0xFF, 0x00, 0},
    {0xFF, 0xFF, 0xFF, 0},
}};

void FillDefaultColorTable(BITMAPINFOHEADER* header, uint32_t blockBytes) {
    switch (header->biBitCount) {
        case 1:
            return Store(kBlackAndWhite, header, blockBytes);
        case 4:
            return Store(StandardColorTable16, header, blockBytes);
        case 8:
            return Store(kSteps, header, blockBytes);
        default:
            return;
    }
}

int32_t MakeDibPaletteIndices(BITMAPINFOHEADER* header, uint32_t blockBytes) {
    if (header->biBitCount != 4 && header->biBitCount != 8) return 0;
    const uint32_t count = DibColorCount(header);
    if (count > RoomForTable(header, blockBytes) / sizeof(uint16_t)) return 0;
    uint8_t* table = TableOf(header);
    for (uint32_t i = 0; i < count; i++) {
        const auto index = static_cast<uint16_t>(i);
        std::memcpy(table + i * sizeof index, &index, sizeof index);
    }
    return 1;
}

}  // namespace vellim
