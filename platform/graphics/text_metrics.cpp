// Measuring text.
#include <algorithm>

#include "platform/graphics/display.h"
#include "platform/graphics/text_widths.h"
#include "platform/graphics/windows_1252.h"

namespace vellim {
namespace {

enum PitchAndFamily : uint8_t { kVariablePitch = 1, kOutlines = 2 };

TEXTMETRIC MetricsOf(const DeviceContext& context, ScaledFont& font) {
    const FontMeasures& pixels = font.Measures();
    const LOGFONT& asked = AskedFont(context);
    const DisplaySettings display = CurrentDisplay();
    const auto down = [&](int32_t count) { return UnitsDown(context.mapping, count); };
    TEXTMETRIC metrics{};
    metrics.tmHeight = down(pixels.Height());
    metrics.tmAscent = std::min(down(pixels.ascent), metrics.tmHeight);
    metrics.tmDescent = metrics.tmHeight - metrics.tmAscent;
    metrics.tmInternalLeading = down(std::max(pixels.Height() - pixels.em, 0));
    metrics.tmExternalLeading = down(pixels.externalLeading);
    metrics.tmAveCharWidth = UnitsAcross(context.mapping, pixels.meanWidth);
    metrics.tmMaxCharWidth = UnitsAcross(context.mapping, font.WidestAdvance());
    metrics.tmWeight = pixels.weight;
    metrics.tmDigitizedAspectX = display.DotsPerInchX;
    metrics.tmDigitizedAspectY = display.DotsPerInchY;
    metrics.tmFirstChar = kFirstCharacter;
    metrics.tmLastChar = 255;
    metrics.tmDefaultChar = kDefaultCharacter;
    metrics.tmBreakChar = ' ';
    metrics.tmItalic = asked.lfItalic != 0 ? 1 : 0;
    metrics.tmUnderlined = asked.lfUnderline != 0 ? 1 : 0;
    metrics.tmStruckOut = asked.lfStrikeOut != 0 ? 1 : 0;
    metrics.tmPitchAndFamily = static_cast<uint8_t>((pixels.isFixedPitch ? 0 : kVariablePitch) |
                                                    (pixels.isOfOutlines ? kOutlines : 0));
    return metrics;
}

}  // namespace

TextWidths::TextWidths(DeviceContextHandle context) {
    const DeviceContext* found = FindContext(context);
    if (found == nullptr) return;
    font_ = FontOf(*found);
    mapping_ = found->mapping;
    isInPixels_ = mapping_.viewportExtent.x == mapping_.windowExtent.x;
}

int64_t PixelsAcross(ScaledFont& font, const char* text, uint32_t count) {
    int64_t pixels = 0;
    for (const char* end = text + count; text != end; text++)
        pixels += font.Advance(static_cast<uint8_t>(*text));
    return pixels;
}

}  // namespace vellim

int32_t GetTextExtentPointA(DeviceContextHandle context, const char* text, int32_t count,
                            SIZE* size) {
    using namespace vellim;
    if (size == nullptr) return 0;
    *size = {};
    const DeviceContext* found = FindContext(context);
    if (found == nullptr || count < 0 || (text == nullptr && count != 0)) return 0;
    const std::shared_ptr<ScaledFont> font = FontOf(*found);
    if (font == nullptr) return 0;
    const int64_t pixels = PixelsAcross(*font, text, static_cast<uint32_t>(count));
    *size = {UnitsAcross(found->mapping, pixels),
             UnitsDown(found->mapping, font->Measures().Height())};
    return 1;
}

int32_t GetTextMetricsA(DeviceContextHandle context, TEXTMETRIC* metrics) {
    using namespace vellim;
    if (metrics == nullptr) return 0;
    *metrics = {};
    const DeviceContext* found = FindContext(context);
    const std::shared_ptr<ScaledFont> font = found != nullptr ? FontOf(*found) : nullptr;
    if (font == nullptr) return 0;
    *metrics = MetricsOf(*found, *font);
    return 1;
}
