#include "bridge/dib_rows.h"

#include <cstring>

#include "bridge/dib.h"
#include "container/failure.h"
#include "container/sizes.h"

namespace vellim {
namespace {

constexpr uint32_t kUncompressedDib = 0;

}  // namespace

std::optional<SaveLineContext> RowsOf(const LockedBlock& dib) {
    if (dib.Size() < sizeof(BITMAPINFOHEADER)) return Fail(TIFF_BAD_COLOR_FORMAT, std::nullopt);
    auto* header = dib.As<BITMAPINFOHEADER>();
    if (header->biSize < sizeof(BITMAPINFOHEADER) || header->biCompression != kUncompressedDib ||
        header->biHeight < 1 || (header->biPlanes != 1 && header->biBitCount != 1))
        return Fail(TIFF_BAD_COLOR_FORMAT, std::nullopt);
    const bool hasTable = header->biBitCount <= kPaletteBits;
    const auto lineBytes = PackedRowBytes(header->biWidth, header->biBitCount);
    const auto stored = StoredRowBytes(header->biWidth, header->biBitCount);
    if (!lineBytes || !stored) return Fail(TIFF_BAD_COLOR_FORMAT, std::nullopt);
    const uint64_t end =
        DibBitsOffset(header) + uint64_t{*stored} * static_cast<uint32_t>(header->biHeight);
    if (end > dib.Size()) return Fail(TIFF_UNEXPECTED_END, std::nullopt);

    SaveLineContext rows{};
    rows.Header = header;
    rows.Bits = DibBitsPointer(header, dib.Size());
    rows.Height = header->biHeight;
    // Pixels of more than a byte are copied in whole words; the encoder's line has room for that.
    rows.LineBytes = hasTable ? *lineBytes : (*lineBytes + 1) / 2 * 2;
    rows.StrideOrUsage = *stored;
    return rows;
}

bool FirstColorIsBlack(const BITMAPINFOHEADER* header) {
    RGBQUAD first;
    std::memcpy(&first, reinterpret_cast<const uint8_t*>(header) + header->biSize, sizeof first);
    return first.rgbBlue == 0 && first.rgbGreen == 0 && first.rgbRed == 0;
}

}  // namespace vellim
