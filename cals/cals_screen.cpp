// A CALS picture painted straight from its file, in the views of TIFF images. Nothing of a paint is
// kept outside its own call.
#include <algorithm>
#include <optional>

#include "bridge/dib_palettes.h"
#include "cals/cals_image.h"
#include "cals/cals_screen.h"
#include "container/failure.h"
#include "container/sizes.h"
#include "container/streams.h"
#include "screen/line_device.h"
#include "screen/line_ranges.h"

namespace vellim {
namespace {

constexpr uint32_t kWhiteIsZero = 0;  // Photometric, as a TIFF image of the same bits would have it

// By quarter turns.
constexpr LineCallback kFlushers[] = {FlushCALSLineToScreen, FlushCALS90LineToScreen,
                                      FlushCALS180LineToScreen, FlushCALS270LineToScreen};

PictureSize SizeOf(const CalsInfo& info) {
    const auto dpi = static_cast<float>(info.rdensty);
    return {info.rpelcnt[0], info.rpelcnt[1], dpi, dpi};
}

// Bytes of the line bitmap: of a row on a 2-byte boundary, or of a column of such rows.
uint32_t LineBytesOf(const RECT& image, uint32_t flags) {
    const auto right = static_cast<uint32_t>(image.right);
    return RowsStayRows(flags) ? (right + 15) / 16 * 2 : static_cast<uint32_t>(image.bottom) * 2;
}

CalsScreenContext ContextFor(const ViewLayout& view, DeviceContextHandle context,
                             const LineDevice& device, uint32_t rowPixels, uint32_t flags) {
    CalsScreenContext line{};
    line.LineBitmap = device.Bitmap();
    line.DeviceContext = context;
    line.LineDC = device.Context();
    line.ImageRect = view.ImageRect;
    line.DestRect = view.DestRect;
    line.SourceRect = view.SourceRect;
    line.PaintRect = view.PaintRect;
    line.LineBytes = LineBytesOf(view.ImageRect, flags);
    line.Scratch = device.Scratch();
    line.RasterOp = LineOperation(1, kWhiteIsZero, flags);
    line.RowPixels = rowPixels;
    return line;
}

// What of the view's place the lines reached, in pixels of the device. The mapping is still that of
// the picture.
RECT PaintedArea(DeviceContextHandle context, const ViewLayout& view, uint32_t flags) {
    if ((flags & VIEW_FIT) != 0) return view.ClientRect;
    const RECT lines = InPixels(context, CoverOfLines(flags, view.ImageRect, view.SourceRect));
    const RECT& paint = view.PaintRect;
    return {paint.left, paint.top, std::min(paint.right, lines.right),
            std::min(paint.bottom, lines.bottom)};
}

PaletteHandle PaletteOf(const CalsInfo& info) {
    const CalsDescription description = DescribeCalsImage(info);
    return CreatePaletteFromHeader(&description.Header, sizeof description);
}

bool PaintCalsImage(const char* path, const CalsInfo& info, WindowHandle window,
                    DeviceContextHandle context, const ZoomRatios* zoom, uint32_t flags) {
    constexpr int64_t entryBytes = 4;
    constexpr int64_t spare = 1000;
    const auto [width, height] = info.rpelcnt;
    if (!WithinSizeLimits(width, height)) return Fail(TIFF_NO_MEMORY, false);
    const OwnedObject palette(PaletteOf(info));
    if (palette) SelectPalette(context, palette.Get(), 0);
    RealizePalette(context);
    SetStretchBltMode(context, WHITEONBLACK);
    const LineDevice device(width, RowsStayRows(flags), 1, CheckedSize(width, entryBytes, spare));
    if (!device) return Fail(TIFF_NO_MEMORY, false);
    const ViewLayout view = LayOutInWindow(SizeOf(info), window, context, zoom, flags);
    const SelectedPalette selected(device.Context(), palette.Get());
    const OpenStream file(OpenFile(path, nullptr, OF_READ));
    if (!file) return Fail(TIFF_IO_ERROR, false);

    CalsScreenContext line = ContextFor(view, context, device, static_cast<uint32_t>(width), flags);
    // In a view without a size there is nothing to draw on.
    const bool isSeen = MapPicture(context, view);
    if (!isSeen) line.DeviceContext = 0;
    const bool isWhole = DecodeCalsImage(file.Get(), info, reinterpret_cast<uintptr_t>(&line),
                                         kFlushers[flags & VIEW_TURN_MASK]) != 0;
    const RECT painted = isSeen ? PaintedArea(context, view, flags) : RECT{};
    EraseAround(window, context, painted);
    return isWhole;
}

}  // namespace

std::optional<PictureSize> SizeOfCalsImage(const char* path) {
    CalsInfo info{};
    if (ReadCALSInfo(path, &info) == 0) return std::nullopt;
    if (!WithinSizeLimits(info.rpelcnt[0], info.rpelcnt[1]))
        return Fail(TIFF_NO_MEMORY, std::nullopt);
    return SizeOf(info);
}

}  // namespace vellim

int32_t DecompressCALSToScreen(WindowHandle window, DeviceContextHandle dc, const char* fileName,
                               const ZoomRatios* zoom, uint32_t flags) {
    using namespace vellim;
    CalsInfo info{};
    if (!IsPaintable(window, dc) || ReadCALSInfo(fileName, &info) == 0) return 0;
    return PaintCalsImage(fileName, info, window, dc, zoom, flags) ? 1 : 0;
}
