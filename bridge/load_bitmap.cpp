// A stored image as a device bitmap, and its colours as a palette. Each line goes straight from the
// decoder into the bitmap, which finds its own colours for it.
#include <algorithm>

#include "bridge/dib.h"
#include "bridge/dib_palettes.h"
#include "bridge/load_opening.h"
#include "bridge/red_and_blue.h"
#include "container/failure.h"
#include "container/sizes.h"
#include "platform/graphics/graphics_guards.h"
#include "platform/guards.h"
#include "vellim/decode.h"
#include "vellim/load.h"
#include "vellim/queries.h"

namespace vellim {
namespace {

constexpr uint32_t kOneBitColors = 2;
constexpr uint16_t kTrueColorBits = 24;

// The header of a description, or null when the block has no room for its colour table.
BITMAPINFO* DescriptionIn(const LockedBlock& block) {
    if (!block || block.Size() < sizeof(BITMAPINFOHEADER)) return nullptr;
    auto* header = block.As<BITMAPINFOHEADER>();
    return DibBitsPointer(header, block.Size()) != nullptr ? block.As<BITMAPINFO>() : nullptr;
}

// Lines count from the top, a DIB's rows from the lowest.
void PutLine(const LoadLineContext& context, uint8_t* line, uint32_t lineNumber, bool isTrueColor) {
    const LockedBlock block(context.HeaderBlock);
    const BITMAPINFO* info = DescriptionIn(block);
    if (info == nullptr || lineNumber >= int64_t{info->bmiHeader.biHeight}) return;
    constexpr int64_t pixelBytes = 3;
    const int64_t rowBytes = pixelBytes * info->bmiHeader.biWidth;
    if (isTrueColor)
        ExchangeRedAndBlue(line,
                           static_cast<uint32_t>(std::min<int64_t>(context.LineBytes, rowBytes)));
    const uint32_t row = static_cast<uint32_t>(info->bmiHeader.biHeight) - 1 - lineNumber;
    const uint32_t use = isTrueColor ? uint32_t{DIB_RGB_COLORS} : context.StrideOrUsage;
    SetDIBits(context.DeviceContext, context.Bitmap, row, 1, line, info, use);
}

uint32_t TakeLine(uint8_t* line, uint32_t lineNumber, uintptr_t callbackData, bool isTrueColor) {
    const auto* context = reinterpret_cast<const LoadLineContext*>(callbackData);
    if (line != nullptr && context != nullptr) PutLine(*context, line, lineNumber, isTrueColor);
    return 0;
}

// A picture above the limits gets no bitmap.
BitmapHandle BitmapFor(DeviceContextHandle display, const BITMAPINFOHEADER& header) {
    if (!WithinSizeLimits(header.biWidth, header.biHeight)) return 0;
    if (header.biClrUsed == kOneBitColors)
        return CreateBitmap(header.biWidth, header.biHeight, 1, 1, nullptr);
    return CreateCompatibleBitmap(display, header.biWidth, header.biHeight);
}

// In whole words, and kept to 16 bits: of a line of 24 bits a pixel that is longer than 65,535
// bytes (21,845 pixels) only as many pixels as the low 16 bits tell have red and blue exchanged,
// and those behind them come out with the two mixed up. Other depths don't go by it.
uint32_t LineBytesOf(const BITMAPINFOHEADER& header) {
    constexpr uint64_t wordBits = 16;
    const uint64_t bits = static_cast<uint64_t>(header.biWidth) * header.biBitCount;
    return static_cast<uint16_t>((bits + wordBits - 1) / wordBits * 2);
}

// Whether the bitmap now holds the picture, or the part of it that there was.
bool DecodeIntoBitmap(TiffFileHandle file, int32_t image, LoadLineContext context,
                      uint16_t bitCount) {
    const LineCallback callback =
        bitCount == kTrueColorBits ? DllFlushTiffLine24 : DllFlushTiffLine;
    const auto data = reinterpret_cast<uintptr_t>(&context);
    return DecodeTiffImage(file, image, 0, 0, data, callback) != 0 ||
           TiffError() == TIFF_UNEXPECTED_END;
}

BitmapHandle LoadImage(TiffFileHandle file, int32_t image) {
    const ScopedContext display(ScopedContext::Kind::Display);
    if (!display) return 0;
    const WaitCursor wait;
    const OwnedBlock description(GetTiffRGBQuad(file, image));
    if (!description) return 0;
    BITMAPINFOHEADER header;
    {
        const LockedBlock block(description.Get());
        if (!block) return Fail(TIFF_NO_MEMORY, BitmapHandle{0});
        header = *block.As<BITMAPINFOHEADER>();
    }
    const OwnedObject palette(CreateDibPalette(description.Get()));
    const SelectedPalette selected(display.Get(), palette.Get());
    OwnedObject bitmap(BitmapFor(display.Get(), header));
    if (!bitmap) return Fail(TIFF_NO_MEMORY, BitmapHandle{0});

    LoadLineContext context{};
    context.DeviceContext = display.Get();
    context.Bitmap = bitmap.Get();
    context.HeaderBlock = description.Get();
    context.LineBytes = LineBytesOf(header);
    context.StrideOrUsage = DIB_RGB_COLORS;
    return DecodeIntoBitmap(file, image, context, header.biBitCount) ? bitmap.Release() : 0;
}

}  // namespace
}  // namespace vellim

BitmapHandle LoadTiffIntoBitmap(const char* fileName, int32_t imageIndex, int32_t showInfo) {
    using namespace vellim;
    const OpenTiff file(fileName, T_READ);
    if (!IsReadyToLoad(file, imageIndex, showInfo)) return 0;
    return LoadTiffChainIntoBitmap(file.Get(), imageIndex);
}

BitmapHandle LoadTiffChainIntoBitmap(TiffFileHandle file, int32_t imageIndex) {
    return file != 0 ? vellim::LoadImage(file, imageIndex) : 0;
}

PaletteHandle GetTiffImagePalette(const char* fileName, int32_t imageIndex) {
    using namespace vellim;
    const OpenTiff file(fileName, T_READ);
    if (!IsReadyToLoad(file, imageIndex, 0)) return 0;
    const OwnedBlock description(GetTiffRGBQuad(file.Get(), imageIndex));
    const LockedBlock block(description.Get());
    if (!block || block.As<BITMAPINFOHEADER>()->biBitCount == 1) return 0;
    return CreateDibPalette(description.Get());
}

uint32_t DllFlushTiffLine(uint8_t* line, uint32_t lineNumber, uintptr_t callbackData) {
    return vellim::TakeLine(line, lineNumber, callbackData, false);
}

uint32_t DllFlushTiffLine24(uint8_t* line, uint32_t lineNumber, uintptr_t callbackData) {
    return vellim::TakeLine(line, lineNumber, callbackData, true);
}
