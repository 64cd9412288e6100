#include "bridge/save_tags.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "bridge/save_choices.h"
#include "container/failure.h"
#include "platform/graphics/graphics_guards.h"
#include "vellim/files.h"
#include "vellim/streams.h"
#include "vellim/tags.h"

namespace vellim {
namespace {

constexpr double kInchesPerMetre = 0.025400050800101603;  // metres an inch, by the survey foot
constexpr uint32_t kUnitInch = 2;
constexpr char kMaker[] = "VELL.DLL from Corvane Systems, Inc.";
constexpr size_t kVersionBytes = 32;

// What stands for a compression in the file: Compression, and the tag that goes with it.
struct StoredCompression {
    uint32_t id;
    uint16_t compression;
    uint16_t furtherTag;  // 0: none
    uint16_t furtherValue;
};
constexpr StoredCompression kCompressions[] = {
    {TIFF_SAVE_NONE, 1, 0, 0},
    {TIFF_SAVE_PACKBITS, 32773, 0, 0},
    {TIFF_SAVE_LZW, 5, 0, 0},
    {TIFF_SAVE_LZW_DIFFERENCING, 5, TIFF_TAG_PREDICTOR, 2},
    {TIFF_SAVE_CCITT_1D, 2, 0, 0},
    {TIFF_SAVE_GROUP3_1D, 3, 0, 0},
    {TIFF_SAVE_GROUP3_2D, 3, TIFF_TAG_T4_OPTIONS, 1},
    {TIFF_SAVE_GROUP4, 4, 0, 0},
    {TIFF_SAVE_JPEG, 6, 0, 0},
};

const StoredCompression* FindCompression(uint32_t id) {
    const auto* found = std::find_if(std::begin(kCompressions), std::end(kCompressions),
                                     [id](const StoredCompression& row) { return row.id == id; });
    return found == std::end(kCompressions) ? nullptr : found;
}

// Dots an inch, without a fraction. A header that has no sensible figure leaves it to the display.
uint32_t DotsPerInchOf(int32_t pelsPerMetre, int32_t displayCapability) {
    if (pelsPerMetre > 0) return static_cast<uint32_t>(pelsPerMetre * kInchesPerMetre);
    const ScopedContext screen(ScopedContext::Kind::Display);
    return static_cast<uint32_t>(GetDeviceCaps(screen.Get(), displayCapability));
}

bool DefineShort(TiffFileHandle file, int32_t image, uint32_t tag, uint32_t value) {
    return DefineTiffImageInfo(file, image, tag, TIFF_TYPE_SHORT, value) != 0;
}

// With its terminator.
bool DefineText(TiffFileHandle file, int32_t image, uint32_t tag, const char* text) {
    const auto count = static_cast<uint32_t>(std::strlen(text) + 1);
    return DefineTiffImageInfoBuffer(file, image, tag, text, TIFF_TYPE_ASCII, count) != 0;
}

bool DefineOverOne(TiffFileHandle file, int32_t image, uint32_t tag, uint32_t value) {
    return DefineTiffImageInfo(file, image, tag, TIFF_TYPE_RATIONAL, value) != 0;
}

bool DefineSoftware(TiffFileHandle file, int32_t image) {
    std::array<char, sizeof kMaker + kVersionBytes> text{};
    std::memcpy(text.data(), kMaker, sizeof kMaker);
    GetTiffVersion(text.data() + sizeof kMaker - 1, kVersionBytes);
    return DefineText(file, image, TIFF_TAG_SOFTWARE, text.data());
}

bool DefineTexts(TiffFileHandle file, int32_t image) {
    const SaveChoices& choices = ThreadSaveChoices();
    return DefineSoftware(file, image) &&
           DefineText(file, image, TIFF_TAG_DATE_TIME, choices.DateTimeText.data()) &&
           DefineText(file, image, TIFF_TAG_IMAGE_DESCRIPTION, choices.TitleText.data()) &&
           DefineText(file, image, TIFF_TAG_ARTIST, choices.ArtistText.data());
}

}  // namespace

bool IsSaveCompression(uint32_t compression) {
    return FindCompression(compression) != nullptr;
}

bool IsCcittCompression(uint32_t compression) {
    return compression >= TIFF_SAVE_CCITT_1D && compression <= TIFF_SAVE_GROUP4;
}

bool DefineSaveTags(TiffFileHandle file, int32_t image, uint32_t compression,
                    const BITMAPINFOHEADER* header) {
    const uint32_t across = DotsPerInchOf(header ? header->biXPelsPerMeter : 0, LOGPIXELSX);
    const uint32_t down = DotsPerInchOf(header ? header->biYPelsPerMeter : 0, LOGPIXELSY);
    const StoredCompression* stored = FindCompression(compression);
    if (stored == nullptr) return Fail(TIFF_UNKNOWN_COMPRESSION, false);
    return DefineShort(file, image, TIFF_TAG_COMPRESSION, stored->compression) &&
           DefineTexts(file, image) &&
           DefineShort(file, image, TIFF_TAG_RESOLUTION_UNIT, kUnitInch) &&
           DefineOverOne(file, image, TIFF_TAG_X_RESOLUTION, across) &&
           DefineOverOne(file, image, TIFF_TAG_Y_RESOLUTION, down) &&
           (stored->furtherTag == 0 ||
            DefineShort(file, image, stored->furtherTag, stored->furtherValue));
}

}  // namespace vellim
