// Painting a TIFF image line by line: the view is laid out, the context gets a mapping from pixels
// of the picture to those of the device, and each decoded line is drawn through the bitmap of one
// line as it comes. Memory is taken for that bitmap and a work block, whatever the picture's size.
#include "screen/screen_driver.h"

#include <algorithm>
#include <utility>

#include "bridge/dib.h"
#include "bridge/dib_palettes.h"
#include "container/failure.h"
#include "container/open_tiff.h"
#include "container/sizes.h"
#include "platform/graphics/graphics_guards.h"
#include "platform/guards.h"
#include "screen/line_device.h"
#include "screen/line_ranges.h"
#include "screen/screen_view.h"
#include "vellim/decode.h"
#include "vellim/queries.h"
#include "vellim/screen.h"
#include "vellim/tags.h"
#include "vellim/windows.h"

namespace vellim {
namespace {

constexpr uint16_t kRgbBits = 24;

// By quarter turns.
constexpr LineCallback kMonoFlushers[] = {FlushMonoLineToScreen, FlushMonoRotLineToScreen,
                                          FlushMonoRot18LineToScreen, FlushMonoRot27LineToScreen};
constexpr LineCallback kIndexedFlushers[] = {FlushRGBLineToScreen, FlushRGBRotLineToScreen,
                                             FlushRGBRot18LineToScreen, FlushRGBRot27LineToScreen};
constexpr LineCallback kRgbFlushers[] = {FlushRGB24LineToScreen, FlushRGB24RotLineToScreen,
                                         FlushRGB24Rot18LineToScreen, FlushRGB24Rot27LineToScreen};

LineCallback FlusherFor(uint16_t bits, uint32_t flags) {
    const uint32_t turns = flags & VIEW_TURN_MASK;
    if (bits == 1) return kMonoFlushers[turns];
    return bits == kRgbBits ? kRgbFlushers[turns] : kIndexedFlushers[turns];
}

// Makes `view` and the context of its line bitmap those that the line functions read, for the
// length of a scope.
class PaintUnderWay {
  public:
    PaintUnderWay(const ViewLayout& view, DeviceContextHandle lineContext)
        : before_(std::exchange(ThreadScreenView(), {view, lineContext})) {}
    ~PaintUnderWay() { ThreadScreenView() = before_; }
    PaintUnderWay(const PaintUnderWay&) = delete;
    PaintUnderWay& operator=(const PaintUnderWay&) = delete;

