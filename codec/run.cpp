#include "codec/run.h"

#include "container/failure.h"
#include "container/sizes.h"
#include "vellim/queries.h"
#include "vellim/streams.h"

namespace vellim {
namespace {

TiffDimensions BilevelDimensions(int32_t width, int32_t height) {
    TiffDimensions dimensions{};
    dimensions.biSize = sizeof(TiffDimensions);
    dimensions.biWidth = width;
    dimensions.biHeight = height;
    dimensions.biPlanes = 1;
    dimensions.biBitCount = 1;
    dimensions.biClrUsed = 2;
    dimensions.biClrImportant = 2;
    return dimensions;
}

uint32_t TakeDimensions(const TiffDimensions& dimensions, CodecState& state) {
    if (!WithinSizeLimits(dimensions.biWidth, dimensions.biHeight)) return TIFF_NO_MEMORY;
    const auto rowBytes = PackedRowBytes(dimensions.biWidth, dimensions.biBitCount);
    if (!rowBytes) return TIFF_NO_MEMORY;
    state.Dimensions = dimensions;
    state.RowBytes = *rowBytes;
    return TIFF_SUCCESS;
}

}  // namespace

uint32_t ReadDimensions(TiffFileHandle file, int32_t image, CodecState& state) {
    TiffDimensions dimensions{};
    const int32_t result = GetTiffDimensions(file, image, &dimensions);
    return result == TIFF_SUCCESS ? TakeDimensions(dimensions, state)
                                  : static_cast<uint32_t>(result);
}

uint32_t TakeBarePicture(int32_t width, int32_t height, CodecState& state) {
    const uint32_t result = TakeDimensions(BilevelDimensions(width, height), state);
    if (result != TIFF_SUCCESS) return result;
    state.RowsPerStrip = static_cast<uint32_t>(height);
    return TIFF_SUCCESS;
}

uint32_t FillOrderOrMsbFirst(uint32_t fillOrder) {
    return fillOrder == TIFF_FILL_LSB_FIRST ? TIFF_FILL_LSB_FIRST : TIFF_FILL_MSB_FIRST;
}

uint32_t ByteOrderOrLittleEndian(uint32_t byteOrder) {
    return byteOrder == TIFF_BIG_ENDIAN ? TIFF_BIG_ENDIAN : TIFF_LITTLE_ENDIAN;
}

int32_t FinishRun(uint32_t code) {
    StoreFailure(code);
    return code == TIFF_SUCCESS ? 1 : 0;
}

}  // namespace vellim
