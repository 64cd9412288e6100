// Drawing text.
//
// Pens go from letter to letter in 64 bits, so that no place is too far off; what is drawn is
// clipped to the surface before it gets narrower.
#include <algorithm>
#include <limits>
#include <new>

#include "platform/graphics/clip.h"
#include "platform/graphics/ink.h"
#include "platform/graphics/mapping.h"
#include "platform/graphics/pixel_copy.h"
#include "platform/graphics/scaled_fonts.h"
#include "platform/graphics/text_widths.h"

namespace vellim {
namespace {

using Limits = std::numeric_limits<int32_t>;

struct TextCall {
    POINT at;  // in units
    uint32_t options;
    const RECT* rect;
    const char* text;
    uint32_t count;
    const int32_t* steps;
};

// One line under way.
struct TextRun {
    DeviceContext& context;
    ScaledFont& font;
    const TextCall& call;
    POINT corner;  // in pixels
    RECT clip;     // in pixels, inside of what is drawn to
};

RECT PixelsOf(const Mapping& mapping, const RECT& rect) {
    const POINT first = PixelOf(mapping, {rect.left, rect.top});
    const POINT end = PixelOf(mapping, {rect.right, rect.bottom});
    return InOrder({first.x, first.y, end.x, end.y});
}

int32_t Narrowed(int64_t place) {
    return static_cast<int32_t>(std::clamp<int64_t>(place, Limits::min(), Limits::max()));
}

// Goes along the pens: calls `draw` with each byte and its pen, and gives the pen behind the last.
template <typename Draw>
int64_t WalkPens(const TextRun& run, Draw draw) {
    const TextCall& call = run.call;
    int64_t pen = run.corner.x;
    int64_t units = call.at.x;
    for (uint32_t i = 0; i < call.count; i++) {
        const auto byte = static_cast<uint8_t>(call.text[i]);
        draw(byte, pen);
        if (call.steps == nullptr) {
            pen += run.font.Advance(byte);
            continue;
        }
        units += call.steps[i];
        pen = PixelOf(run.context.mapping, {Narrowed(units), call.at.y}).x;
    }
    return pen;
}

void Fill(const TextRun& run, const InkArea& area, ColorRef color) {
    const RECT wanted = {Narrowed(area.left), Narrowed(area.top), Narrowed(area.right),
                         Narrowed(area.bottom)};
    RECT both{};
    if (IntersectRect(&both, &wanted, &run.clip) != 0)
        FillWithColor(run.context, both, ShownColor(run.context, color));
}

void DrawLetter(const TextRun& run, uint8_t byte, int64_t pen, uint32_t pixel) {
    const Surface& surface = *run.context.surface;
    const int64_t baseline = int64_t{run.corner.y} + run.font.Measures().ascent;
    const RECT& clip = run.clip;
    const GlyphPicture* picture = run.font.Picture(
        byte, ShadesOn(surface.bits),
        {clip.left - pen, clip.top - baseline, clip.right - pen, clip.bottom - baseline});
    if (picture == nullptr) return;
    const PlacedPicture placed = {picture, pen + picture->left, baseline + picture->top};
    const RECT box = {Narrowed(placed.left), Narrowed(placed.top),
                      Narrowed(placed.left + picture->width),
                      Narrowed(placed.top + picture->height)};
    RECT area{};
    IntersectRect(&area, &box, &clip);
    VisibleParts parts(run.context, area);
    for (RECT part{}; parts.Next(part);)
        DrawInk(surface, part, placed, pixel);
}

void DrawLines(const TextRun& run, int64_t first, int64_t end) {
    const LOGFONT& font = AskedFont(run.context);
    const FontMeasures& measures = run.font.Measures();
    const int64_t baseline = int64_t{run.corner.y} + measures.ascent;
    const auto draw = [&](const TextLine& line) {
        const int64_t top = baseline + line.top;
        Fill(run, {first, top, end, top + line.height}, run.context.textColor);
    };
    if (font.lfUnderline != 0) draw(measures.underline);
    if (font.lfStrikeOut != 0) draw(measures.strikeOut);
}

void DrawRun(const TextRun& run) {
    DeviceContext& context = run.context;
    const int64_t pen = WalkPens(run, [](uint8_t, int64_t) {});
    const int64_t first = std::min<int64_t>(run.corner.x, pen);
    const int64_t end = std::max<int64_t>(run.corner.x, pen);
    const int64_t bottom = int64_t{run.corner.y} + run.font.Measures().Height();
    if (context.backgroundMode == OPAQUE)
        Fill(run, {first, run.corner.y, end, bottom}, context.backColor);
    const uint32_t pixel =
        NearestPixel(context.surface->bits, ShownColor(context, context.textColor));
    WalkPens(run, [&](uint8_t byte, int64_t at) { DrawLetter(run, byte, at, pixel); });
    DrawLines(run, first, end);
}

bool DrawTextLine(DeviceContext& context, const TextCall& call) {
    if (context.surface == nullptr) return true;
    RECT clip = BoundsOf(context);
    if (call.rect != nullptr && call.options != 0) {
        const RECT rect = PixelsOf(context.mapping, *call.rect);
        if ((call.options & ETO_OPAQUE) != 0)
            FillWithColor(context, rect, ShownColor(context, context.backColor));
        if ((call.options & ETO_CLIPPED) != 0) IntersectRect(&clip, &clip, &rect);
    }
    if (IsRectEmpty(&clip) != 0 || call.count == 0) return true;
    const std::shared_ptr<ScaledFont> font = FontOf(context);
    if (font == nullptr) return false;
    DrawRun({context, *font, call, PixelOf(context.mapping, call.at), clip});
    return true;
}

bool IsSound(const TextCall& call) {
    constexpr uint32_t options = ETO_OPAQUE | ETO_CLIPPED;
    constexpr uint32_t most = Limits::max();
    if (call.count > most || (call.text == nullptr && call.count != 0)) return false;
    return call.rect != nullptr || (call.options & options) == 0;
}

}  // namespace
}  // namespace vellim

int32_t TextOutA(DeviceContextHandle context, int32_t x, int32_t y, const char* text,
                 int32_t count) {
    return ExtTextOutA(context, x, y, 0, nullptr, text, static_cast<uint32_t>(count), nullptr);
}

int32_t ExtTextOutA(DeviceContextHandle context, int32_t x, int32_t y, uint32_t options,
                    const RECT* rect, const char* text, uint32_t count, const int32_t* steps) {
    using namespace vellim;
    DeviceContext* found = FindContext(context);
    const TextCall call = {{x, y}, options, rect, text, count, steps};
    if (found == nullptr || !IsSound(call)) return 0;
    try {
        return DrawTextLine(*found, call) ? 1 : 0;
    } catch (const std::bad_alloc&) {
        return 0;
    }
}
