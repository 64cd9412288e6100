#include "container/jpeg_tables.h"

#include <numeric>
#include <span>

#include "vellim/tags.h"

namespace vellim {

uint32_t JpegTableBytes(StreamWindow& window, uint32_t tag, uint32_t offset) {
    constexpr uint32_t kQuantisationBytes = 64;
    constexpr uint32_t kCodeLengths = 16;
    if (tag == TIFF_TAG_JPEG_Q_TABLES) return kQuantisationBytes;
    const uint8_t* counts = window.At(offset, kCodeLengths);
    if (counts == nullptr) return kCodeLengths;
    const std::span<const uint8_t> lengths(counts, kCodeLengths);
    return std::accumulate(lengths.begin(), lengths.end(), kCodeLengths);
}

}  // namespace vellim
