// Any bytes as the value of a note's tag: read, written again, and the note that it tells of drawn
// over a small window.
#include <string>
#include <string_view>

#include "fuzz/checks.h"
#include "fuzz/input.h"
#include "notes/note_tag.h"
#include "platform/guards.h"
#include "support/shown_colors.h"
#include "vellim/notes.h"
#include "vellim/text.h"
#include "vellim/windows.h"

namespace vellim::fuzz {
namespace {

std::string_view TextOf(const LockedBlock& block) {
    return {block.As<char>(), block.Size()};
}

bool SameNotes(const NoteRecord& a, const NoteRecord& b) {
    const LockedBlock first(a.Text), second(b.Text);
    return a.Opaque == b.Opaque && a.Left == b.Left && a.Top == b.Top && a.Right == b.Right &&
           a.Bottom == b.Bottom && TextOf(first) == TextOf(second);
}

// What was read and is written comes back, but for numbers below 0 and texts that are cut.
void WriteAgain(const NoteRecord& note) {
    const auto tag = BuildNoteTagText(note);
    Require(tag.has_value(), "a note with a text has a value");
    Require(tag->length <= NOTE_TAG_BYTES && tag->bytes[tag->length] == '\0', "a value ends");
    NoteRecord again{};
    Require(ParseNoteTagText({tag->bytes.data(), tag->length}, &again) == 1, "a value is read");
    const OwnedBlock text(again.Text);
    const bool isKept = tag->length < NOTE_TAG_BYTES && note.Left >= 0 && note.Top >= 0 &&
                        note.Right >= 0 && note.Bottom >= 0;
    Require(!isKept || SameNotes(note, again), "a note comes back as it was");
}

void Draw(const NoteRecord& note, Input& settings) {
    constexpr int32_t width = 60, height = 40;
    const WindowHandle window = CreateMemoryWindow(width, height, 0);
    const DeviceContextHandle context = GetDC(window);
    const POINT base = {settings.SignedWord(), settings.SignedWord()};
    const POINT target = {settings.SignedWord(), settings.SignedWord()};
    const double scaleX = settings.Byte(), scaleY = settings.Byte();
    PaintNotePlus(window, context, &base, scaleX, scaleY, &target, &note);
    ReleaseDC(window, context);
    const OwnedBlock dib = test::MakeDib(width, height, 1);
    const ScrollRecord scroll = {0, 0, base.x, base.y};
    PaintDIBWithNote(window, dib.Get(), &scroll, nullptr, 0, &note);
    DestroyWindow(window);
}

}  // namespace
}  // namespace vellim::fuzz

// Settings first, which are read as numbers of any kind; then the value.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace vellim;
    constexpr size_t settingsBytes = 10;
    GetStockObject(SYSTEM_FONT);  // which is made once
    const auto before = test::Live();
    const size_t first = size < settingsBytes ? size : settingsBytes;
    fuzz::Input settings(data, first);
    NoteRecord note{};
    const std::string value(data + first, data + size);
    if (ParseNoteTagText(value, &note) == 1) {
        const OwnedBlock text(note.Text);
        const LockedBlock locked(note.Text);
        fuzz::Require(locked.Size() >= 1 && fuzz::TextOf(locked).back() == '\0', "a text ends");
        fuzz::WriteAgain(note);
        fuzz::Draw(note, settings);
    }
    fuzz::Require(note.Text != 0 || note.StoreInHeader == 0,
                  "a note that isn't read is left alone");
    fuzz::Require(test::Live() == before, "all is given back");
    return 0;
}
