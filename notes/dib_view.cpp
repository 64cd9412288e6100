// Scales and densities are kept as floats, everything else is worked out in double precision: sizes
// come out as they always have.
#include "notes/dib_view.h"

#include <algorithm>
#include <bit>

#include "notes/numbers.h"
#include "vellim/platform.h"
#include "vellim/windows.h"

namespace vellim {
namespace {

// 1 / 39.37 rounded up: the nearest float is one step less, and would give other sizes.
constexpr float kMetresPerInch = 0.02540005185F;
static_assert(std::bit_cast<uint32_t>(kMetresPerInch) == 0x3CD013C5);

// An axis of the image and the device that it is shown on.
struct Axis {
    int32_t pixels;
    float deviceDpi;
    float imageDpi;

    [[nodiscard]] int32_t RealSize() const {
        return Rounded(double(pixels) / imageDpi * deviceDpi);
    }
};

// An image without a density has that of the device, and so a scale of 1. Any number above 0 is
// one.
Axis AxisOf(int32_t pixels, int32_t deviceDpi, int32_t pixelsPerMetre) {
    const auto device = static_cast<float>(deviceDpi);
    const auto image = static_cast<float>(double(pixelsPerMetre) * kMetresPerInch);
    return {pixels, device, image <= 0 ? device : image};
}

Axis HorizontalAxis(DeviceContextHandle context, const BITMAPINFOHEADER& header) {
    return AxisOf(header.biWidth, GetDeviceCaps(context, LOGPIXELSX), header.biXPelsPerMeter);
}

Axis VerticalAxis(DeviceContextHandle context, const BITMAPINFOHEADER& header) {
    return AxisOf(header.biHeight, GetDeviceCaps(context, LOGPIXELSY), header.biYPelsPerMeter);
}

float ScaleOf(const Axis& axis, int32_t numerator, int32_t denominator) {
    const auto real = static_cast<float>(double{axis.deviceDpi} / axis.imageDpi);
    if (numerator == 0 || denominator == 0) return real;
    return static_cast<float>(static_cast<double>(numerator) / denominator * real);
}

// What a bar uncovers or covers is part of the paint under way, so nothing is left to be painted
// again for its sake.
RECT ClientWithBar(WindowHandle window, int32_t bar, bool shown) {
    RECT client{};
    ShowScrollBar(window, bar, shown ? 1 : 0);
    ValidateRect(window, nullptr);
    GetClientRect(window, &client);
    return client;
}

struct Span {
    int32_t from;
    int32_t to;
};

// The position runs over the whole image; what can be scrolled is the part of it that the window
// has no room for. A position outside the image counts as its edge.
Span VisibleSpan(int32_t size, int32_t client, int32_t position) {
    if (client >= size) return {0, size};
    const int32_t hidden = size - client;
    const double share = double(hidden) / size;
    const int32_t from = std::clamp(Rounded(share * position), 0, hidden);
    return {from, from + client};
}

RECT Moved(RECT rect, int64_t x, int64_t y) {
    OffsetRect(&rect, Narrowed(x), Narrowed(y));
    return rect;
}

RECT Common(const RECT& a, const RECT& b) {
    RECT both{};
    IntersectRect(&both, &a, &b);
    return both;
}

RECT Scaled(const RECT& rect, double x, double y) {
    return {Rounded(rect.left * x), Rounded(rect.top * y), Rounded(rect.right * x),
            Rounded(rect.bottom * y)};
}

RECT Unscaled(const RECT& rect, double x, double y) {
    return {Rounded(rect.left / x), Rounded(rect.top / y), Rounded(rect.right / x),
            Rounded(rect.bottom / y)};
}

}  // namespace

DibView FitDib(WindowHandle window, DeviceContextHandle context, const BITMAPINFOHEADER& header) {
    const RECT client = ClientWithBar(window, SB_BOTH, false);
    const int32_t width = HorizontalAxis(context, header).RealSize();
    const int32_t height = VerticalAxis(context, header).RealSize();
    const double scale = std::min(double(client.right) / width, double(client.bottom) / height);
    DibView view;
    view.Source = {0, 0, header.biWidth, header.biHeight};
    view.WorkWidth = Rounded(scale * width);
    view.WorkHeight = Rounded(scale * height);
    view.Place = Common(client, view.Source);
    return view;
}

DibView ScrollDib(WindowHandle window, DeviceContextHandle context, const BITMAPINFOHEADER& header,
                  const ScrollRecord* scroll, const ZoomRatios* zoom) {
    const ScrollRecord at = scroll != nullptr ? *scroll : ScrollRecord{};
    const ZoomRatios ratios = zoom != nullptr ? *zoom : ZoomRatios{};
    DibView view;
    view.ScaleX = ScaleOf(HorizontalAxis(context, header), ratios.XNumerator, ratios.XDenominator);
    view.ScaleY = ScaleOf(VerticalAxis(context, header), ratios.YNumerator, ratios.YDenominator);
    const double x = view.ScaleX, y = view.ScaleY;
    const int32_t width = Rounded(header.biWidth * x), height = Rounded(header.biHeight * y);

    RECT client{};
    GetClientRect(window, &client);
    client = ClientWithBar(window, SB_HORZ, client.right < width);
    client = ClientWithBar(window, SB_VERT, client.bottom < height);
    const Span across = VisibleSpan(width, client.right, Rounded(at.Horizontal * x));
    const Span down = VisibleSpan(height, client.bottom, Rounded(at.Vertical * y));
    const RECT shown = {across.from, down.from, across.to, down.to};

    view.Place = Moved(Common(Moved(client, shown.left, shown.top), shown), -int64_t{shown.left},
                       -int64_t{shown.top});
    view.Source = Unscaled(shown, x, y);
    view.WorkWidth = header.biWidth;
    view.WorkHeight = header.biHeight;
    return view;
}

RECT PlaceInView(const DibView& view, const RECT& box) {
    const RECT shown = Scaled(view.Source, view.ScaleX, view.ScaleY);
    const RECT seen = Common(Common(shown, box), Moved(view.Place, shown.left, shown.top));
    return Moved(seen, -int64_t{shown.left}, -int64_t{shown.top});
}

}  // namespace vellim
