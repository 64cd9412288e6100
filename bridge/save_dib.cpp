// A DIB as a new image at the end of a TIFF file's chain.
//
// The bits are stored as they are: of two colours, which one is black goes into Photometric. What a
// DIB can't be, and what doesn't fit a compression, is refused before the file is touched.

#include "bridge/dib.h"
#include "bridge/dib_rows.h"
#include "bridge/save_choices.h"
#include "bridge/save_tags.h"
#include "container/failure.h"
#include "container/open_tiff.h"
#include "platform/guards.h"
#include "vellim/encode.h"
#include "vellim/save.h"
#include "vellim/streams.h"
#include "vellim/tags.h"

namespace vellim {
namespace {

// The tags of an image that is being made, let go of at the end of the scope.
class NewImage {
  public:
    explicit NewImage(TiffFileHandle file) : file_(file), image_(DefineTiffImage(file)) {}
    ~NewImage() {
        if (image_ < 0) return;
        const int32_t code = TiffError();
        DropTiffImage(file_, image_);
        SetTiffError(code);
    }
    NewImage(const NewImage&) = delete;
    NewImage& operator=(const NewImage&) = delete;

    explicit operator bool() const { return image_ >= 0; }
    [[nodiscard]] int32_t Index() const { return image_; }

  private:
    TiffFileHandle file_;
    int32_t image_;
};

void ChooseColors(const BITMAPINFOHEADER* header, uint32_t compression) {
    SaveChoices& choices = ThreadSaveChoices();
    const bool bilevel = header->biBitCount == 1 || IsCcittCompression(compression);
    choices.ColorCount = bilevel ? 2 : static_cast<int32_t>(DibColorCount(header));
    choices.PhotometricChoice = bilevel                              ? kWhiteIsZero
                                : header->biBitCount <= kPaletteBits ? kPalette
                                                                     : kRgb;
    if (choices.PhotometricChoice == kWhiteIsZero && FirstColorIsBlack(header))
        choices.PhotometricChoice = kBlackIsZero;
}

BITMAP BitmapOf(const BITMAPINFOHEADER* header) {
    BITMAP bitmap{};
    bitmap.bmWidth = header->biWidth;
    bitmap.bmHeight = header->biHeight;
    bitmap.bmPlanes = 1;
    bitmap.bmBitsPixel = static_cast<uint8_t>(header->biBitCount);
    return bitmap;
}

// The failure code of a depth that isn't served stays what it was; other refusals are told.
bool DefineSizeTags(TiffFileHandle file, int32_t image, const BITMAPINFOHEADER* header) {
    const int32_t result = DefineGeneralTags(file, image, BitmapOf(header));
    if (result != TIFF_SUCCESS && result != TIFF_BAD_COLOR_FORMAT) SetTiffError(result);
    return result == TIFF_SUCCESS;
}

bool AppendImage(const char* fileName, uint32_t compression, const SaveLineContext& rows,
                 uint32_t blockBytes) {
    const OpenTiff file(fileName, T_APPEND);
    if (!file) return Fail(TIFF_BAD_OPEN_MODE, false);
    // For a file that is new. One that is there keeps its order, which the writer finds out.
    if (ModiTiffFileInfo(file.Get(), nullptr, TIFF_LITTLE_ENDIAN) == 0) return false;
    const NewImage image(file.Get());
    if (!image) return false;
    if (!DefineSaveTags(file.Get(), image.Index(), compression, rows.Header) ||
        !DefineSizeTags(file.Get(), image.Index(), rows.Header) ||
        !DefineColorMapFromDib(file.Get(), image.Index(), ThreadSaveChoices().PhotometricChoice,
                               rows.Header, blockBytes))
        return false;
    const LineCallback callback =
        rows.Header->biBitCount <= kPaletteBits ? DllFillTiffLineDIB : DllFillTiffLineDIB24Bit;
    return EncodeTiffImage(file.Get(), image.Index(), reinterpret_cast<uintptr_t>(&rows),
                           callback) != 0;
}

bool SaveDib(const char* fileName, DibHandle dib, uint32_t compression, bool showDialog) {
    const LockedBlock block(dib);
    if (!block) return Fail(TIFF_NO_MEMORY, false);
    // No dialog can be run in this process, which counts as one that failed to.
    if (showDialog) return Fail(TIFF_NO_MEMORY, false);
    if (!IsSaveCompression(compression)) return Fail(TIFF_UNKNOWN_COMPRESSION, false);
    const auto rows = RowsOf(block);
    if (!rows) return false;
    BITMAPINFOHEADER* header = rows->Header;
    if (IsCcittCompression(compression) && header->biBitCount != 1)
        return Fail(TIFF_BAD_COLOR_FORMAT, false);
    if (header->biClrUsed == 0) header->biClrUsed = DibColorCount(header);
    ChooseColors(header, compression);
    return AppendImage(fileName, compression, *rows, block.Size());
}

}  // namespace
}  // namespace vellim

// Where the Photometric says palette, a table of two colours in a deeper DIB is stored like any
// other: its pixels keep their depth.
int32_t SaveDIBInTiffFile(const char* fileName, DibHandle dib, uint32_t compression,
                          int32_t showDialog) {
    return vellim::SaveDib(fileName, dib, compression, showDialog != 0) ? 1 : 0;
}

int32_t SaveDIBInTiffFormat(const char* fileName, DibHandle dib, uint32_t compression,
                            int32_t showDialog) {
    return SaveDIBInTiffFile(fileName, dib, compression, showDialog);
}
