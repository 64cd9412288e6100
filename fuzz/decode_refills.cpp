// A picture must not depend on where the code buffer's refills fall.
//
// An image has two strips. A decoder buffers a stretch of the file from the first strip on, and
// goes on in it when the second strip begins there. So a second strip that stands just in front of
// the stretch's end is met by a refill after a few bytes, which the same strip nearer to the first
// one isn't.
#include <algorithm>
#include <array>
#include <span>

#include "fuzz/checks.h"
#include "fuzz/input.h"
#include "fuzz/strip_tiff.h"
#include "vellim/tags.h"

namespace vellim::fuzz {

namespace {

constexpr uint32_t kCodeBufferBytes = 32767;
constexpr uint32_t kNearBytes = 4096;
constexpr uint16_t kLzw = 5;

struct Variant {
    uint16_t compression;
    uint16_t optionTag;
    uint16_t option;
    uint16_t bitsPerSample;
    uint16_t samplesPerPixel;
};

constexpr std::array<Variant, 9> kVariants = {{{4, 0, 0, 1, 1},
                                               {3, TIFF_TAG_T4_OPTIONS, 0, 1, 1},
                                               {3, TIFF_TAG_T4_OPTIONS, 1, 1, 1},
                                               {2, 0, 0, 1, 1},
                                               {kLzw, TIFF_TAG_PREDICTOR, 1, 8, 1},
                                               {kLzw, TIFF_TAG_PREDICTOR, 2, 8, 3},
                                               {32773, 0, 0, 8, 1},
                                               {1, 0, 0, 8, 1},
                                               {kLzw, TIFF_TAG_PREDICTOR, 2, 4, 1}}};

// `gap` is the distance from one strip's start to the other's.
Outcome DecodeApart(StripTiff image, std::span<const uint8_t> first,
                    std::span<const uint8_t> second, uint32_t gap, Hands hands) {
    image.data.assign(gap, 0);
    std::copy(first.begin(), first.end(), image.data.begin());
    image.data.insert(image.data.end(), second.begin(), second.end());
    image.stripOffsets = {0, gap};
    return DecodeStripTiff(image, {false, false}, hands, image.rowsPerStrip);
}

}  // namespace

}  // namespace vellim::fuzz

// Input: variant, width (two bytes), rows a strip, bytes in front of the refill, length of the
// first strip (two bytes), the first strip, the second strip.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace vellim::fuzz;
    const BlockBalance balance;
    Input input(data, size);
    const Variant variant = kVariants[input.Byte() % kVariants.size()];
    StripTiff image{};
    image.width = 1 + input.Word() % 4096U;
    image.rowsPerStrip = 1 + input.Byte() % 64U;
    image.height = 2 * image.rowsPerStrip;
    image.compression = variant.compression;
    image.optionTag = variant.optionTag;
    image.option = variant.option;
    image.bitsPerSample = variant.bitsPerSample;
    image.samplesPerPixel = variant.samplesPerPixel;
    const uint32_t beforeRefill = input.Byte();
    const size_t firstBytes = std::min<size_t>(input.Word(), kNearBytes);
    const std::span<const uint8_t> rest = input.Rest();
    const auto first = rest.first(std::min(firstBytes, rest.size()));
    const auto second = rest.subspan(first.size());
    // A second strip without a byte can be told apart: reaching it fails where nothing is buffered.
    if (second.empty()) return 0;

    const Hands hands = variant.compression == kLzw ? Hands::Off : Hands::Scribbling;
    const Outcome near = DecodeApart(image, first, second, kNearBytes, Hands::Off);
    const Outcome far = DecodeApart(image, first, second, kCodeBufferBytes - beforeRefill, hands);
    // A first strip that needs more bytes than it has goes on in the gap.
    if (near.lines < image.rowsPerStrip || far.lines < image.rowsPerStrip) return 0;
    Require(near == far, "a refill doesn't change the picture");
    return 0;
}
