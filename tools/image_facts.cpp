// Gathering the facts. A tag that is missing has the default of TIFF 6.0, section 8, as in the
// library.
#include "image_facts.h"

#include "messages.h"
#include "tag_names.h"
#include "vellim/codec.h"
#include "vellim/queries.h"
#include "vellim/tags.h"

namespace vellim::tool {
namespace {

constexpr uint32_t kGroup3 = 3;
constexpr uint32_t kLzw = 5;
enum T4Option : uint32_t { kTwoDimensional = 1, kUncompressedMode = 2, kFillBits = 4 };
constexpr double kCentimetresPerInch = 2.54;

// One axis stands for both where the other is missing. A file with a zero numerator has, in truth,
// no resolution.
std::optional<Resolution> ReadResolution(TiffFileHandle file, int32_t image) {
    const auto x = ReadRational(file, image, TIFF_TAG_X_RESOLUTION);
    const auto y = ReadRational(file, image, TIFF_TAG_Y_RESOLUTION);
    if (!x && !y) return {};
    Resolution resolution;
    resolution.x = x ? *x : *y;
    resolution.y = y ? *y : *x;
    if (resolution.x.denominator == 0) resolution.x.denominator = 1;
    if (resolution.y.denominator == 0) resolution.y.denominator = 1;
    if (resolution.x.numerator == 0 || resolution.y.numerator == 0) return {};
    resolution.unit = ReadNumber(file, image, TIFF_TAG_RESOLUTION_UNIT).value_or(kInch);
    return resolution;
}

}  // namespace

ImageFacts GatherFacts(TiffFileHandle file, int32_t image) {
    const auto number = [&](uint32_t tag, uint32_t missing) {
        return ReadNumber(file, image, tag).value_or(missing);
    };
    ImageFacts facts;
    facts.width = ReadNumber(file, image, TIFF_TAG_IMAGE_WIDTH);
    facts.height = ReadNumber(file, image, TIFF_TAG_IMAGE_LENGTH);
    facts.bitsPerSample = number(TIFF_TAG_BITS_PER_SAMPLE, 1);
    facts.samplesPerPixel = number(TIFF_TAG_SAMPLES_PER_PIXEL, 1);
    facts.compression = number(TIFF_TAG_COMPRESSION, 1);
    facts.t4Options = number(TIFF_TAG_T4_OPTIONS, 0);
    facts.predictor = number(TIFF_TAG_PREDICTOR, 1);
    facts.fillOrder = number(TIFF_TAG_FILL_ORDER, 1);
    facts.orientation = number(TIFF_TAG_ORIENTATION, 1);
    facts.planes = number(TIFF_TAG_PLANAR_CONFIGURATION, 1);
    facts.photometric = ReadNumber(file, image, TIFF_TAG_PHOTOMETRIC);
    facts.resolution = ReadResolution(file, image);
    facts.strips = GetTiffStripCount(file, image);
    facts.rowsPerStrip = GetTiffRowsPerStrip(file, image);
    facts.tileWidth = number(TIFF_TAG_TILE_WIDTH, 0);
    facts.tileLength = number(TIFF_TAG_TILE_LENGTH, 0);
    facts.title = ReadText(file, image, TIFF_TAG_DOCUMENT_NAME);
    if (facts.title.empty()) facts.title = ReadText(file, image, TIFF_TAG_IMAGE_DESCRIPTION);
    facts.problem = GetTiffDimensions(file, image, &facts.dimensions);
    return facts;
}

// The decoder goes by StripOffsets alone. Some writers name their tiles by that tag too, and would
// decode into lines of tiles laid end to end.
std::string Obstacle(const ImageFacts& facts) {
    if (facts.problem != 0) return FailureInWords(facts.problem);
    if (facts.tileWidth != 0 && facts.compression != TIFF_KEY_JPEG) {
        return "it is stored in tiles, which are served for JPEG alone";
    }
    return {};
}

double DotsPerInch(const Rational& resolution, uint32_t unit) {
    const double dots = double{1} * resolution.numerator / resolution.denominator;
    if (unit == kInch) return dots;
    return unit == kCentimetre ? dots * kCentimetresPerInch : 0;
}

std::string CompressionInWords(const ImageFacts& facts) {
    std::string words = CompressionName(facts.compression);
    if (facts.compression == kGroup3) {
        words += (facts.t4Options & kTwoDimensional) != 0 ? " 2-D" : " 1-D";
        if ((facts.t4Options & kFillBits) != 0) words += " with fill bits";
        if ((facts.t4Options & kUncompressedMode) != 0) words += " with uncompressed mode";
    }
    if (facts.compression == kLzw && facts.predictor == 2) words += " with differencing";
    if (facts.compression == kLzw && facts.predictor > 2) {
        words += " with predictor " + std::to_string(facts.predictor);
    }
    if (facts.fillOrder == 2) words += ", low bit first";
    return words;
}

}  // namespace vellim::tool
