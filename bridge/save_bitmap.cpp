// A device bitmap as a new image at the end of a TIFF file's chain. Whatever its own format, it is
// asked for its rows in that of the image: colours become the nearest that the image has.

#include "bridge/bitmap_pixels.h"
#include "bridge/dib_palettes.h"
#include "container/failure.h"
#include "platform/graphics/graphics_guards.h"
#include "platform/guards.h"
#include "vellim/queries.h"
#include "vellim/save.h"
#include "vellim/windows.h"

namespace vellim {
namespace {

bool EncodeInPalette(const AppendedImage& image, BitmapHandle bitmap) {
    const OwnedBlock description(GetTiffRGBQuad(image.File(), image.Index()));
    if (!description) return false;
    const OwnedObject palette(CreateDibPalette(description.Get()));
    const WindowContext context(GetActiveWindow());  // the display's where there is none
    if (!context) return Fail(TIFF_NO_MEMORY, false);
    const SelectedPalette selected(context.Get(), palette.Get());
    const WaitCursor wait;
    return EncodeBitmap(image, bitmap, context.Get(), description.Get());
}

bool SaveBitmap(const char* fileName, BitmapHandle bitmap, uint32_t compression,
                int32_t showDialog) {
    const auto picture = PictureOf(SaveSource::Bitmap, bitmap);
    if (!picture) return Fail(TIFF_NO_MEMORY, false);
    const auto chosen = ChooseHowToSave(*picture, fileName, compression, showDialog);
    if (!chosen) return false;
    const AppendedImage image(fileName);
    if (!image.IsOpen()) return Fail(TIFF_BAD_OPEN_MODE, false);
    return image.DefineTags(*picture, *chosen) && EncodeInPalette(image, bitmap);
}

}  // namespace
}  // namespace vellim

int32_t SaveBitmapInTiffFile(const char* fileName, BitmapHandle bitmap, uint32_t compression,
                             int32_t showDialog) {
    return vellim::SaveBitmap(fileName, bitmap, compression, showDialog) ? 1 : 0;
}

int32_t SaveBitmapInTiffFormat(const char* fileName, BitmapHandle bitmap, uint32_t compression,
                               int32_t showDialog) {
    return SaveBitmapInTiffFile(fileName, bitmap, compression, showDialog);
}
