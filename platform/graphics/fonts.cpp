#include "platform/graphics/fonts.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <new>

#include "platform/graphics/graphics_objects.h"

namespace vellim {
namespace {

constexpr LOGFONT FontOfFace(const char* face) {
    LOGFONT font{};
    font.lfHeight = kDefaultLineHeight;
    font.lfWeight = FW_NORMAL;
    font.lfCharSet = DEFAULT_CHARSET;
    for (char* to = font.lfFaceName; *face != 0;)
        *to++ = *face++;
    return font;
}

constexpr LOGFONT kFixedFont = FontOfFace("Fixedsys");

// A name without end is cut, and nothing is left behind one that ends, so that fonts can be
// compared byte by byte.
LOGFONT Tidied(LOGFONT font) {
    char* const last = std::end(font.lfFaceName) - 1;
    std::fill(std::find(font.lfFaceName, last, '\0'), std::end(font.lfFaceName), '\0');
    return font;
}

// Without memory one that no table takes.
GraphicsObject ObjectOf(const LOGFONT& font, bool isSystems) {
    try {
        return {.kind = ObjectKind::Font,
                .font = std::make_shared<const LOGFONT>(Tidied(font)),
                .isSystems = isSystems};
    } catch (const std::bad_alloc&) {
        return {.kind = ObjectKind::Font};
    }
}

FontHandle FixedFont() {
    static SystemsObject font;
    return font.Get([] { return ObjectOf(kFixedFont, true); });
}

}  // namespace

constinit const LOGFONT kDefaultFont = FontOfFace("System");

FontHandle DefaultFont() {
    static SystemsObject font;
    return font.Get([] { return ObjectOf(kDefaultFont, true); });
}

}  // namespace vellim

FontHandle CreateFontIndirectA(const LOGFONT* font) {
    return font != nullptr ? vellim::AddObject(vellim::ObjectOf(*font, false)) : 0;
}

GraphicsHandle GetStockObject(int32_t object) {
    switch (object) {
        case SYSTEM_FONT:
            return vellim::DefaultFont();
        case SYSTEM_FIXED_FONT:
            return vellim::FixedFont();
        default:
            return 0;
    }
}
