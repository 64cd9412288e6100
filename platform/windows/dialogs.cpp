// The table of dialogs and controls, and a dialog's life: made from its template, told of that,
// shown by the desktop driver until its procedure ends it.
#include "platform/windows/dialogs.h"

#include <algorithm>
#include <atomic>
#include <new>
#include <thread>

#include "platform/handle_table.h"
#include "platform/windows/desktop.h"
#include "resources/dialog_templates.h"

namespace vellim {
namespace {

struct NamedWindow {
    std::atomic<std::thread::id> thread;  // the rest is for this one's eyes
    Dialog* dialog = nullptr;
    Control* control = nullptr;  // null: the dialog itself
};

constinit HandleTable<NamedWindow, HandleKind::kDialogWindow> windows;

NamedWindow* FindHere(WindowHandle window) {
    NamedWindow* found = windows.Find(window);
    return found != nullptr && found->thread == std::this_thread::get_id() ? found : nullptr;
}

bool GiveName(DialogWindow& window, Dialog* dialog, Control* control) {
    const auto [handle, entry] = windows.Reserve();
    if (handle == 0) return false;
    entry->thread = std::this_thread::get_id();
    entry->dialog = dialog;
    entry->control = control;
    windows.Publish(handle);
    window.handle = handle;
    return true;
}

void TakeName(const DialogWindow& window) {
    NamedWindow* found = FindHere(window.handle);
    if (found == nullptr || !windows.Withdraw(window.handle)) return;
    found->thread = std::thread::id();
    windows.Recycle(window.handle);
}

// The names of a dialog and its controls, for the length of a scope.
class DialogNames {
  public:
    explicit DialogNames(Dialog& dialog) : dialog_(dialog) {}
    ~DialogNames() {
        for (const Control& control : dialog_.controls)
            TakeName(control.window);
        TakeName(dialog_.window);
    }
    DialogNames(const DialogNames&) = delete;
    DialogNames& operator=(const DialogNames&) = delete;

    [[nodiscard]] bool Give() {
        return GiveName(dialog_.window, &dialog_, nullptr) &&
               std::ranges::all_of(dialog_.controls, [this](Control& control) {
                   return GiveName(control.window, &dialog_, &control);
               });
    }

  private:
    Dialog& dialog_;
};

// The focus, put back where it was at the end of a scope.
class FocusKept {
  public:
    FocusKept() : before_(GetFocus()) {}
    ~FocusKept() { SetFocus(before_); }
    FocusKept(const FocusKept&) = delete;
    FocusKept& operator=(const FocusKept&) = delete;

  private:
    WindowHandle before_;
};

bool MakeControls(Dialog& dialog) {
    try {
        dialog.controls.resize(dialog.made->controls.size());
    } catch (const std::bad_alloc&) {
        return false;
    }
    for (size_t i = 0; i < dialog.controls.size(); i++) {
        Control& control = dialog.controls[i];
        control.made = &dialog.made->controls[i];
        if (!SetText(control.window.text, control.made->text)) return false;
    }
    return true;
}

// The procedure says whether the focus is to go where the dialog would put it.
void TellOfTheStart(const Dialog& dialog, uintptr_t parameter) {
    const auto firstStop = [&] {
        const Control* stop = FirstTabStop(dialog);
        return stop != nullptr ? stop->window.handle : 0;
    };
    const int32_t isLeftToUs =
        dialog.procedure(dialog.window.handle, WM_INITDIALOG, firstStop(), parameter);
    if (isLeftToUs != 0 && !dialog.isEnded) SetFocus(firstStop());
}

constexpr int32_t kNotShown = -1;

int32_t RunDialog(Dialog& dialog, uintptr_t parameter) {
    const DesktopDriver desktop = CurrentDesktop();
    if (desktop.RunDialog == nullptr) return kNotShown;
    DialogNames names(dialog);
    if (!SetText(dialog.window.text, dialog.made->caption)) return kNotShown;
    if (!MakeControls(dialog) || !names.Give()) return kNotShown;
    const FocusKept focus;
    TellOfTheStart(dialog, parameter);
    if (!dialog.isEnded) desktop.RunDialog(dialog.window.handle);
    return dialog.isEnded ? dialog.result : kNotShown;
}

}  // namespace

Dialog* FindDialog(WindowHandle dialog) {
    const NamedWindow* found = FindHere(dialog);
    return found != nullptr && found->control == nullptr ? found->dialog : nullptr;
}

Control* FindControl(WindowHandle control) {
    const NamedWindow* found = FindHere(control);
    return found != nullptr ? found->control : nullptr;
}

DialogWindow* FindDialogWindow(WindowHandle window) {
    const NamedWindow* found = FindHere(window);
    if (found == nullptr) return nullptr;
    return found->control != nullptr ? &found->control->window : &found->dialog->window;
}

Control* FindControl(WindowHandle dialog, int32_t id) {
    Dialog* found = FindDialog(dialog);
    if (found == nullptr || id == kNoControlId) return nullptr;
    const auto control =
        std::ranges::find(found->controls, id, [](const Control& c) { return c.made->id; });
    return control != found->controls.end() ? &*control : nullptr;
}

const Control* FirstTabStop(const Dialog& dialog) {
    const auto stop = std::ranges::find_if(dialog.controls, [](const Control& control) {
        return (control.made->style & CONTROL_TAB_STOP) != 0 && control.window.isEnabled;
    });
    return stop != dialog.controls.end() ? &*stop : nullptr;
}

uint32_t LiveDialogWindows() {
    return windows.InUse();
}

}  // namespace vellim

// The templates are the library's own, whatever the module.
int32_t DialogBoxParamA(uint32_t /*module*/, const char* templateName, WindowHandle owner,
                        DialogProc procedure, uintptr_t parameter) {
    using namespace vellim;
    const DialogTemplate* made = FindDialogTemplate(templateName);
    if (made == nullptr || procedure == nullptr) return kNotShown;
    Dialog dialog;
    dialog.made = made;
    dialog.owner = owner;
    dialog.procedure = procedure;
    return RunDialog(dialog, parameter);
}

int32_t EndDialog(WindowHandle dialog, int32_t result) {
    vellim::Dialog* found = vellim::FindDialog(dialog);
    if (found == nullptr || found->isEnded) return 0;
    found->isEnded = true;
    found->result = result;
    return 1;
}

// A driver that asks for a dialog that is no more is not kept waiting.
int32_t IsDialogEnded(WindowHandle dialog) {
    const vellim::Dialog* found = vellim::FindDialog(dialog);
    return found == nullptr || found->isEnded ? 1 : 0;
}
