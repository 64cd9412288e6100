// A stored image as a DIB. The block that describes the image grows to hold the rows, and each
// line goes straight from the decoder to its row: the picture is in memory once.
#include <optional>

#include "bridge/damage_warning.h"
#include "bridge/dib.h"
#include "bridge/load_opening.h"
#include "container/failure.h"
#include "container/sizes.h"
#include "platform/guards.h"
#include "vellim/decode.h"
#include "vellim/load.h"
#include "vellim/queries.h"

namespace vellim {
namespace {

// Sizes the rows of the picture that `header` describes, stores them there, and gives the bytes of
// the whole DIB: nothing when the picture is above the limits or the sum isn't a 32-bit number.
std::optional<uint32_t> SizeDib(BITMAPINFOHEADER& header) {
    if (!WithinSizeLimits(header.biWidth, header.biHeight)) return std::nullopt;
    const auto rowBytes = StoredRowBytes(header.biWidth, header.biBitCount);
    if (!rowBytes) return std::nullopt;
    const auto imageBytes = CheckedSize(*rowBytes, header.biHeight);
    if (!imageBytes) return std::nullopt;
    header.biSizeImage = *imageBytes;
    return CheckedSize(1, *imageBytes, static_cast<int64_t>(DibBitsOffset(&header)));
}

// Grows a description to a DIB whose rows are zero. False, with code 1, without memory; the block
// is then freed with its owner.
bool GrowToHoldRows(OwnedBlock& dib) {
    std::optional<uint32_t> bytes;
    {
        const LockedBlock description(dib.Get());
        if (!description) return Fail(TIFF_NO_MEMORY, false);
        bytes = SizeDib(*description.As<BITMAPINFOHEADER>());
    }
    if (!bytes) return Fail(TIFF_NO_MEMORY, false);
    const GlobalHandle grown = GlobalReAlloc(dib.Get(), *bytes, GHND);
    if (grown == 0) return Fail(TIFF_NO_MEMORY, false);
    dib.Release();
    dib.Reset(grown);
    return true;
}

// Whether the DIB now holds the picture, or the part of it that there was.
bool DecodeIntoRows(TiffFileHandle file, int32_t image, GlobalHandle dib) {
    const LockedBlock block(dib);
    if (!block) return Fail(TIFF_NO_MEMORY, false);
    auto* header = block.As<BITMAPINFOHEADER>();
    const auto lineBytes = PackedRowBytes(header->biWidth, header->biBitCount);
    const auto storedBytes = StoredRowBytes(header->biWidth, header->biBitCount);
    if (!lineBytes || !storedBytes) return Fail(TIFF_NO_MEMORY, false);

    LoadLineContext context{};
    context.Bits = DibBitsPointer(header, block.Size());
    context.Height = static_cast<uint32_t>(header->biHeight);
    context.LineBytes = *lineBytes;
    context.StrideOrUsage = *storedBytes;
    const LineCallback callback =
        header->biBitCount > 8 ? DllFlushTiffLine24DIB : DllFlushTiffLineDIB;
    if (DecodeTiffImage(file, image, 0, 0, reinterpret_cast<uintptr_t>(&context), callback) != 0)
        return true;
    return IsWorthKeeping("TIFF warning");
}

DibHandle LoadImage(TiffFileHandle file, int32_t image) {
    const WaitCursor wait;
    OwnedBlock dib(GetTiffRGBQuad(file, image));
    if (!dib || !GrowToHoldRows(dib) || !DecodeIntoRows(file, image, dib.Get())) return 0;
    return dib.Release();
}

}  // namespace
}  // namespace vellim

DibHandle LoadTiffIntoDIB(const char* fileName, int32_t imageIndex, int32_t showInfo) {
    using namespace vellim;
    const OpenTiff file(fileName, T_READ);
    return IsReadyToLoad(file, imageIndex, showInfo) ? LoadImage(file.Get(), imageIndex) : 0;
}
