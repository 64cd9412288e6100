#include "platform/graphics/dib_conversion.h"

#include <cstring>
#include <new>
#include <utility>

#include "platform/graphics/display.h"

namespace vellim {

// That of a context, or without memory for it one of the thread's own: a row that can't be
// converted would be missing from a picture without a word.
DibConversion& DibConversion::KeptBy(DeviceContext& context) {
    try {
        if (context.dibs == nullptr) context.dibs = std::make_shared<DibConversion>();
        return *context.dibs;
    } catch (const std::bad_alloc&) {
        thread_local DibConversion spare;
        return spare;
    }
}

const PixelConversion& DibConversion::For(DeviceContext& context, Way way, const BITMAPINFO* info,
                                          const DibFormat& dib, uint32_t use,
                                          uint32_t surfaceBits) {
    DibConversion& kept = KeptBy(context);
    const bool byIndex = use == DIB_PAL_COLORS;
    Terms terms = {way,
                   dib.bits,
                   dib.colorCount,
                   use,
                   surfaceBits,
                   DisplayVersion(),
                   byIndex ? context.palette : nullptr};
    const size_t tableBytes = dib.colorCount * (byIndex ? sizeof(uint16_t) : sizeof(RGBQUAD));
    const auto* table = reinterpret_cast<const uint8_t*>(info) + sizeof(BITMAPINFOHEADER);
    if (terms == kept.terms_ && std::memcmp(table, kept.table_.data(), tableBytes) == 0)
        return kept.conversion_;

    const PixelFormat pixels = ReadDibColors(info, dib, use, terms.palette.get());
    const PixelFormat surface = SurfaceFormat(surfaceBits);
    const bool isToSurface = way == Way::ToSurface;
    kept.conversion_ =
        MakeConversion(isToSurface ? pixels : surface, isToSurface ? surface : pixels);
    std::memcpy(kept.table_.data(), table, tableBytes);
    kept.terms_ = std::move(terms);
    return kept.conversion_;
}

}  // namespace vellim
