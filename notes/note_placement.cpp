#include "notes/note_placement.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "notes/note_scale.h"
#include "notes/note_text.h"
#include "notes/numbers.h"
#include "platform/graphics/graphics_guards.h"
#include "vellim/text.h"
#include "vellim/windows.h"

namespace vellim {
namespace {

constexpr std::string_view kBlankLine = "WW";  // is measured where a line has nothing

BITMAPINFOHEADER HeaderOf(DibHandle dib) {
    const LockedBlock block(dib);
    BITMAPINFOHEADER header{};
    if (block && block.Size() >= sizeof header)
        std::memcpy(&header, block.As<uint8_t>(), sizeof header);
    return header;
}

// How far an axis of `size` pixels is scrolled. The bar runs over all of them, while what can be
// scrolled is the part that the window has no room for.
int32_t ScrolledBy(int32_t position, int32_t pixels, double scale, int32_t client) {
    const int32_t scrolled = std::max(Rounded(position * scale), 0);
    const int32_t size = Rounded(pixels * scale);
    const int64_t hidden = std::max<int64_t>(int64_t{size} - client, 0);
    return Rounded(static_cast<double>(hidden) / size * scrolled);
}

// Takes the margin before a picture that is shown in the middle off a place of the window.
void TakeOffMargin(int32_t& place, int32_t pixels, double scale, int32_t client) {
    const int64_t margin = (int64_t{client} - Rounded(pixels * scale)) / 2;
    if (margin > 0) place = std::max(Narrowed(place - margin), 0);
}

SIZE ExtentOf(DeviceContextHandle context, std::string_view line) {
    constexpr size_t limit = std::numeric_limits<int32_t>::max();
    SIZE size{};
    GetTextExtentPointA(context, line.data(), static_cast<int32_t>(std::min(line.size(), limit)),
                        &size);
    return size;
}

SIZE MeasureText(DeviceContextHandle context, std::string_view text) {
    SIZE all{};
    for (bool isLast = false; !isLast;) {
        const MeasuredLine line = ReadNoteLine(text);
        const SIZE size = ExtentOf(context, line.isBlank ? kBlankLine : line.bytes);
        all.cx = std::max(all.cx, size.cx);
        all.cy = Narrowed(int64_t{all.cy} + size.cy);
        isLast = line.isLast;
    }
    return all;
}

}  // namespace

void PlaceNoteBox(WindowHandle window, NoteRecord* note, POINT* point, const POINT* origin,
                  const ZoomRatios* zoom, uint32_t flags) {
    const WindowContext context(window);
    RECT client{};
    GetClientRect(window, &client);
    const BITMAPINFOHEADER image = HeaderOf(note->Dib);
    const bool usesDensity = (flags & NOTE_WITHOUT_DENSITY) == 0;
    const NoteScale scale =
        GetNoteScale(context.Get(), image, zoom, usesDensity ? Density::kUsed : Density::kIgnored);
    const POINT offset =
        origin != nullptr
            ? *origin
            : POINT{ScrolledBy(GetScrollPos(window, SB_HORZ), image.biWidth, scale.x, client.right),
                    ScrolledBy(GetScrollPos(window, SB_VERT), image.biHeight, scale.y,
                               client.bottom)};
    POINT corner = {note->Left, note->Top};
    if (point != nullptr) {
        if ((flags & NOTE_CENTRED) != 0) {
            TakeOffMargin(point->x, image.biWidth, scale.x, client.right);
            TakeOffMargin(point->y, image.biHeight, scale.y, client.bottom);
        }
        corner = {Rounded(point->x / scale.x), Rounded(point->y / scale.y)};
    }
    note->Left = Narrowed(int64_t{corner.x} + offset.x);
    note->Top = Narrowed(int64_t{corner.y} + offset.y);
    const LockedBlock text(note->Text);
    const SIZE size = MeasureText(context.Get(), NoteTextIn(text));
    note->Right = Narrowed(int64_t{note->Left} + size.cx);
    note->Bottom = Narrowed(int64_t{note->Top} + size.cy);
}

}  // namespace vellim
