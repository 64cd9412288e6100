#include "bridge/bitmap_pixels.h"

#include <utility>

#include "container/failure.h"
#include "platform/guards.h"
#include "vellim/encode.h"

namespace vellim {
namespace {

// The line function of one bit inverts what it gets by the colours of the header. With the two
// exchanged, the bits land as the image's Photometric says.
void PrepareForInversion(BITMAPINFO* info) {
    RGBQUAD* colors = info->bmiColors;
    std::swap(colors[0], colors[1]);
}

}  // namespace

bool EncodeBitmap(const AppendedImage& image, BitmapHandle bitmap, DeviceContextHandle context,
                  DibHandle description) {
    const LockedBlock block(description);
    if (!block) return Fail(TIFF_NO_MEMORY, false);
    auto* header = block.As<BITMAPINFOHEADER>();
    const bool isOneBit = header->biBitCount == 1;
    if (isOneBit) PrepareForInversion(block.As<BITMAPINFO>());

    SaveLineContext lines{};
    lines.DeviceContext = context;
    lines.Bitmap = bitmap;
    lines.HeaderBlock = description;
    lines.Header = header;
    lines.StrideOrUsage = DIB_RGB_COLORS;
    const LineCallback callback = isOneBit ? DllFillMonoTiffLine : DllFillTiffLine;
    const auto data = reinterpret_cast<uintptr_t>(&lines);
    return EncodeTiffImage(image.File(), image.Index(), data, callback) != 0;
}

}  // namespace vellim
