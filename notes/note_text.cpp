#include "notes/note_text.h"

#include <algorithm>
#include <limits>

#include "vellim/text.h"

namespace vellim {
namespace {

constexpr char kCarriageReturn = '\r';
constexpr std::string_view kLineEnds = "\r\n";
constexpr uint32_t kOverImage = ETO_CLIPPED;
constexpr uint32_t kOnBackground = ETO_CLIPPED | ETO_OPAQUE;
constexpr size_t kPaintedLineBytes = 40;  // of a line that is painted; one that is burned is whole

// Everything below a blank is dropped from a line that is measured.
bool IsKept(char byte) {
    return static_cast<uint8_t>(byte) >= ' ';
}

int32_t LineHeight(DeviceContextHandle context) {
    TEXTMETRIC metrics{};
    GetTextMetricsA(context, &metrics);
    return metrics.tmHeight + metrics.tmExternalLeading;
}

uint32_t DrawnBytes(std::string_view line, size_t most) {
    constexpr size_t limit = std::numeric_limits<int32_t>::max();
    return static_cast<uint32_t>(std::min({line.size(), most, limit}));
}

}  // namespace

std::string_view NoteTextIn(const LockedBlock& text) {
    if (!text) return {};
    const std::string_view bytes(text.As<char>(), text.Size());
    return bytes.substr(0, bytes.find('\0'));
}

MeasuredLine ReadNoteLine(std::string_view& rest) {
    const size_t length = rest.find(kCarriageReturn);
    const MeasuredLine line = {.bytes = rest.substr(0, length),
                               .isBlank = true,
                               .isLast = length == std::string_view::npos};
    rest.remove_prefix(line.isLast ? rest.size() : length + 1);
    return {line.bytes, std::ranges::none_of(line.bytes, IsKept), line.isLast};
}

std::optional<std::string_view> TakeDrawnLine(std::string_view& rest) {
    if (rest.empty()) return std::nullopt;
    const std::string_view line = rest.substr(0, rest.find_first_of(kLineEnds));
    rest.remove_prefix(line.size());
    rest.remove_prefix(std::min(rest.find_first_not_of(kLineEnds), rest.size()));
    return line;
}

void DrawNoteLines(DeviceContextHandle context, std::string_view text, const NoteLines& lines) {
    const int32_t lineHeight = LineHeight(context);
    int64_t top = lines.At.y;
    while (top < lines.Clip.bottom) {
        const auto line = TakeDrawnLine(text);
        if (!line) return;
        const auto y = static_cast<int32_t>(top);
        const RECT clip = {lines.Clip.left, std::max(lines.Clip.top, y), lines.Clip.right,
                           lines.Clip.bottom};
        ExtTextOutA(context, lines.At.x, y, lines.Options, &clip, line->data(),
                    DrawnBytes(*line, lines.MostBytes), nullptr);
        top += lineHeight;
    }
}

void DrawNoteIn(DeviceContextHandle context, const RECT& box, const NoteRecord& note) {
    const bool isOpaque = note.Opaque != 0;
    const LockedBlock text(note.Text);
    SetBkMode(context, isOpaque ? OPAQUE : TRANSPARENT);
    DrawNoteLines(context, NoteTextIn(text),
                  {.At = {box.left, box.top},
                   .Clip = box,
                   .MostBytes = kPaintedLineBytes,
                   .Options = isOpaque ? kOnBackground : kOverImage});
}

bool LiesOverImage(const NoteRecord* note) {
    return note != nullptr && note->Text != 0 && note->StoreInHeader != 0;
}

}  // namespace vellim
