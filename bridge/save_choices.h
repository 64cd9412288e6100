// What the save dialog and the saving calls tell each other. One record a thread, which lasts from
// call to call: a save without a dialog reuses the texts that the last dialog left.
#pragma once

#include <array>
#include <cstdint>

#include "vellim/save.h"

namespace vellim {

inline constexpr size_t kSaveTextBytes = 100;  // terminator included

enum Photometric : uint32_t { kWhiteIsZero = 0, kBlackIsZero = 1, kRgb = 2, kPalette = 3 };

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

}  // namespace vellim
