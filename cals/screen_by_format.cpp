// One way in for pictures of either kind: the file tells which it is.
#include <array>

#include "cals/cals_screen.h"
#include "container/open_tiff.h"
#include "container/streams.h"
#include "platform/guards.h"
#include "screen/screen_driver.h"
#include "vellim/cals.h"
#include "vellim/screen.h"
#include "vellim/tags.h"

namespace vellim {
namespace {

// By the byte order mark alone; all else is for OpenTiffFile to say.
bool IsTiffFile(const char* path) {
    const OpenStream file(OpenFile(path, nullptr, OF_READ));
    std::array<uint8_t, 2> mark{};
    if (!file || mRead(file.Get(), mark.data(), mark.size()) != mark.size()) return false;
    const int32_t order = mark[0] | mark[1] << 8;
    return order == TIFF_LITTLE_ENDIAN || order == TIFF_BIG_ENDIAN;
}

// SCREEN_FORMAT_ANY for a file of neither kind.
int32_t FormatOf(int32_t format, const char* path) {
    if (format != SCREEN_FORMAT_ANY) return format;
    if (IsTiffFile(path)) return SCREEN_FORMAT_TIFF;
    const OwnedBlock header(ReadCALSHead(path));
    return header ? SCREEN_FORMAT_CALS : SCREEN_FORMAT_ANY;
}

std::optional<PictureSize> SizeOfPicture(int32_t format, const char* path, int32_t imageIndex) {
    switch (FormatOf(format, path)) {
        case SCREEN_FORMAT_TIFF: {
            const OpenTiff file(path, T_READ);
            if (!file || GetTiffImage(file.Get(), imageIndex) == 0) return std::nullopt;
            return SizeOfTiffImage(file.Get(), imageIndex);
        }
        case SCREEN_FORMAT_CALS:
            return SizeOfCalsImage(path);
        default:
            return std::nullopt;
    }
}

}  // namespace
}  // namespace vellim

int32_t DecompressToScreen(int32_t format, WindowHandle window, DeviceContextHandle dc,
                           const char* fileName, int32_t imageIndex, const ZoomRatios* zoom,
                           uint32_t flags) {
    switch (vellim::FormatOf(format, fileName)) {
        case SCREEN_FORMAT_TIFF:
            return DecompressTiffToScreen(window, dc, fileName, imageIndex, zoom, flags);
        case SCREEN_FORMAT_CALS:
            return DecompressCALSToScreen(window, dc, fileName, zoom, flags);
        default:
            return 0;
    }
}

int32_t GetScreenViewSize(int32_t format, WindowHandle window, DeviceContextHandle dc,
                          const char* fileName, int32_t imageIndex, const ZoomRatios* zoom,
                          uint32_t flags, RECT* size) {
    using namespace vellim;
    if (size == nullptr || !IsPaintable(window, dc)) return 0;
    const std::optional<PictureSize> picture = SizeOfPicture(format, fileName, imageIndex);
    if (!picture) return 0;
    *size = SizeInWindow(*picture, window, dc, zoom, flags);
    return 1;
}
