// Device contexts: of the display, of memory, of a window.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "platform/graphics/graphics_objects.h"
#include "vellim/graphics.h"
#include "vellim/text.h"

namespace vellim {

enum class ContextKind : uint8_t { Display, Memory, Window };

struct Mapping {
    int32_t mode = MM_TEXT;
    POINT windowOrigin{};
    POINT windowExtent{1, 1};
    POINT viewportOrigin{};
    POINT viewportExtent{1, 1};
};

class CopiedRows;
class DibConversion;

struct DeviceContext {
    ContextKind kind = ContextKind::Display;
    WindowHandle window = 0;
    std::shared_ptr<Surface> surface;        // null: the display, which has no pixels of its own
    std::shared_ptr<const RECT> clientArea;  // of a window, as it is now: all that is drawn to
    BitmapHandle bitmap = 0;
    BrushHandle brush = 0;
    ColorRef brushColor = 0x00FFFFFF;
    FontHandle fontHandle = 0;
    std::shared_ptr<const LOGFONT> font;
    PaletteHandle paletteHandle = 0;
    std::shared_ptr<const Palette> palette;
    ColorRef textColor = 0;
    ColorRef backColor = 0x00FFFFFF;
    int32_t stretchMode = BLACKONWHITE;
    int32_t backgroundMode = OPAQUE;
    Mapping mapping;
    std::vector<RECT> excluded;  // in pixels

    // Of the call before: a picture comes in many that are alike.
    std::shared_ptr<CopiedRows> rows;
    std::shared_ptr<DibConversion> dibs;
};

// What calls that give a colour give on failure.
inline constexpr ColorRef kNoColor = 0xFFFFFFFF;

// Null for a number that is no context. The context lives until it is given back.
DeviceContext* FindContext(DeviceContextHandle context);

// Bits a pixel of what is drawn to: the surface's, or the display's.
uint32_t DepthOf(const DeviceContext& context);

// A colour as 0x00BBGGRR, that of an entry looked up in the context's palette.
ColorRef ShownColor(const DeviceContext& context, ColorRef color);

// A new context, with the system's own brush, font and palette where it has none, or 0; and the end
// of one of a given kind.
DeviceContextHandle AddContext(DeviceContext context);
bool RemoveContext(DeviceContextHandle handle, ContextKind kind);

// Contexts not yet given back in the whole process.
uint32_t LiveContexts();

}  // namespace vellim
