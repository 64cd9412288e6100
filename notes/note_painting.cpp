// Painting a DIB and the note over it into a window.
#include "bridge/dib_palettes.h"
#include "notes/dib_scaling.h"
#include "notes/dib_view.h"
#include "notes/note_text.h"
#include "notes/numbers.h"
#include "platform/graphics/graphics_guards.h"
#include "platform/guards.h"
#include "vellim/windows.h"

namespace vellim {
namespace {

// A paint of a window, ended with the scope. Converts to false where it can't be begun.
class PaintCycle {
  public:
    explicit PaintCycle(WindowHandle window)
        : window_(window), context_(BeginPaint(window, &paint_)) {}
    ~PaintCycle() {
        if (context_ != 0) EndPaint(window_, &paint_);
    }
    PaintCycle(const PaintCycle&) = delete;
    PaintCycle& operator=(const PaintCycle&) = delete;

    explicit operator bool() const { return context_ != 0; }
    [[nodiscard]] DeviceContextHandle Context() const { return context_; }
    [[nodiscard]] const RECT& Invalid() const { return paint_.rcPaint; }

  private:
    WindowHandle window_;
    PAINTSTRUCT paint_{};
    DeviceContextHandle context_;
};

int32_t WidthOf(const RECT& rect) {
    return Narrowed(int64_t{rect.right} - rect.left);
}

int32_t HeightOf(const RECT& rect) {
    return Narrowed(int64_t{rect.bottom} - rect.top);
}

// Draws the part of the DIB scaled to its working size, or without memory for that as it is.
void DrawPicture(DeviceContextHandle context, const WholeDib& dib, const DibView& view,
                 uint32_t operation) {
    const RECT &source = view.Source, &place = view.Place;
    const auto draw = [&](int32_t x, int32_t y, int32_t width, int32_t height, const void* bits,
                          const void* info) {
        StretchDIBits(context, place.left, place.top, WidthOf(place), HeightOf(place), x, y, width,
                      height, bits, static_cast<const BITMAPINFO*>(info), DIB_RGB_COLORS,
                      operation);
    };
    const OwnedBlock scaled(ScaleDib(dib, {source.left, source.top, WidthOf(source),
                                           HeightOf(source), view.WorkWidth, view.WorkHeight}));
    const LockedBlock block(scaled.Get());
    if (const auto whole = ReadWholeDib(block)) {
        draw(0, 0, view.WorkWidth, view.WorkHeight, whole->bits, whole->bytes);
        return;
    }
    draw(source.left, Narrowed(int64_t{dib.header.biHeight} - source.bottom), WidthOf(source),
         HeightOf(source), dib.bits, dib.bytes);
}

void EraseAround(WindowHandle window, const PaintCycle& paint, const RECT& painted) {
    const DeviceContextHandle context = paint.Context();
    ExcludeClipRect(context, painted.left, painted.top, painted.right, painted.bottom);
    const GraphicsHandle brush = SelectObject(context, GetClassLongA(window, GCL_HBRBACKGROUND));
    const RECT& invalid = paint.Invalid();
    PatBlt(context, invalid.left, invalid.top, WidthOf(invalid) + 1, HeightOf(invalid) + 1,
           PATCOPY);
    if (brush != 0) SelectObject(context, brush);
}

}  // namespace
}  // namespace vellim

void PaintDIBWithNote(WindowHandle window, DibHandle dib, const ScrollRecord* scroll,
                      const ZoomRatios* zoom, uint32_t flags, const NoteRecord* note) {
    using namespace vellim;
    const PaintCycle paint(window);
    const LockedBlock block(dib);
    const auto whole = ReadWholeDib(block);
    if (!paint || !whole) return;
    const DeviceContextHandle context = paint.Context();
    SetMapMode(context, MM_TEXT);
    SetStretchBltMode(context, COLORONCOLOR);
    const bool isFit = flags == PAINT_DIB_FIT;
    const DibView view = isFit ? FitDib(window, context, whole->header)
                               : ScrollDib(window, context, whole->header, scroll, zoom);

    const OwnedObject palette(CreateDibPalette(dib));
    const SelectedPalette selected(context, palette.Get());
    DrawPicture(context, *whole, view, (flags & PAINT_DIB_INVERTED) != 0 ? NOTSRCCOPY : SRCCOPY);
    if (!isFit && LiesOverImage(note)) {
        const RECT box = PlaceInView(view, {note->Left, note->Top, note->Right, note->Bottom});
        if (IsRectEmpty(&box) == 0) DrawNoteIn(context, box, *note);
    }
    EraseAround(window, paint, view.Place);
}

void PaintNotePlus(WindowHandle /*window*/, DeviceContextHandle dc, const POINT* base,
                   double scaleX, double scaleY, const POINT* target, const NoteRecord* note) {
    using namespace vellim;
    if (base == nullptr || target == nullptr || !LiesOverImage(note)) return;
    const int64_t x = int64_t{note->Left} - base->x, y = int64_t{note->Top} - base->y;
    if (x < 0 || y < 0) return;
    RECT box{};
    box.left = Narrowed(int64_t{target->x} + Rounded(static_cast<double>(x) * scaleX));
    box.top = Narrowed(int64_t{target->y} + Rounded(static_cast<double>(y) * scaleY));
    box.right = Narrowed(int64_t{box.left} + note->Right - note->Left);
    box.bottom = Narrowed(int64_t{box.top} + note->Bottom - note->Top);
    DrawNoteIn(dc, box, *note);
}
