#include "note_dialog_answer.h"

#include <cstring>

#include "handles.h"
#include "vellim/dialogs.h"
#include "vellim/windows.h"

namespace vellim::tool {
namespace {

// What stands in the dialog "NOTEITDLG".
enum NoteControl : int32_t {
    kStore = 1,
    kOnImage = 1000,
    kInHeader = 1001,
    kTransparent = 1002,
    kOpaque = 1003,
    kText = 1004
};

// Text is measured on a window, whatever its size.
constexpr int32_t kWindowSide = 1;

using OwnedWindow = Owned<WindowHandle, 0U, &DestroyWindow>;

// What the dialog under way is answered with.
struct DialogAnswer {
    const NoteAnswer* note = nullptr;
    bool onImage = false;
};

DialogAnswer& CurrentAnswer() {
    static DialogAnswer answer;
    return answer;
}

void AnswerDialog(WindowHandle dialog) {
    const DialogAnswer& answer = CurrentAnswer();
    if (answer.note == nullptr) return;
    ClickControl(dialog, answer.onImage ? kOnImage : kInHeader);
    ClickControl(dialog, answer.note->opaque ? kOpaque : kTransparent);
    if (TypeIntoControl(dialog, kText, answer.note->text.c_str()) == 0) return;
    ClickControl(dialog, kStore);
}

// The driver of the process, for the length of a scope.
class AnsweringDriver {
  public:
    explicit AnsweringDriver(const DialogAnswer& answer) {
        CurrentAnswer() = answer;
        const DesktopDriver driver = {nullptr, nullptr, AnswerDialog};
        SetDesktopDriver(&driver);
    }
    ~AnsweringDriver() {
        SetDesktopDriver(nullptr);
        CurrentAnswer() = {};
    }
    AnsweringDriver(const AnsweringDriver&) = delete;
    AnsweringDriver& operator=(const AnsweringDriver&) = delete;
};

bool RunNote(const DialogAnswer& answer, NoteRecord& note) {
    const OwnedWindow window(CreateMemoryWindow(kWindowSide, kWindowSide, 0));
    if (!window) return false;
    const AnsweringDriver driver(answer);
    constexpr POINT kOrigin = {0, 0};
    POINT at = answer.note->at;
    return NotePlus(window.Get(), &note, &at, &kOrigin, nullptr, NOTE_WITHOUT_DENSITY) != 0;
}

}  // namespace

std::string TextOf(const NoteRecord& note) {
    const LockedBlock block(note.Text);
    if (block.Bytes() == nullptr) return {};
    const auto* const text = reinterpret_cast<const char*>(block.Bytes());
    return {text, strnlen(text, GlobalSize(note.Text))};
}

// With no scale in play, the image plays no part in the box.
bool WriteNote(const NoteAnswer& answer, OwnedNote& note) {
    return RunNote({&answer, false}, note.record);
}

DibHandle BurnNote(const NoteAnswer& answer, DibHandle dib) {
    OwnedNote note;
    note.record.Dib = dib;
    return RunNote({&answer, true}, note.record) ? note.record.Dib : 0;
}

}  // namespace vellim::tool
