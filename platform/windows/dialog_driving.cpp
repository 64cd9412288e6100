// What a desktop driver calls: what there is to be shown, and what a person does to it.
#include <algorithm>
#include <cstring>

#include "platform/windows/dialogs.h"

namespace vellim {
namespace {

// What happened to a control, in the high 16 bits of WM_COMMAND's first word.
enum Notification : uint32_t { kClicked = 0, kChanged = 0x0300 };

void Notify(WindowHandle dialog, const Control& control, Notification what) {
    constexpr uint32_t idMask = 0xFFFF;
    const uint32_t id = static_cast<uint32_t>(control.made->id) & idMask;
    SendMessageA(dialog, WM_COMMAND, id | what << 16U, control.window.handle);
}

bool IsPressed(ControlKind kind) {
    return kind == CONTROL_PUSH_BUTTON || kind == CONTROL_DEFAULT_BUTTON ||
           kind == CONTROL_CHECK_BOX || kind == CONTROL_RADIO_BUTTON;
}

// A control that a person can reach; null where there is none.
Control* FindReachable(WindowHandle dialog, int32_t id) {
    const Dialog* found = FindDialog(dialog);
    if (found == nullptr || found->isEnded || !found->window.isEnabled) return nullptr;
    Control* control = FindControl(dialog, id);
    return control != nullptr && control->window.isEnabled ? control : nullptr;
}

RECT RectOf(const TemplatePlace& place) {
    return {place.x, place.y, place.x + place.width, place.y + place.height};
}

}  // namespace
}  // namespace vellim

int32_t GetDialogFacts(WindowHandle dialog, DialogFacts* facts) {
    if (facts == nullptr) return 0;
    *facts = {};
    const vellim::Dialog* found = vellim::FindDialog(dialog);
    if (found == nullptr) return 0;
    const vellim::DialogTemplate& made = *found->made;
    *facts = {vellim::RectOf(made.place), made.font.name, made.font.points,
              static_cast<int32_t>(made.controls.size()), found->owner};
    return 1;
}

int32_t GetDialogControl(WindowHandle dialog, int32_t index, DialogControl* control) {
    if (control == nullptr) return 0;
    *control = {};
    const vellim::Dialog* found = vellim::FindDialog(dialog);
    if (found == nullptr || index < 0) return 0;
    const auto at = static_cast<size_t>(index);
    if (at >= found->controls.size()) return 0;
    const vellim::Control& asked = found->controls[at];
    const vellim::ControlTemplate& made = *asked.made;
    *control = {asked.window.handle, made.id, made.kind, made.style, vellim::RectOf(made.place)};
    return 1;
}

// A check box changes before the procedure hears of it, which may then set it. Radio buttons are
// the procedure's to check.
int32_t ClickControl(WindowHandle dialog, int32_t control) {
    using namespace vellim;
    Control* pressed = FindReachable(dialog, control);
    if (pressed == nullptr || !IsPressed(pressed->made->kind)) return 0;
    if (pressed->made->kind == CONTROL_CHECK_BOX) pressed->isChecked = !pressed->isChecked;
    Notify(dialog, *pressed, kClicked);
    return 1;
}

int32_t TypeIntoControl(WindowHandle dialog, int32_t control, const char* text) {
    using namespace vellim;
    Control* edit = FindReachable(dialog, control);
    if (edit == nullptr || edit->made->kind != CONTROL_EDIT || text == nullptr) return 0;
    const uintptr_t longest = edit->longestTyped;
    const size_t length = longest != 0 ? strnlen(text, longest) : std::strlen(text);
    if (!SetText(edit->window.text, {text, length})) return 0;
    Notify(dialog, *edit, kChanged);
    return 1;
}
