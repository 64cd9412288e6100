// Dialogs and their controls as their procedure sees them: texts, checks, what is enabled, and the
// focus.
#include "platform/windows/dialogs.h"

namespace vellim {
namespace {

thread_local WindowHandle focus = 0;  // may be gone or disabled by now

bool CanHaveFocus(WindowHandle window) {
    const DialogWindow* found = FindDialogWindow(window);
    return found != nullptr && found->isEnabled;
}

Control* FindBox(WindowHandle dialog, int32_t id) {
    Control* found = FindControl(dialog, id);
    if (found == nullptr) return nullptr;
    const ControlKind kind = found->made->kind;
    return kind == CONTROL_CHECK_BOX || kind == CONTROL_RADIO_BUTTON ? found : nullptr;
}

}  // namespace
}  // namespace vellim

WindowHandle GetDlgItem(WindowHandle dialog, int32_t control) {
    const vellim::Control* found = vellim::FindControl(dialog, control);
    return found != nullptr ? found->window.handle : 0;
}

int32_t SetWindowTextA(WindowHandle window, const char* text) {
    vellim::DialogWindow* found = vellim::FindDialogWindow(window);
    return found != nullptr && text != nullptr && vellim::SetText(found->text, text) ? 1 : 0;
}

uint32_t GetWindowTextA(WindowHandle window, char* text, int32_t bytes) {
    const vellim::WindowText none;
    const vellim::DialogWindow* found = vellim::FindDialogWindow(window);
    return vellim::CopyText(found != nullptr ? found->text : none, text, bytes);
}

int32_t SetDlgItemTextA(WindowHandle dialog, int32_t control, const char* text) {
    return SetWindowTextA(GetDlgItem(dialog, control), text);
}

uint32_t GetDlgItemTextA(WindowHandle dialog, int32_t control, char* text, int32_t bytes) {
    return GetWindowTextA(GetDlgItem(dialog, control), text, bytes);
}

int32_t CheckDlgButton(WindowHandle dialog, int32_t control, uint32_t check) {
    vellim::Control* box = vellim::FindBox(dialog, control);
    if (box == nullptr) return 0;
    box->isChecked = check != 0;
    return 1;
}

uint32_t IsDlgButtonChecked(WindowHandle dialog, int32_t control) {
    const vellim::Control* box = vellim::FindBox(dialog, control);
    return box != nullptr && box->isChecked ? 1 : 0;
}

// Nothing is checked or unchecked for a number that is no box between the two.
int32_t CheckRadioButton(WindowHandle dialog, int32_t first, int32_t last, int32_t check) {
    using namespace vellim;
    if (check < first || check > last || FindBox(dialog, check) == nullptr) return 0;
    for (const Control& control : FindDialog(dialog)->controls) {
        const int32_t id = control.made->id;
        if (id >= first && id <= last) CheckDlgButton(dialog, id, id == check ? 1 : 0);
    }
    return 1;
}

int32_t EnableWindow(WindowHandle window, int32_t enable) {
    vellim::DialogWindow* found = vellim::FindDialogWindow(window);
    if (found == nullptr) return 0;
    const bool wasEnabled = found->isEnabled;
    found->isEnabled = enable != 0;
    return wasEnabled ? 0 : 1;
}

int32_t IsWindowEnabled(WindowHandle window) {
    const vellim::DialogWindow* found = vellim::FindDialogWindow(window);
    return found != nullptr && found->isEnabled ? 1 : 0;
}

// 0 takes the focus away. A window that can't have it gives 0 and changes nothing.
WindowHandle SetFocus(WindowHandle window) {
    using namespace vellim;
    if (window != 0 && !CanHaveFocus(window)) return 0;
    const WindowHandle before = GetFocus();
    focus = window;
    return before;
}

WindowHandle GetFocus() {
    using namespace vellim;
    return CanHaveFocus(focus) ? focus : 0;
}
