#include "cals/cals_image.h"

#include "bridge/dib.h"
#include "cals/density.h"
#include "vellim/streams.h"

namespace vellim {

CalsDescription DescribeCalsImage(const CalsInfo& info) {
    CalsDescription description{.Header = {}, .Colors = {{255, 255, 255, 0}, {0, 0, 0, 0}}};
    InitDibHeader(&description.Header, info.rpelcnt[0], info.rpelcnt[1], 1);
    description.Header.biXPelsPerMeter = PixelsPerMetre(info.rdensty);
    description.Header.biYPelsPerMeter = description.Header.biXPelsPerMeter;
    return description;
}

// The decoder moves to data within the file alone. Behind a header without data it has to stand at
// the file's end, which fails with 6, lest it take the header's own bytes for code.
int32_t DecodeCalsImage(StreamHandle file, const CalsInfo& info, uintptr_t callbackData,
                        LineCallback callback) {
    mSeek(file, CALS_HEADER_BYTES, 0);
    return DecodeCcittImageFrom(file, CALS_HEADER_BYTES, info.rpelcnt[0], info.rpelcnt[1],
                                TIFF_KEY_GROUP4, TIFF_FILL_MSB_FIRST, TIFF_LITTLE_ENDIAN,
                                callbackData, callback);
}

}  // namespace vellim
