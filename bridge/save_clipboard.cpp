// The clipboard's bitmap as a new image at the end of a TIFF file's chain.

#include "bridge/bitmap_pixels.h"
#include "bridge/message.h"
#include "bridge/opened_clipboard.h"
#include "container/failure.h"
#include "platform/graphics/graphics_guards.h"
#include "platform/guards.h"
#include "vellim/queries.h"
#include "vellim/save.h"

namespace vellim {
namespace {

constexpr char kCaption[] = "VELL KIT";

// The clipboard is closed again at once: the bitmap stays its own, and is there until the clipboard
// gets another one. 0, told in a box, when there is none to be had.
BitmapHandle ClipboardBitmap() {
    BitmapHandle bitmap = 0;
    {
        const OpenedClipboard clipboard;
        if (clipboard) {
            bitmap = GetClipboardData(CF_BITMAP);
        } else {
            ShowMessage("Could not open clipboard", kCaption);
            return 0;
        }
    }
    if (bitmap == 0) ShowMessage("Could not receive bitmap from clipboard", kCaption);
    return bitmap;
}

bool EncodeFromDisplay(const AppendedImage& image, BitmapHandle bitmap) {
    const OwnedBlock description(GetTiffRGBQuad(image.File(), image.Index()));
    if (!description) return false;
    const ScopedContext display(ScopedContext::Kind::Display);
    if (!display) return Fail(TIFF_NO_MEMORY, false);
    return EncodeBitmap(image, bitmap, display.Get(), description.Get());
}

enum class Outcome : uint8_t { NotOpened, Failed, Saved };

Outcome AppendBitmap(const char* fileName, uint32_t compression, const SavedPicture& picture,
                     BitmapHandle bitmap) {
    const WaitCursor wait;
    const AppendedImage image(fileName);
    if (!image.IsOpen()) return Outcome::NotOpened;
    const bool saved = image.DefineTags(picture, compression) && EncodeFromDisplay(image, bitmap);
    return saved ? Outcome::Saved : Outcome::Failed;
}

bool SaveFromClipboard(const char* fileName, uint32_t compression, int32_t showDialog) {
    if (IsClipboardFormatAvailable(CF_BITMAP) == 0) return false;
    const BitmapHandle bitmap = ClipboardBitmap();
    if (bitmap == 0) return false;
    const auto picture = PictureOf(SaveSource::ClipboardBitmap, bitmap);
    if (!picture) return Fail(TIFF_NO_MEMORY, false);
    const auto chosen = ChooseHowToSave(*picture, fileName, compression, showDialog);
    if (!chosen) return false;
    const Outcome outcome = AppendBitmap(fileName, *chosen, *picture, bitmap);
    if (outcome == Outcome::Failed) ShowSaveFailed();
    return outcome == Outcome::Saved;
}

}  // namespace
}  // namespace vellim

int32_t SaveTiffFileFromClipboard(const char* fileName, uint32_t compression, int32_t showDialog) {
    return vellim::SaveFromClipboard(fileName, compression, showDialog) ? 1 : 0;
}
