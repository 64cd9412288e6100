// What is known of a picture that is to be saved, and how it was chosen to save it.
//
// SaveChoices is what the save dialog and the saving calls tell each other: one record a thread,
// which lasts from call to call, so that a save without a dialog reuses the texts that the last
// dialog left.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "vellim/save.h"

namespace vellim {

inline constexpr size_t kSaveTextBytes = 100;  // terminator included

enum Photometric : uint32_t { kWhiteIsZero = 0, kBlackIsZero = 1, kRgb = 2, kPalette = 3 };

inline constexpr int32_t kTwoColors = 2;

struct SaveChoices {
    uint32_t CompressionChoice = TIFF_SAVE_NONE;
    int32_t SourceColors = 0;
    int32_t ColorCount = 0;  // 2: a one-bit image
    uint32_t PhotometricChoice = kWhiteIsZero;
    std::array<char, kSaveTextBytes> TitleText{};
    std::array<char, kSaveTextBytes> ArtistText{};
    std::array<char, 1> DateTimeText{};  // nothing fills it
};

SaveChoices& ThreadSaveChoices();

enum class SaveSource : uint8_t { Bitmap, ClipboardBitmap, Dib };

struct SavedPicture {
    SaveSource source = SaveSource::Dib;
    BITMAP record{};                           // size and depth alone count
    const BITMAPINFOHEADER* header = nullptr;  // of a DIB, with its whole colour table behind it
    uint32_t blockBytes = 0;                   // from there to the end of its block

    [[nodiscard]] uint32_t Bits() const { return uint32_t{record.bmPlanes} * record.bmBitsPixel; }
};

// Of the bitmap, for a save; nothing for what is no bitmap.
std::optional<SavedPicture> PictureOf(SaveSource source, BitmapHandle bitmap);

// Leaves how to save the picture in ThreadSaveChoices, asking for it if `showDialog` isn't 0, and
// gives the compression. Nothing, with the code set, where there is no answer, for a compression
// that isn't known (11, which a save from the clipboard keeps to itself), and for colours that
// can't be stored (16).
std::optional<uint32_t> ChooseHowToSave(const SavedPicture& picture, const char* fileName,
                                        uint32_t compression, int32_t showDialog);

// The last step of that: brings the thread's choices into line with the picture and the
// compression. False, with code 16, for greys or a palette of a picture of more than 8 bits, and
// for a DIB of more than one bit whose compression has one.
bool FitChoices(const SavedPicture& picture, uint32_t compression);

}  // namespace vellim