  private:
    ScreenView before_;
};

PictureSize SizeOf(const BITMAPINFOHEADER& header) {
    return {header.biWidth, header.biHeight, DotsPerInch(header.biXPelsPerMeter),
            DotsPerInch(header.biYPelsPerMeter)};
}

// Room for a turned line: one entry of 4 bytes a pixel, or a row the other way round.
std::optional<uint32_t> ScratchBytes(const BITMAPINFOHEADER& header, uint32_t flags) {
    constexpr int64_t entryBytes = 4;
    constexpr int64_t spare = 64;
    if ((flags & VIEW_TURN_MASK) == 0) return 0;
    if (!RowsStayRows(flags)) return CheckedSize(header.biWidth, entryBytes, spare);
    const auto rowBytes = StoredRowBytes(header.biWidth, header.biBitCount);
    return rowBytes ? CheckedSize(*rowBytes, 1, spare) : std::nullopt;
}

// One bit a pixel is drawn by its bits; all else comes in the display's own format.
uint32_t LineBits(const BITMAPINFOHEADER& header, DeviceContextHandle context) {
    if (header.biBitCount == 1) return 1;
    return static_cast<uint32_t>(GetDeviceCaps(context, PLANES) *
                                 GetDeviceCaps(context, BITSPIXEL));
}

// Bytes of a one-line row on a 2-byte boundary; of one bit turned, those of a bitmap of one column.
uint32_t LineBytesOf(const BITMAPINFOHEADER& header, uint32_t flags) {
    constexpr uint64_t columnRowBytes = 2;
    constexpr uint64_t wordBits = 16;
    const auto width = static_cast<uint64_t>(header.biWidth);
    if (header.biBitCount == 1 && !RowsStayRows(flags))
        return static_cast<uint32_t>(width * columnRowBytes);
    return static_cast<uint32_t>((header.biBitCount * width + wordBits - 1) / wordBits * 2);
}

std::optional<uint32_t> PhotometricOf(TiffFileHandle file, int32_t image) {
    uint32_t photometric = 0;
    const bool isThere = GetTiffImageInfo(file, image, TIFF_TAG_PHOTOMETRIC, &photometric) != 0;
    return isThere ? std::optional(photometric) : std::nullopt;
}

// Makes of a description what one SetDIBits is to take: its colours become the entries of the
// palette, so that none has to be looked for, and its size that of a row or a column.
uint32_t DescribeOneLine(BITMAPINFOHEADER* header, uint32_t blockBytes, uint32_t flags) {
    const auto colorUse = static_cast<uint32_t>(MakeDibPaletteIndices(header, blockBytes));
    if (RowsStayRows(flags)) {
        header->biHeight = 1;
    } else {
        header->biHeight = std::exchange(header->biWidth, 1);
    }
    return colorUse;
}

// What the paint covers, in the picture's units: what of the view's place the lines reached.
RECT PaintedArea(DeviceContextHandle context, const ViewLayout& view, uint32_t flags) {
    const RECT& paint = view.PaintRect;
    POINT corners[] = {{paint.left, paint.top}, {paint.right, paint.bottom}};
    if ((flags & VIEW_FIT) == 0) DPtoLP(context, corners, 2);
    const RECT lines = CoverOfLines(flags, view.ImageRect, view.SourceRect);
    return {corners[0].x, corners[0].y, std::min(corners[1].x, lines.right),
            std::min(corners[1].y, lines.bottom)};
}

// What a paint is asked for.
struct PaintRequest {
    WindowHandle Window;
    DeviceContextHandle Context;
    const ZoomRatios* Zoom;
    uint32_t Flags;
};

// The record of the line functions; the description becomes that of one line.
ScreenLineContext LineContextFor(const PaintRequest& request, const LockedBlock& description,
                                 GlobalHandle descriptionBlock, const LineDevice& device,
                                 std::optional<uint32_t> photometric) {
    const BITMAPINFOHEADER picture = *description.As<BITMAPINFOHEADER>();
    ScreenLineContext line{};
    line.DeviceContext = request.Context;
    line.LineBitmap = device.Bitmap();
    line.HeaderBlock = descriptionBlock;
    line.RowPixels = static_cast<uint32_t>(picture.biWidth);
    line.LineBytes = LineBytesOf(picture, request.Flags);
    line.ColorUse =
        DescribeOneLine(description.As<BITMAPINFOHEADER>(), description.Size(), request.Flags);
    line.Header = description.As<BITMAPINFO>();
    line.RasterOp = LineOperation(picture.biBitCount, photometric, request.Flags);
    line.Scratch = device.Scratch();
    return line;
}

bool PaintDescribed(TiffFileHandle file, int32_t image, const PaintRequest& request,
                    GlobalHandle description) {
    const auto [window, context, zoom, flags] = request;
    const OwnedObject palette(CreateDibPalette(description));
    if (palette) SelectPalette(context, palette.Get(), 0);
    RealizePalette(context);
    const LockedBlock block(description);
    if (!block) return Fail(TIFF_NO_MEMORY, false);
    const BITMAPINFOHEADER picture = *block.As<BITMAPINFOHEADER>();
    if (!WithinSizeLimits(picture.biWidth, picture.biHeight)) return Fail(TIFF_NO_MEMORY, false);
    SetStretchBltMode(context, picture.biBitCount == 1 ? WHITEONBLACK : COLORONCOLOR);
    const LineDevice device(picture.biWidth, RowsStayRows(flags), LineBits(picture, context),
                            ScratchBytes(picture, flags));
    if (!device) return Fail(TIFF_NO_MEMORY, false);

    const ViewLayout view = LayOutInWindow(SizeOf(picture), window, context, zoom, flags);
    const bool isSeen = MapPicture(context, view);
    const SelectedPalette selected(device.Context(), palette.Get());
    const ScreenLineContext line =
        LineContextFor(request, block, description, device, PhotometricOf(file, image));
    {
        // In a view without a size no line function finds a paint to take part in.
        const PaintUnderWay painting(view, isSeen ? device.Context() : 0);
        DecodeTiffImage(file, image, 0, 0, reinterpret_cast<uintptr_t>(&line),
                        FlusherFor(picture.biBitCount, flags));
    }
    const bool isWhole = TiffError() == TIFF_SUCCESS;
    const RECT painted = isSeen ? PaintedArea(context, view, flags) : RECT{};
    EraseAround(window, context, InPixels(context, painted));
    MapPicture(context, view);
    ValidateRect(window, nullptr);
    return isWhole;
}

}  // namespace

int32_t PaintTiffImage(TiffFileHandle file, int32_t image, WindowHandle window,
                       DeviceContextHandle context, const ZoomRatios* zoom, uint32_t flags) {
    const OwnedBlock description(GetTiffRGBQuad(file, image));
    if (!description) return 0;
    return PaintDescribed(file, image, {window, context, zoom, flags}, description.Get()) ? 1 : 0;
}

std::optional<PictureSize> SizeOfTiffImage(TiffFileHandle file, int32_t image) {
    TiffDimensions dimensions{};
    if (GetTiffDimensions(file, image, &dimensions) != 0) return std::nullopt;
    if (!WithinSizeLimits(dimensions.biWidth, dimensions.biHeight))
        return Fail(TIFF_NO_MEMORY, std::nullopt);
    return SizeOf(dimensions);
}

}  // namespace vellim

int32_t DecompressTiffToScreen(WindowHandle window, DeviceContextHandle dc, const char* fileName,
                               int32_t imageIndex, const ZoomRatios* zoom, uint32_t flags) {
    using namespace vellim;
    if (fileName == nullptr || *fileName == '\0' || !IsPaintable(window, dc)) return 0;
    std::optional<WaitCursor> wait;  // put back once the file is closed
    const OpenTiff file(fileName, T_READ);
    if (!file || GetTiffImage(file.Get(), imageIndex) == 0) return 0;
    wait.emplace();
    return PaintTiffImage(file.Get(), imageIndex, window, dc, zoom, flags);
}
