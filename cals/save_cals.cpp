// A one-bit DIB as a CALS file. What can't be saved is found before the file is touched, so that a
// save which is refused spoils nothing.
#include <optional>

#include "bridge/dib_rows.h"
#include "cals/density.h"
#include "codec/line_pair.h"
#include "container/failure.h"
#include "container/sizes.h"
#include "container/streams.h"
#include "platform/guards.h"
#include "vellim/cals.h"
#include "vellim/encode.h"

namespace vellim {
namespace {

constexpr uint32_t kColors = 2;
constexpr int32_t kMostLinePixels = kMaxLineBytes * 8;
constexpr int32_t kDefaultOrientation[] = {90, 270};

bool IsBilevel(const LockedBlock& dib) {
    if (dib.Size() < sizeof(BITMAPINFOHEADER)) return false;
    const auto& header = *dib.As<BITMAPINFOHEADER>();
    return header.biSize == sizeof header && header.biBitCount == 1 && header.biPlanes == 1 &&
           header.biWidth > 0 && (header.biClrUsed == 0 || header.biClrUsed == kColors);
}

// The rows as the line function takes them; nothing, with the code set, for a DIB that can't be
// saved. The coder's zero bit is white, so a DIB that has black first is inverted.
std::optional<CalsLineContext> LinesOf(const LockedBlock& dib) {
    if (!IsBilevel(dib)) return Fail(TIFF_BAD_COLOR_FORMAT, std::nullopt);
    const auto rows = RowsOf(dib);
    if (!rows) return std::nullopt;
    const BITMAPINFOHEADER* header = rows->Header;
    if (!WithinSizeLimits(header->biWidth, header->biHeight))
        return Fail(TIFF_NO_MEMORY, std::nullopt);
    if (header->biWidth > kMostLinePixels) return Fail(TIFF_BAD_CODE, std::nullopt);
    return CalsLineContext{
        .Bits = rows->Bits,
        .Height = static_cast<uint32_t>(rows->Height),
        .LineBytes = rows->LineBytes,
        .Stride = rows->StrideOrUsage,
        .Invert = FirstColorIsBlack(header) ? 1U : 0U,
    };
}

CalsInfo InfoOf(const BITMAPINFOHEADER& header, const int32_t* rorient) {
    const int32_t* orientation = rorient != nullptr ? rorient : kDefaultOrientation;
    return {
        .rtype = 1,
        .rorient = {orientation[0], orientation[1]},
        .rpelcnt = {header.biWidth, header.biHeight},
        .rdensty = PixelsPerInch(header.biXPelsPerMeter),
    };
}

bool WriteFile(const char* path, const char* header, int32_t width, const CalsLineContext& lines) {
    const OpenStream file(OpenFile(path, nullptr, OF_CREATE | OF_WRITE));
    if (!file) return Fail(TIFF_IO_ERROR, false);
    if (_lwrite(file.Get(), header, CALS_HEADER_BYTES) != CALS_HEADER_BYTES)
        return Fail(TIFF_IO_ERROR, false);
    const WaitCursor wait;
    return EncodeCcittImage(file.Get(), width, static_cast<int32_t>(lines.Height), TIFF_KEY_GROUP4,
                            reinterpret_cast<uintptr_t>(&lines), DllFillCALSLineDIB) != 0;
}

bool SaveDib(const char* path, DibHandle dib, const CalsNote* note, const int32_t* rorient,
             bool showDialog) {
    const LockedBlock block(dib);
    if (!block) return Fail(TIFF_NO_MEMORY, false);
    const auto lines = LinesOf(block);
    if (!lines) return false;
    const auto& description = *block.As<BITMAPINFOHEADER>();
    const CalsInfo info = InfoOf(description, rorient);
    const OwnedBlock head(DefineCALSHead(&info, note));
    if (!head) return false;
    const LockedBlock header(head.Get());
    // No dialog can be run in this process, which counts as one that failed to.
    if (!header || showDialog) return Fail(TIFF_NO_MEMORY, false);
    return WriteFile(path, header.As<char>(), description.biWidth, *lines);
}

}  // namespace
}  // namespace vellim

int32_t SaveDIBInCALSFormat(const char* path, DibHandle dib, const CalsNote* note,
                            const int32_t* rorient, int32_t showDialog) {
    return vellim::SaveDib(path, dib, note, rorient, showDialog != 0) ? 1 : 0;
}
