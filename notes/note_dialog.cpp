#include "notes/note_dialog.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "notes/note_burning.h"
#include "notes/note_placement.h"
#include "notes/note_text.h"
#include "platform/guards.h"
#include "vellim/dialogs.h"

namespace vellim {
namespace {

constexpr const char* kTemplate = "NOTEITDLG";
constexpr uint32_t kControlMask = 0xFFFF;
constexpr uint32_t kLengthMask = 0xFFFF;  // an edit control's text has 16 bits to count its bytes

enum NoteControl : int32_t {
    STORE_BUTTON = 1,
    CANCEL_BUTTON = 2,
    ON_IMAGE_BOX = 1000,
    IN_HEADER_BOX = 1001,
    TRANSPARENT_BOX = 1002,
    OPAQUE_BOX = 1003,
    TEXT_EDIT = 1004,
    DELETE_BUTTON = 1005
};

// The note of the dialog that is open.
NoteRecord*& EditedNote() {
    thread_local NoteRecord* note = nullptr;
    return note;
}

// A block of the same size as `text` has, as far as 16 bits tell it, that ends with zero. The
// blocks of edit controls are the same as all others.
OwnedBlock CopyOfText(GlobalHandle text) {
    const LockedBlock from(text);
    const uint32_t size = from ? from.Size() & kLengthMask : 0;
    const std::string_view bytes = NoteTextIn(from).substr(0, size);
    OwnedBlock copy(GlobalAlloc(GHND, std::max(size, static_cast<uint32_t>(bytes.size()) + 1)));
    const LockedBlock to(copy.Get());
    if (!to) return {};
    bytes.copy(to.As<char>(), bytes.size());
    return copy;
}

LocalHandle EditedText(WindowHandle dialog) {
    return static_cast<LocalHandle>(SendDlgItemMessageA(dialog, TEXT_EDIT, EM_GETHANDLE, 0, 0));
}

// Gives the control another block, and frees the one that it had.
void SetEditedText(WindowHandle dialog, OwnedBlock text) {
    LocalFree(EditedText(dialog));
    if (SendDlgItemMessageA(dialog, TEXT_EDIT, EM_SETHANDLE, 0, text.Get()) != 0) text.Release();
}

void CheckOneOf(WindowHandle dialog, NoteControl checked, NoteControl unchecked) {
    CheckDlgButton(dialog, checked, 1);
    CheckDlgButton(dialog, unchecked, 0);
}

// No more can be typed than comes back with Store.
void FillDialog(WindowHandle dialog, const NoteRecord& note) {
    SendDlgItemMessageA(dialog, TEXT_EDIT, EM_LIMITTEXT, kLengthMask - 1, 0);
    CheckDlgButton(dialog, note.StoreInHeader != 0 ? IN_HEADER_BOX : ON_IMAGE_BOX, 1);
    CheckDlgButton(dialog, note.Opaque != 0 ? OPAQUE_BOX : TRANSPARENT_BOX, 1);
    if (note.Text == 0) return;
    if (OwnedBlock text = CopyOfText(note.Text)) SetEditedText(dialog, std::move(text));
}

// Without memory the dialog stays open, with the text still in it. One that is over, or none at
// all, changes nothing.
void StoreNote(WindowHandle dialog, NoteRecord& note) {
    if (EditedText(dialog) == 0 || IsDialogEnded(dialog) != 0) return;
    OwnedBlock text = CopyOfText(EditedText(dialog));
    OwnedBlock nothing(LocalAlloc(LHND, 1));
    if (!text || !nothing) return;
    SetEditedText(dialog, std::move(nothing));
    if (note.Text != 0) GlobalFree(note.Text);
    note.Text = text.Release();
    note.Opaque = static_cast<int32_t>(IsDlgButtonChecked(dialog, OPAQUE_BOX));
    note.StoreInHeader = static_cast<int32_t>(IsDlgButtonChecked(dialog, IN_HEADER_BOX));
    EndDialog(dialog, NOTE_DIALOG_STORE);
}

int32_t OnCommand(WindowHandle dialog, uint32_t control) {
    NoteRecord* note = EditedNote();
    switch (control) {
        case STORE_BUTTON:
            if (note != nullptr) StoreNote(dialog, *note);
            return 1;
        case CANCEL_BUTTON:
            EndDialog(dialog, NOTE_DIALOG_CANCEL);
            return 1;
        case DELETE_BUTTON:
            EndDialog(dialog, NOTE_DIALOG_DELETE);
            return 1;
        case ON_IMAGE_BOX:
            CheckOneOf(dialog, ON_IMAGE_BOX, IN_HEADER_BOX);
            return 1;
        case IN_HEADER_BOX:
            CheckOneOf(dialog, IN_HEADER_BOX, ON_IMAGE_BOX);
            return 1;
        case TRANSPARENT_BOX:
            CheckOneOf(dialog, TRANSPARENT_BOX, OPAQUE_BOX);
            return 1;
        case OPAQUE_BOX:
            CheckOneOf(dialog, OPAQUE_BOX, TRANSPARENT_BOX);
            return 1;
        default:
            return 0;
    }
}

enum class Outcome : uint8_t { kNothing, kStored, kNotBurned, kNotShown };

void DropNote(NoteRecord& note) {
    note.StoreInHeader = 0;
    if (note.Text != 0) GlobalFree(std::exchange(note.Text, 0));
}

Outcome EditNote(WindowHandle window, NoteRecord* note, POINT* point, const POINT* origin,
                 const ZoomRatios* zoom, uint32_t flags) {
    if (note == nullptr) return Outcome::kNothing;
    switch (RunNoteDialog(window, note)) {
        case NOTE_DIALOG_CANCEL:
            return Outcome::kNothing;
        case NOTE_DIALOG_DELETE:
            DropNote(*note);
            return Outcome::kNothing;
        case NOTE_DIALOG_STORE:
            break;
        default:
            return Outcome::kNotShown;
    }
    if (note->StoreInHeader == 0 && note->Dib == 0) return Outcome::kNothing;
    PlaceNoteBox(window, note, point, origin, zoom, flags);
    if (note->StoreInHeader != 0) return Outcome::kStored;
    const DibHandle burned = BurnNoteIntoDib(window, note);
    if (burned == 0) return Outcome::kNotBurned;
    note->Dib = burned;
    return Outcome::kStored;
}

}  // namespace

int32_t RunNoteDialog(WindowHandle owner, NoteRecord* note) {
    NoteRecord* const before = EditedNote();
    const int32_t end =
        DialogBoxParamA(0, kTemplate, owner, NoteDlgFn, reinterpret_cast<uintptr_t>(note));
    EditedNote() = before;
    return end;
}

}  // namespace vellim

int32_t NoteDlgFn(WindowHandle dialog, uint32_t message, uint32_t first, uintptr_t second) {
    using namespace vellim;
    if (message == WM_COMMAND) return OnCommand(dialog, first & kControlMask);
    if (message != WM_INITDIALOG) return 0;
    EditedNote() = reinterpret_cast<NoteRecord*>(second);
    if (EditedNote() != nullptr) FillDialog(dialog, *EditedNote());
    return 1;
}

int32_t Note(WindowHandle window, NoteRecord* note) {
    using namespace vellim;
    return EditNote(window, note, nullptr, nullptr, nullptr, 0) != Outcome::kNothing ? 1 : 0;
}

int32_t NotePlus(WindowHandle window, NoteRecord* note, POINT* point, const POINT* origin,
                 const ZoomRatios* zoom, uint32_t flags) {
    using namespace vellim;
    return EditNote(window, note, point, origin, zoom, flags) == Outcome::kStored ? 1 : 0;
}
