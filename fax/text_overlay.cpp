// A given text drawn on a copy of a bitmap or DIB.
#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <string_view>

#include "bridge/dib_bitmaps.h"
#include "bridge/dib_palettes.h"
#include "container/sizes.h"
#include "fax/fax_font.h"
#include "fax/page_geometry.h"
#include "platform/graphics/graphics_guards.h"
#include "platform/guards.h"
#include "vellim/fax.h"

namespace vellim {
namespace {

constexpr int32_t kFarthest = std::numeric_limits<int32_t>::max();

struct Dpi {
    uint32_t x, y;
};

// What is drawn, and where on the screen.
struct OverlayText {
    int32_t x, y;
    const char* text;
    const char* fontName;
    int32_t pointSize;
};

std::optional<BITMAP> RecordOf(BitmapHandle bitmap) {
    BITMAP record{};
    if (GetObjectA(bitmap, sizeof record, &record) != sizeof record) return std::nullopt;
    return record;
}

BitmapHandle CopyBitmap(BitmapHandle bitmap) {
    auto record = RecordOf(bitmap);
    if (!record) return 0;
    const auto bytes = CheckedSize(record->bmWidthBytes, record->bmHeight);
    if (!bytes || *bytes > uint32_t{kFarthest}) return 0;
    GlobalCompact(*bytes);
    const OwnedBlock copied(GlobalAlloc(GHND, *bytes));
    const LockedBlock bits(copied.Get());
    const auto wanted = static_cast<int32_t>(*bytes);
    if (!bits || GetBitmapBits(bitmap, wanted, bits.As<void>()) != wanted) return 0;
    record->bmBits = bits.As<void>();
    return CreateBitmapIndirect(&*record);
}

// A place on the screen as one on the image: the same for an image of the screen's resolution, or
// of one that isn't known.
int32_t Scaled(int32_t place, uint32_t resolution, int32_t screens) {
    if (resolution == 0 || screens <= 0) return place;
    const double nearest = std::floor(static_cast<double>(place) * resolution / screens + 0.5);
    return static_cast<int32_t>(std::clamp<double>(nearest, -kFarthest, kFarthest));
}

POINT PenOn(DeviceContextHandle context, const OverlayText& overlay, const Dpi& image) {
    return {Scaled(overlay.x, image.x, GetDeviceCaps(context, LOGPIXELSX)),
            Scaled(overlay.y, image.y, GetDeviceCaps(context, LOGPIXELSY))};
}

int64_t LineStep(DeviceContextHandle context) {
    TEXTMETRIC metrics{};
    if (GetTextMetricsA(context, &metrics) == 0) return 0;
    return std::max<int64_t>(int64_t{metrics.tmHeight} + metrics.tmExternalLeading, 0);
}

// The part of the bitmap that is right of the pen and below it.
RECT ClipFrom(POINT pen, const BITMAP& bitmap) {
    return {std::max(pen.x, 0), std::max(pen.y, 0), bitmap.bmWidth, bitmap.bmHeight};
}

// A line end of two bytes moves the pen one line, and so does a line feed before another; one byte
// alone moves nothing.
void DrawLines(DeviceContextHandle context, POINT pen, const BITMAP& bitmap,
               std::string_view text) {
    constexpr std::string_view lineEnds = "\r\n";
    const int64_t step = LineStep(context);
    while (!text.empty()) {
        const RECT clip = ClipFrom(pen, bitmap);
        if (IsRectEmpty(&clip) != 0) return;
        const std::string_view line = text.substr(0, text.find_first_of(lineEnds));
        if (!line.empty()) {
            const auto count = static_cast<uint32_t>(std::min<size_t>(line.size(), kFarthest));
            ExtTextOutA(context, pen.x, pen.y, ETO_CLIPPED, &clip, line.data(), count, nullptr);
        }
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        if (text.starts_with('\n'))
            pen.y = static_cast<int32_t>(std::min<int64_t>(pen.y + step, kFarthest));
    }
}

// Whether the bitmap has the text now, or there is no room for any from the pen on.
bool DrawTextOnBitmap(BitmapHandle bitmap, const OverlayText& overlay, const Dpi& image) {
    const auto record = RecordOf(bitmap);
    if (!record) return false;
    const ScopedContext context(ScopedContext::Kind::Memory);
    const SelectedObject page(context.Get(), bitmap);
    if (!page) return false;
    const OwnedObject font(CreateOverlayFont(overlay.fontName, overlay.pointSize, image.y));
    const SelectedObject selectedFont(context.Get(), font.Get());
    SetBkMode(context.Get(), TRANSPARENT);
    DrawLines(context.Get(), PenOn(context.Get(), overlay, image), *record, overlay.text);
    return true;
}

bool IsWhole(const OverlayText& overlay) {
    return overlay.text != nullptr && overlay.fontName != nullptr;
}

// Whole dots an inch; 0 for a header that tells none.
uint32_t DotsPerInch(int32_t dotsPerMeter) {
    constexpr double metersPerInch = 0.025400050800101603;
    return static_cast<uint32_t>(std::max(dotsPerMeter, 0) * metersPerInch);
}

std::optional<Dpi> DpiOf(DibHandle dib) {
    const LockedBlock block(dib);
    if (!block || block.Size() < sizeof(BITMAPINFOHEADER)) return std::nullopt;
    const auto* header = block.As<BITMAPINFOHEADER>();
    return Dpi{DotsPerInch(header->biXPelsPerMeter), DotsPerInch(header->biYPelsPerMeter)};
}

BitmapHandle OverlayBitmap(BitmapHandle bitmap, const OverlayText& overlay, const Dpi& image) {
    if (!IsWhole(overlay)) return 0;
    OwnedObject copy(CopyBitmap(bitmap));
    return copy && DrawTextOnBitmap(copy.Get(), overlay, image) ? copy.Release() : 0;
}

DibHandle OverlayDib(DibHandle dib, const OverlayText& overlay) {
    const auto image = DpiOf(dib);
    if (!image || !IsWhole(overlay)) return 0;
    const OwnedObject bitmap(DibToBitmap(dib));
    const OwnedObject palette(CreateDibPalette(dib));
    if (!bitmap || !DrawTextOnBitmap(bitmap.Get(), overlay, *image)) return 0;
    OwnedBlock drawn(BitmapToDib(bitmap.Get(), palette.Get()));
    {
        const LockedBlock block(drawn.Get());
        if (!block) return 0;
        auto* header = block.As<BITMAPINFOHEADER>();
        header->biXPelsPerMeter = DotsPerMeter(image->x);
        header->biYPelsPerMeter = DotsPerMeter(image->y);
    }
    return drawn.Release();
}

}  // namespace
}  // namespace vellim

BitmapHandle BitmapTextOverlay(BitmapHandle bitmap, int32_t x, int32_t y, const char* text,
                               const char* fontName, int32_t pointSize, uint32_t xResolution,
                               uint32_t yResolution) {
    const vellim::WaitCursor wait;
    return vellim::OverlayBitmap(bitmap, {x, y, text, fontName, pointSize},
                                 {xResolution, yResolution});
}

DibHandle DIBTextOverlay(DibHandle dib, int32_t x, int32_t y, const char* text,
                         const char* fontName, int32_t pointSize) {
    const vellim::WaitCursor wait;
    return vellim::OverlayDib(dib, {x, y, text, fontName, pointSize});
}
