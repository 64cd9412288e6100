#include "notes/note_burning.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "bridge/dib_bitmaps.h"
#include "bridge/dib_palettes.h"
#include "notes/dib_scaling.h"
#include "notes/note_text.h"
#include "notes/numbers.h"
#include "platform/graphics/graphics_guards.h"
#include "vellim/text.h"

namespace vellim {
namespace {

// What a note shows of itself on its image.
struct NoteOnImage {
    RECT box;
    RECT seen;  // the part of the box that lies on the image
};

// The text on white, black: a bitmap of one bit, of the part that is seen. 0 without memory.
BitmapHandle RenderNoteBitmap(const NoteRecord& note, const NoteOnImage& place) {
    const auto& [box, seen] = place;
    const int32_t width = seen.right - seen.left, height = seen.bottom - seen.top;
    OwnedObject bitmap(CreateBitmap(width, height, 1, 1, nullptr));
    const ScopedContext context(ScopedContext::Kind::Memory);
    const SelectedObject selected(context.Get(), bitmap.Get());
    if (!selected) return 0;
    PatBlt(context.Get(), 0, 0, width, height, WHITENESS);
    const LockedBlock text(note.Text);
    const POINT start = {Narrowed(int64_t{box.left} - seen.left),
                         Narrowed(int64_t{box.top} - seen.top)};
    DrawNoteLines(context.Get(), NoteTextIn(text),
                  {.At = start, .Clip = {0, 0, width, height}, .Options = ETO_CLIPPED});
    return bitmap.Release();
}

// Draws the note on a bitmap of the image.
bool DrawNote(BitmapHandle image, PaletteHandle palette, const NoteRecord& note,
              const NoteOnImage& place) {
    const RECT& seen = place.seen;
    if (IsRectEmpty(&seen) != 0) return true;
    const OwnedObject text(RenderNoteBitmap(note, place));
    const ScopedContext to(ScopedContext::Kind::Memory), from(ScopedContext::Kind::Memory);
    const SelectedObject selectedImage(to.Get(), image), selectedText(from.Get(), text.Get());
    if (!selectedImage || !selectedText) return false;
    const SelectedPalette selected(to.Get(), palette);
    const int32_t width = seen.right - seen.left, height = seen.bottom - seen.top;
    return StretchBlt(to.Get(), seen.left, seen.top, width, height, from.Get(), 0, 0, width, height,
                      note.Opaque != 0 ? SRCCOPY : SRCAND) != 0;
}

DibHandle BurnedCopy(const NoteRecord& note, const BITMAPINFOHEADER& header) {
    const RECT box = {note.Left, note.Top, note.Right, note.Bottom};
    const RECT all = {0, 0, header.biWidth, header.biHeight};
    NoteOnImage place = {box, {}};
    IntersectRect(&place.seen, &box, &all);
    if (IsRectEmpty(&box) != 0) return 0;
    const OwnedObject palette(CreateDibPalette(note.Dib));
    const OwnedObject image(DibToBitmap(note.Dib));
    if (!image || !DrawNote(image.Get(), palette.Get(), note, place)) return 0;
    OwnedBlock burned(BitmapToDib(image.Get(), palette.Get()));
    {
        const LockedBlock block(burned.Get());
        if (!block) return 0;
        auto* copy = block.As<BITMAPINFOHEADER>();
        copy->biXPelsPerMeter = header.biXPelsPerMeter;
        copy->biYPelsPerMeter = header.biYPelsPerMeter;
    }
    return burned.Release();
}

std::optional<BITMAPINFOHEADER> HeaderOf(DibHandle dib) {
    const LockedBlock block(dib);
    const auto whole = ReadWholeDib(block);
    return whole ? std::optional(whole->header) : std::nullopt;
}

}  // namespace

DibHandle BurnNoteIntoDib(WindowHandle window, NoteRecord* note) {
    const auto header = HeaderOf(note->Dib);
    if (!header || !WindowContext(window)) return 0;
    const OwnedBlock text(std::exchange(note->Text, 0));
    NoteRecord burned = *note;
    burned.Text = text.Get();
    return BurnedCopy(burned, *header);
}

}  // namespace vellim
