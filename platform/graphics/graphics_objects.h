// Bitmaps, palettes, brushes and fonts behind their handles.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/graphics/surface.h"
#include "vellim/graphics.h"
#include "vellim/text.h"

namespace vellim {

struct Palette {
    std::vector<PALETTEENTRY> entries;
};

enum class ObjectKind : uint8_t { None, Bitmap, Palette, Brush, Font };

// What a handle names; kept by whoever uses it, so that it outlives the handle.
struct GraphicsObject {
    ObjectKind kind = ObjectKind::None;
    std::shared_ptr<Surface> surface = nullptr;
    std::shared_ptr<const Palette> palette = nullptr;
    std::shared_ptr<const LOGFONT> font = nullptr;
    ColorRef brush = 0;
    bool isSystems = false;  // DeleteObject leaves it alone
};

// 0 without memory, for the handle or for the object's own part.
GraphicsHandle AddObject(GraphicsObject object);

// Kind None for a number that is no object.
GraphicsObject FindObject(GraphicsHandle object);

// Objects not yet given back in the whole process, the system's own included once they are in use.
uint32_t LiveObjects();

// A system's own object that is made when it is first asked for, and asked for again where there
// was no memory for it.
class SystemsObject {
  public:
    template <typename Make>
    GraphicsHandle Get(Make make) {
        GraphicsHandle there = handle_.load(std::memory_order_acquire);
        if (there != 0) return there;
        const std::scoped_lock lock(mutex_);
        there = handle_.load(std::memory_order_relaxed);
        if (there == 0) there = AddObject(make());
        handle_.store(there, std::memory_order_release);
        return there;
    }

  private:
    std::mutex mutex_;
    std::atomic<GraphicsHandle> handle_ = 0;
};

// The system's own objects, which DeleteObject leaves alone: what contexts begin with.
BitmapHandle DefaultBitmap();  // one pixel of one bit
PaletteHandle DefaultPalette();
BrushHandle WhiteBrush();

// The colours of DIB_PAL_COLORS and PALETTEINDEX: that of an entry, black beyond the last one. A
// PC_EXPLICIT entry is a colour of the display.
ColorRef ColorOfEntry(const Palette& palette, uint32_t entry);

}  // namespace vellim
