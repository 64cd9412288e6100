// The sense of stored pixels, by PhotometricInterpretation (TIFF 6.0, section 8).
//
// Without that tag a bilevel page is taken as a fax, where white is zero, and grey as black is
// zero. RGB is three samples of 8 bits; CMYK, L*a*b* and bare YCbCr data would decode into bytes
// that are no RGB, so that they are refused. JPEG data comes out of its decoder as RGB.
#include "stored_picture.h"

#include <algorithm>
#include <cstring>

#include "messages.h"
#include "tag_names.h"
#include "vellim/codec.h"
#include "vellim/failures.h"
#include "vellim/tags.h"

namespace vellim::tool {
namespace {

enum Photometric : uint32_t {
    kWhiteIsZero = 0,
    kBlackIsZero = 1,
    kRgbPhotometric = 2,
    kPalette = 3,
    kMask = 4,
    kYCbCr = 6
};

// ColorMap: all reds, then all greens, then all blues, 16 bits each, of which the high byte counts.
// Writers that put 8-bit values there are known by having no value above 255. A map that is too
// short leaves the last colours black.
std::optional<std::vector<RGBQUAD>> ReadPalette(TiffFileHandle file, int32_t image, uint32_t bits) {
    const auto map = ReadTag(file, image, TIFF_TAG_COLOR_MAP);
    if (!map) return {};
    std::vector<uint16_t> values(map->bytes.size() / sizeof(uint16_t));
    if (!values.empty()) {
        std::memcpy(values.data(), map->bytes.data(), values.size() * sizeof(uint16_t));
    }
    const bool small =
        std::all_of(values.begin(), values.end(), [](uint16_t v) { return v < 256; });
    const auto byte = [&](size_t index) {
        return static_cast<uint8_t>(small ? values[index] : values[index] >> 8U);
    };
    std::vector<RGBQUAD> palette(size_t{1} << bits);
    const size_t colours = values.size() / 3;
    for (size_t i = 0; i < std::min(colours, palette.size()); ++i) {
        palette[i] = {byte(2 * colours + i), byte(colours + i), byte(i), 0};
    }
    return palette;
}

// Why the colours of a decodable image can't be told, or nothing.
std::string Refusal(const ImageFacts& facts) {
    const uint32_t bits = facts.dimensions.biBitCount;
    const bool samples = facts.samplesPerPixel == 1 ? bits <= 8 : facts.samplesPerPixel == 3;
    if (!samples) {
        return "pixels of " + std::to_string(facts.samplesPerPixel) + " samples of " +
               std::to_string(facts.bitsPerSample) + " bits can't be converted";
    }
    const uint32_t photometric = facts.photometric.value_or(kBlackIsZero);
    const bool decoded = photometric == kYCbCr && facts.compression == TIFF_KEY_JPEG;
    if (photometric > kMask && !decoded) {
        return "colours of the kind \"" + PhotometricName(photometric) + "\" can't be converted";
    }
    return {};
}

void SetResolution(const ImageFacts& facts, Picture& picture) {
    if (!facts.resolution) return;
    // Above this PNG can't hold it, and no scanner has it.
    const auto bounded = [](int32_t pels) { return static_cast<uint32_t>(std::max(pels, 0)); };
    picture.pelsPerMetreX = bounded(facts.dimensions.biXPelsPerMeter);
    picture.pelsPerMetreY = bounded(facts.dimensions.biYPelsPerMeter);
    picture.absoluteResolution = facts.resolution->unit != kNoUnit;
}

}  // namespace

std::optional<StoredPicture> DescribePicture(TiffFileHandle file, int32_t image,
                                             const ImageFacts& facts, std::string& why) {
    why = Obstacle(facts);
    if (why.empty()) why = Refusal(facts);
    if (!why.empty()) return {};
    const TiffDimensions& dimensions = facts.dimensions;
    if (dimensions.biWidth <= 0 || dimensions.biHeight <= 0) {
        why = FailureInWords(TIFF_NO_MEMORY);
        if (dimensions.biWidth == 0) why = "the picture has no width";
        return {};
    }
    StoredPicture stored;
    Picture& picture = stored.picture;
    picture.width = static_cast<uint32_t>(dimensions.biWidth);
    picture.height = static_cast<uint32_t>(dimensions.biHeight);
    picture.type = {Colour::Grey, dimensions.biBitCount};
    SetResolution(facts, picture);
    const uint32_t unsaid = picture.type.bits == 1 ? kWhiteIsZero : kBlackIsZero;
    const uint32_t photometric = facts.photometric.value_or(unsaid);
    if (picture.type.bits == kRgb.bits) {
        picture.type = kRgb;
    } else if (photometric == kPalette) {
        auto palette = ReadPalette(file, image, picture.type.bits);
        if (!palette) {
            why = FailureInWords(TIFF_TAG_MISSING);
            return {};
        }
        picture.type.colour = Colour::Palette;
        picture.palette = std::move(*palette);
    } else {
        stored.whiteIsZero = photometric == kWhiteIsZero || photometric == kMask;
    }
    return stored;
}

}  // namespace vellim::tool
