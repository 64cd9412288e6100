// Arithmetic on sizes that come from files, and the largest image that the library takes on.

#include <algorithm>
#include <atomic>
#include <limits>

#include "container/sizes.h"
#include "vellim/files.h"

namespace vellim {
namespace {

constexpr uint32_t kDefaultLinePixels = 1U << 20;
constexpr uint32_t kDefaultPictureLines = 1U << 24;
constexpr uint32_t kHighestLimit = 1U << 28;  // positions in a line and in its codes fit 31 bits

std::atomic<uint32_t> linePixelLimit = kDefaultLinePixels;
std::atomic<uint32_t> pictureLineLimit = kDefaultPictureLines;

// The bits of one line, or nothing when they can't be counted.
std::optional<int64_t> LineBits(int64_t width, int64_t bits) {
    int64_t lineBits = 0;
    if (width < 0 || bits < 0 || __builtin_mul_overflow(width, bits, &lineBits))
        return std::nullopt;
    return lineBits;
}

// `lineBits` in whole units of `unitBits`, as bytes, if that fits 31 bits.
std::optional<uint32_t> BytesInUnits(std::optional<int64_t> lineBits, int64_t unitBits) {
    if (!lineBits) return std::nullopt;
    const int64_t units = *lineBits / unitBits + (*lineBits % unitBits != 0 ? 1 : 0);
    const int64_t unitBytes = unitBits / 8;
    if (units > std::numeric_limits<int32_t>::max() / unitBytes) return std::nullopt;
    return static_cast<uint32_t>(units * unitBytes);
}

}  // namespace

std::optional<uint32_t> PackedRowBytes(int64_t width, int64_t bits) {
    return BytesInUnits(LineBits(width, bits), 8);
}

std::optional<uint32_t> StoredRowBytes(int64_t width, int64_t bits) {
    return BytesInUnits(LineBits(width, bits), 32);
}

std::optional<uint32_t> CheckedSize(int64_t a, int64_t b, int64_t c) {
    int64_t size = 0;
    if (a < 0 || b < 0 || __builtin_mul_overflow(a, b, &size) ||
        __builtin_add_overflow(size, c, &size))
        return std::nullopt;
    if (size < 0 || size > std::numeric_limits<uint32_t>::max()) return std::nullopt;
    return static_cast<uint32_t>(size);
}

bool WithinSizeLimits(int32_t width, int32_t height) {
    return width >= 0 && height >= 0 && static_cast<uint32_t>(width) <= linePixelLimit &&
           static_cast<uint32_t>(height) <= pictureLineLimit;
}

}  // namespace vellim

using namespace vellim;

void SetTiffSizeLimits(uint32_t linePixels, uint32_t pictureLines) {
    if (linePixels != 0) linePixelLimit = std::min(linePixels, kHighestLimit);
    if (pictureLines != 0) pictureLineLimit = std::min(pictureLines, kHighestLimit);
}

void GetTiffSizeLimits(uint32_t* linePixels, uint32_t* pictureLines) {
    if (linePixels != nullptr) *linePixels = linePixelLimit;
    if (pictureLines != nullptr) *pictureLines = pictureLineLimit;
}
