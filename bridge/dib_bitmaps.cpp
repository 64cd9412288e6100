#include "bridge/dib_bitmaps.h"

#include <optional>

#include "bridge/dib.h"
#include "bridge/dib_palettes.h"
#include "container/sizes.h"
#include "platform/graphics/graphics_guards.h"
#include "platform/guards.h"

namespace vellim {
namespace {

// What a block has beside the table and the rows: the header, and a little to spare.
constexpr int64_t kBytesBesideRows = 50;

std::optional<BITMAPINFOHEADER> DescribeBitmap(BitmapHandle bitmap) {
    BITMAP record{};
    if (GetObjectA(bitmap, sizeof record, &record) != sizeof record) return std::nullopt;
    BITMAPINFOHEADER header;
    InitDibHeader(&header, record.bmWidth, record.bmHeight, record.bmPlanes * record.bmBitsPixel);
    if (header.biSizeImage == 0) return std::nullopt;
    return header;
}

OwnedBlock AllocateDib(const BITMAPINFOHEADER& header) {
    const auto tableBytes = static_cast<int64_t>(DibPaletteSize(&header));
    const auto bytes = CheckedSize(1, header.biSizeImage, tableBytes + kBytesBesideRows);
    OwnedBlock dib(bytes ? GlobalAlloc(GHND, *bytes) : 0);
    const LockedBlock block(dib.Get());
    if (!block) return {};
    *block.As<BITMAPINFOHEADER>() = header;
    return dib;
}

// Whether the block holds a colour table and all rows of a DIB that SetDIBits reads by its header.
bool IsWholeDib(const LockedBlock& block) {
    if (!block || block.Size() < sizeof(BITMAPINFOHEADER)) return false;
    const auto* header = block.As<BITMAPINFOHEADER>();
    if (header->biSize != sizeof *header || header->biHeight < 1) return false;
    const auto rowBytes = StoredRowBytes(header->biWidth, header->biBitCount);
    if (!rowBytes) return false;
    const uint64_t rows = uint64_t{*rowBytes} * static_cast<uint32_t>(header->biHeight);
    return DibBitsOffset(header) + rows <= block.Size();
}

}  // namespace

DibHandle BitmapToDib(BitmapHandle bitmap, PaletteHandle palette) {
    const auto header = DescribeBitmap(bitmap);
    if (!header) return 0;
    OwnedBlock dib = AllocateDib(*header);
    if (!dib) return 0;
    const bool takesDisplays = palette == 0 && header->biBitCount != 1;
    const OwnedObject displays(takesDisplays ? CreateSystemPalette() : 0);
    const PaletteHandle colors = takesDisplays ? displays.Get() : palette;

    const ScopedContext context(ScopedContext::Kind::Display);
    const SelectedPalette selected(context.Get(), colors);
    {
        const LockedBlock block(dib.Get());
        if (!block) return 0;
        auto* info = block.As<BITMAPINFO>();
        // Without memory for the colours the pixels are worth having all the same.
        FillDibColorTable(colors, &info->bmiHeader, block.Size());
        uint8_t* bits = DibBitsPointer(info, block.Size());
        const auto lines = static_cast<uint32_t>(header->biHeight);
        if (GetDIBits(context.Get(), bitmap, 0, lines, bits, info, DIB_RGB_COLORS) == 0) return 0;
    }
    return dib.Release();
}

BitmapHandle DibToBitmap(DibHandle dib) {
    const LockedBlock block(dib);
    if (!IsWholeDib(block)) return 0;
    const auto* info = block.As<BITMAPINFO>();
    const BITMAPINFOHEADER& header = info->bmiHeader;
    const bool isOneBit = header.biBitCount == 1 && header.biPlanes == 1;
    // A context in memory begins with one bit a pixel, and so does a bitmap that goes with it.
    const ScopedContext context(isOneBit ? ScopedContext::Kind::Memory
                                         : ScopedContext::Kind::Display);
    if (!context) return 0;
    const OwnedObject palette(CreateDibPalette(dib));
    const SelectedPalette selected(context.Get(), palette.Get());
    const uint8_t* bits = block.As<uint8_t>() + DibBitsOffset(&header);
    return CreateDIBitmap(context.Get(), &header, CBM_INIT, bits, info, DIB_RGB_COLORS);
}

}  // namespace vellim
