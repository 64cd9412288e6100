#include "notes/note_tag.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "notes/note_text.h"
#include "notes/numbers.h"
#include "platform/guards.h"
#include "vellim/tags.h"

namespace vellim {
namespace {

constexpr uint32_t kAsciiType = 2;
constexpr char kNoteMark = '~';
constexpr char kOpaque = 'O';
constexpr char kTransparent = 'T';
constexpr size_t kOpaqueAt = 4;
constexpr size_t kNumbersAt = 6;
constexpr uint32_t kLengthMask = 0xFFFF;  // the length field has 16 bits

// At least one byte, so that there is room for the text's end.
OwnedBlock CopyOfText(std::string_view text, uint32_t bytes) {
    const uint32_t size = std::max(bytes, 1U);
    OwnedBlock block(GlobalAlloc(GHND, size));
    const LockedBlock locked(block.Get());
    if (!locked) return {};
    std::copy_n(text.data(), std::min<size_t>(text.size(), size - 1), locked.As<char>());
    return block;
}

}  // namespace

std::optional<NoteTagText> BuildNoteTagText(const NoteRecord& note) {
    const LockedBlock text(note.Text);
    if (!text) return std::nullopt;
    NoteTagText tag;
    const int head = std::snprintf(tag.bytes.data(), tag.bytes.size(), "%c,1,%c,%d,%d,%d,%d,%u,",
                                   kNoteMark, note.Opaque != 0 ? kOpaque : kTransparent, note.Left,
                                   note.Top, note.Right, note.Bottom, text.Size() & kLengthMask);
    if (head < 0) return std::nullopt;
    tag.length = static_cast<uint32_t>(head);
    const std::string_view bytes = NoteTextIn(text).substr(0, NOTE_TAG_BYTES - tag.length);
    bytes.copy(tag.bytes.data() + head, bytes.size());
    tag.length += static_cast<uint32_t>(bytes.size());
    return tag;
}

std::optional<int32_t> ReadNoteNumber(std::string_view& rest) {
    const size_t length = rest.find(',');
    if (length == std::string_view::npos) return std::nullopt;
    constexpr int64_t base = 10;
    int32_t value = 0;
    for (const char byte : rest.substr(0, length))
        value = Narrowed(value * base + static_cast<uint8_t>(byte) - '0');
    rest.remove_prefix(length + 1);
    return value;
}

int32_t ParseNoteTagText(std::string_view value, NoteRecord* note) {
    std::string_view rest = value.substr(0, value.find('\0'));
    if (!rest.starts_with(kNoteMark) || rest.size() < kNumbersAt) return 0;
    const bool isOpaque = rest[kOpaqueAt] == kOpaque;
    rest.remove_prefix(kNumbersAt);
    std::array<int32_t, 5> numbers{};
    for (int32_t& number : numbers) {
        const auto read = ReadNoteNumber(rest);
        if (!read) return 0;
        number = *read;
    }
    const auto [left, top, right, bottom, length] = numbers;
    OwnedBlock text = CopyOfText(rest, static_cast<uint32_t>(length) & kLengthMask);
    if (!text) return 0;
    *note = {.StoreInHeader = 1,
             .Opaque = isOpaque ? 1 : 0,
             .Text = text.Release(),
             .Left = left,
             .Top = top,
             .Right = right,
             .Bottom = bottom,
             .Dib = note->Dib};
    return 1;
}

}  // namespace vellim

int32_t AddNoteTagToTiff(TiffFileHandle file, uint32_t image, const NoteRecord* note) {
    using namespace vellim;
    const auto index = static_cast<int32_t>(image);
    if (file == 0 || note == nullptr || GetTiffImage(file, index) == 0) return 0;
    const auto tag = BuildNoteTagText(*note);
    if (!tag) return 0;
    return DefineTiffImageInfoBuffer(file, index, NOTE_TAG, tag->bytes.data(), kAsciiType,
                                     tag->length + 1);
}

int32_t GetNoteTagFromTiff(TiffFileHandle file, uint32_t image, NoteRecord* note) {
    using namespace vellim;
    const auto index = static_cast<int32_t>(image);
    if (file == 0 || note == nullptr || GetTiffImage(file, index) == 0) return 0;
    GlobalHandle value = 0;
    if (GetTiffImageInfoBuffer(file, index, NOTE_TAG, &value, nullptr, nullptr) == 0) return 0;
    const OwnedBlock owned(value);
    const LockedBlock locked(value);
    if (!locked) return 0;
    return ParseNoteTagText({locked.As<char>(), locked.Size()}, note);
}
