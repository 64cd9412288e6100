#include "bridge/save_choices.h"

#include "bridge/dib.h"
#include "bridge/dib_rows.h"
#include "bridge/file_dialogs.h"
#include "bridge/save_tags.h"
#include "container/failure.h"

namespace vellim {
namespace {

constexpr uint32_t kPaletteColors = 1U << kPaletteBits;

uint32_t ColorsOf(const SavedPicture& picture) {
    if (picture.source == SaveSource::Dib) return DibColorCount(picture.header);
    return 1U << picture.Bits() % 32;
}

// A DIB goes by its depth: its colour table may be short.
Photometric PhotometricOf(const SavedPicture& picture, uint32_t colors) {
    const bool isDib = picture.source == SaveSource::Dib;
    if (isDib ? picture.Bits() > kPaletteBits : colors > kPaletteColors) return kRgb;
    const bool isBilevel = isDib ? picture.Bits() == 1 : colors == kTwoColors;
    return isBilevel && picture.source != SaveSource::ClipboardBitmap ? kWhiteIsZero : kPalette;
}

void ChooseColors(const SavedPicture& picture) {
    SaveChoices& choices = ThreadSaveChoices();
    const uint32_t colors = ColorsOf(picture);
    choices.ColorCount = static_cast<int32_t>(colors);
    choices.PhotometricChoice = PhotometricOf(picture, colors);
}

// A DIB's bits are stored as they are. Of one bit, which one is black can be told by WhiteIsZero or
// BlackIsZero alone: a palette of two colours is taken for white and black by what loads it.
uint32_t PhotometricOfDib(const SavedPicture& picture, uint32_t chosen) {
    if (chosen == kPalette && picture.Bits() > kPaletteBits) return kRgb;
    return chosen == kPalette && picture.Bits() == 1 ? kWhiteIsZero : chosen;
}

bool IsGrey(uint32_t photometric) {
    return photometric == kWhiteIsZero || photometric == kBlackIsZero;
}

}  // namespace

SaveChoices& ThreadSaveChoices() {
    thread_local SaveChoices choices;
    return choices;
}

std::optional<SavedPicture> PictureOf(SaveSource source, BitmapHandle bitmap) {
    SavedPicture picture{.source = source};
    if (GetObjectA(bitmap, sizeof picture.record, &picture.record) != sizeof picture.record)
        return std::nullopt;
    return picture;
}

std::optional<uint32_t> ChooseHowToSave(const SavedPicture& picture, const char* fileName,
                                        uint32_t compression, int32_t showDialog) {
    if (showDialog != 0) {
        if (!AskHowToSave(fileName, picture.record)) return std::nullopt;
        compression = ThreadSaveChoices().CompressionChoice;
    } else {
        ChooseColors(picture);
    }
    if (!IsSaveCompression(compression)) {
        if (picture.source == SaveSource::ClipboardBitmap) return std::nullopt;
        return Fail(TIFF_UNKNOWN_COMPRESSION, std::nullopt);
    }
    if (!FitChoices(picture, compression)) return std::nullopt;
    return compression;
}

bool FitChoices(const SavedPicture& picture, uint32_t compression) {
    SaveChoices& choices = ThreadSaveChoices();
    const bool isDib = picture.source == SaveSource::Dib;
    if (IsCcittCompression(compression)) {
        if (isDib && picture.Bits() != 1) return Fail(TIFF_BAD_COLOR_FORMAT, false);
        choices.ColorCount = kTwoColors;
        choices.PhotometricChoice = kWhiteIsZero;
    }
    uint32_t& photometric = choices.PhotometricChoice;
    if (isDib) photometric = PhotometricOfDib(picture, photometric);
    // Of a device bitmap an image of two colours can always be had.
    const bool isReduced = !isDib && choices.ColorCount == kTwoColors;
    const bool hasTable = IsGrey(photometric) || photometric == kPalette;
    if (hasTable && picture.Bits() > kPaletteBits && !isReduced)
        return Fail(TIFF_BAD_COLOR_FORMAT, false);
    if (isDib && photometric == kWhiteIsZero && FirstColorIsBlack(picture.header))
        photometric = kBlackIsZero;
    return true;
}

}  // namespace vellim
