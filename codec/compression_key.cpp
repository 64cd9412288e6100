// The compression key of a stored image: Compression in the low half, and in the high half what
// else the decoder must know: T4Options for Group 3 (TIFF 6.0 section 11), Predictor for LZW
// (section 14), and for the bare one-dimensional coding (section 10) the bit that says that lines
// begin on byte boundaries.

#include "codec/compression_key.h"

#include "codec/tag_value.h"
#include "vellim/failures.h"
#include "vellim/streams.h"

namespace vellim {
namespace {

enum Compression : uint32_t {
    kUncompressed = 1,
    kCcitt1D = 2,
    kGroup3 = 3,
    kLzw = 5,
};
constexpr uint32_t kNoPredictor = 1;
constexpr uint32_t kCompressionMask = 0xFFFF;
constexpr unsigned kOptionShift = 16;

uint32_t KeyOptions(TiffFileHandle file, int32_t image, uint32_t compression) {
    switch (compression) {
        case kCcitt1D:
            return TIFF_KEY_CCITT_1D >> kOptionShift;
        case kGroup3:
            return TagValue(file, image, TIFF_TAG_T4_OPTIONS, 0);
        case kLzw:
            return TagValue(file, image, TIFF_TAG_PREDICTOR, kNoPredictor);
        default:
            return 0;
    }
}

}  // namespace

uint32_t ReadCompressionKey(TiffFileHandle file, int32_t image, CodecState& state) {
    const uint32_t compression =
        TagValue(file, image, TIFF_TAG_COMPRESSION, kUncompressed) & kCompressionMask;
    state.Key = compression | (KeyOptions(file, image, compression) << kOptionShift);

    TiffFileInfo info{};
    GetTiffFileInfo(file, &info);
    state.ByteOrder = info.ByteOrder;

    state.FillOrder = TagValue(file, image, TIFF_TAG_FILL_ORDER, TIFF_FILL_MSB_FIRST);
    const bool known =
        state.FillOrder == TIFF_FILL_MSB_FIRST || state.FillOrder == TIFF_FILL_LSB_FIRST;
    return known ? TIFF_SUCCESS : TIFF_BAD_BIT_ORDER;
}

}  // namespace vellim
