// A DIB as a new image at the end of a TIFF file's chain.
//
// The bits are stored as they are: of two colours, which one is black goes into Photometric. What a
// DIB can't be, and what doesn't fit a compression, is refused before the file is touched.

#include "bridge/appended_image.h"
#include "bridge/dib.h"
#include "bridge/dib_rows.h"
#include "bridge/save_tags.h"
#include "container/failure.h"
#include "platform/guards.h"
#include "vellim/encode.h"
#include "vellim/save.h"

namespace vellim {
namespace {

SavedPicture PictureOfDib(const SaveLineContext& rows, uint32_t blockBytes) {
    SavedPicture picture{
        .source = SaveSource::Dib, .header = rows.Header, .blockBytes = blockBytes};
    picture.record.bmWidth = rows.Header->biWidth;
    picture.record.bmHeight = rows.Header->biHeight;
    picture.record.bmWidthBytes = static_cast<int32_t>(rows.LineBytes);
    picture.record.bmPlanes = 1;
    picture.record.bmBitsPixel = static_cast<uint8_t>(rows.Header->biBitCount);
    return picture;
}

bool AppendDib(const char* fileName, uint32_t compression, const SavedPicture& picture,
               const SaveLineContext& rows) {
    const AppendedImage image(fileName);
    if (!image.IsOpen()) return Fail(TIFF_BAD_OPEN_MODE, false);
    if (!image.DefineTags(picture, compression)) return false;
    const LineCallback callback =
        picture.Bits() <= kPaletteBits ? DllFillTiffLineDIB : DllFillTiffLineDIB24Bit;
    const auto data = reinterpret_cast<uintptr_t>(&rows);
    return EncodeTiffImage(image.File(), image.Index(), data, callback) != 0;
}

bool SaveDib(const char* fileName, DibHandle dib, uint32_t compression, int32_t showDialog) {
    const LockedBlock block(dib);
    if (!block) return Fail(TIFF_NO_MEMORY, false);
    if (showDialog == 0 && !IsSaveCompression(compression))
        return Fail(TIFF_UNKNOWN_COMPRESSION, false);
    const auto rows = RowsOf(block);
    if (!rows) return false;
    const SavedPicture picture = PictureOfDib(*rows, block.Size());
    const auto chosen = ChooseHowToSave(picture, fileName, compression, showDialog);
    if (!chosen) return false;
    BITMAPINFOHEADER* header = rows->Header;
    if (header->biClrUsed == 0) header->biClrUsed = DibColorCount(header);
    return AppendDib(fileName, *chosen, picture, *rows);
}

}  // namespace
}  // namespace vellim

// Where the Photometric says palette, a table of two colours in a deeper DIB is stored like any
// other: its pixels keep their depth.
int32_t SaveDIBInTiffFile(const char* fileName, DibHandle dib, uint32_t compression,
                          int32_t showDialog) {
    return vellim::SaveDib(fileName, dib, compression, showDialog) ? 1 : 0;
}

int32_t SaveDIBInTiffFormat(const char* fileName, DibHandle dib, uint32_t compression,
                            int32_t showDialog) {
    return SaveDIBInTiffFile(fileName, dib, compression, showDialog);
}
