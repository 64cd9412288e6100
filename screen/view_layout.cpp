#include "screen/view_layout.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

namespace vellim {
namespace {

// 1 / 39.37 rounded up: the nearest float is one step less, and would give other sizes.
constexpr float kMetresPerInch = 0.02540005185F;
static_assert(std::bit_cast<uint32_t>(kMetresPerInch) == 0x3CD013C5);

int32_t Narrowed(int64_t value) {
    using Limits = std::numeric_limits<int32_t>;
    return static_cast<int32_t>(std::clamp<int64_t>(value, Limits::min(), Limits::max()));
}

// Adds a half and drops the fraction, so that halves go towards the larger number.
int32_t Rounded(double value) {
    using Limits = std::numeric_limits<int32_t>;
    return static_cast<int32_t>(std::clamp<double>(value + 0.5, Limits::min(), Limits::max()));
}

RECT AtOrigin(int32_t right, int32_t bottom) {
    return {0, 0, right, bottom};
}

RECT MovedToOrigin(const RECT& rect) {
    return AtOrigin(Narrowed(int64_t{rect.right} - rect.left),
                    Narrowed(int64_t{rect.bottom} - rect.top));
}

RECT Turned(const ViewRequest& request) {
    const int32_t width = std::max(request.ImageWidth, 0);
    const int32_t height = std::max(request.ImageHeight, 0);
    const bool exchanged = !RowsStayRows(request.Flags);
    return {0, 0, exchanged ? height : width, exchanged ? width : height};
}

RECT AsClientRect(const RECT& area) {
    return AtOrigin(std::max(area.right, 0), std::max(area.bottom, 0));
}

// Real size, times the ratio. Where resolutions give no scale at all a pixel remains a pixel.
float AxisZoom(float deviceDpi, float imageDpi, int32_t numerator, int32_t denominator) {
    const double real = imageDpi == 0 ? 1 : deviceDpi / imageDpi;
    const bool hasRatio = numerator != 0 && denominator != 0;
    const double ratio = hasRatio ? static_cast<double>(numerator) / denominator : 1;
    const auto zoom = static_cast<float>(ratio * static_cast<float>(real));
    return std::isfinite(zoom) && zoom != 0 ? zoom : 1;
}

struct Span {
    int32_t From;
    int32_t To;
};

// The part of an axis that the client area shows. The bar's position lies within its range, so that
// the part ends within the picture.
Span VisibleSpan(int32_t zoomed, int32_t client, const BarState& bar) {
    if (zoomed <= client) return {0, zoomed};
    const int64_t range = int64_t{bar.Maximum} - bar.Minimum;
    if (range <= 0) return {0, client};
    const int64_t position = std::clamp<int64_t>(int64_t{bar.Position} - bar.Minimum, 0, range);
    const int32_t overflow = zoomed - client;
    const int32_t from = Rounded(double(overflow) * double(position) / double(range));
    return {from, from + client};
}

void FitWindow(const ViewWindow& window, ViewLayout& view) {
    view.ClientRect = AsClientRect(window.SetBars(window.Window, Bars::kBoth, false));
    view.ViewportX = view.ClientRect.right;
    view.ViewportY = view.ClientRect.bottom;
    view.ZoomX = static_cast<float>(view.ViewportX) / float(std::max(view.ImageRect.right, 1));
    view.ZoomY = static_cast<float>(view.ViewportY) / float(std::max(view.ImageRect.bottom, 1));
    view.SourceRect = view.DestRect = view.PaintRect = view.ImageRect;
    view.ZoomedRect = view.VisibleRect = view.ClientRect;
}

// A bar takes room from the client area, so that the second may be needed for the first's sake;
// it isn't asked again whether the first is then.
void PlaceScrollBars(const ViewRequest& request, const ViewWindow& window, ViewLayout& view) {
    const auto place = [&window, &view](Bars bar, bool shown) {
        view.ClientRect = AsClientRect(window.SetBars(window.Window, bar, shown));
        return shown;
    };
    const RECT& zoomed = view.ZoomedRect;
    view.ClientRect = AsClientRect(window.ClientArea(window.Window));
    view.HorizontalBarShown = place(Bars::kHorizontal, zoomed.right > view.ClientRect.right);
    view.VerticalBarShown = place(Bars::kVertical, zoomed.bottom > view.ClientRect.bottom);
    const Span across = VisibleSpan(zoomed.right, view.ClientRect.right, request.HorizontalBar);
    const Span down = VisibleSpan(zoomed.bottom, view.ClientRect.bottom, request.VerticalBar);
    view.VisibleRect = {across.From, down.From, across.To, down.To};
}

void ScrollInWindow(const ViewRequest& request, const ViewWindow& window, ViewLayout& view) {
    view.ViewportX = Rounded(double{view.ZoomX} * view.ImageRect.right);
    view.ViewportY = Rounded(double{view.ZoomY} * view.ImageRect.bottom);
    view.ZoomedRect = AtOrigin(view.ViewportX, view.ViewportY);
    PlaceScrollBars(request, window, view);
    const RECT& visible = view.VisibleRect;
    view.SourceRect = {
        Rounded(visible.left / double{view.ZoomX}), Rounded(visible.top / double{view.ZoomY}),
        Rounded(visible.right / double{view.ZoomX}), Rounded(visible.bottom / double{view.ZoomY})};
    view.PaintRect = MovedToOrigin(view.VisibleRect);
    view.DestRect = MovedToOrigin(view.SourceRect);
}

}  // namespace

bool RowsStayRows(uint32_t flags) {
    return (flags & VIEW_TURN_MASK) % 2 == 0;
}

float DotsPerInch(int32_t pixelsPerMetre) {
    return static_cast<float>(pixelsPerMetre) * kMetresPerInch;
}

ViewLayout LayOutView(const ViewRequest& request, const ViewWindow& window) {
    ViewLayout view{};
    view.ImageRect = Turned(request);
    view.ZoomX = view.ZoomY = 1;
    if ((request.Flags & VIEW_FIT) != 0) {
        FitWindow(window, view);
        return view;
    }
    if ((request.Flags & VIEW_ZOOM) != 0) {
        const ZoomRatios ratios = request.Ratios != nullptr ? *request.Ratios : ZoomRatios{};
        view.ZoomX =
            AxisZoom(request.DeviceDpiX, request.ImageDpiX, ratios.XNumerator, ratios.XDenominator);
        view.ZoomY =
            AxisZoom(request.DeviceDpiY, request.ImageDpiY, ratios.YNumerator, ratios.YDenominator);
    }
    ScrollInWindow(request, window, view);
    return view;
}

}  // namespace vellim
