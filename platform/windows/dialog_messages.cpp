// What is said to dialogs and controls by messages: a dialog's go to its procedure, those to edit
// controls and list boxes are handled here.
#include <cstring>
#include <new>

#include "platform/windows/dialogs.h"

namespace vellim {
namespace {

// Of a list box, as the signed number that its results are.
constexpr auto kNoLine = static_cast<uintptr_t>(-1);

uintptr_t AddLine(Control& list, uintptr_t text) {
    const auto* line = reinterpret_cast<const char*>(text);
    if (line == nullptr) return kNoLine;
    try {
        list.lines.emplace_back(line);
    } catch (const std::bad_alloc&) {
        return kNoLine;
    }
    return list.lines.size() - 1;
}

uintptr_t CopyLine(const Control& list, uintptr_t line, uintptr_t room) {
    auto* to = reinterpret_cast<char*>(room);
    if (line >= list.lines.size() || to == nullptr) return kNoLine;
    const std::string& text = list.lines[line];
    std::memcpy(to, text.c_str(), text.size() + 1);
    return text.size();
}

uintptr_t SendToListBox(Control& list, uint32_t message, uintptr_t first, uintptr_t second) {
    switch (message) {
        case LB_ADDSTRING:
            return AddLine(list, second);
        case LB_RESETCONTENT:
            list.lines.clear();
            return 1;
        case LB_GETTEXT:
            return CopyLine(list, first, second);
        case LB_GETTEXTLEN:
            return first < list.lines.size() ? list.lines[first].size() : kNoLine;
        case LB_GETCOUNT:
            return list.lines.size();
        default:
            return 0;
    }
}

uintptr_t SendToEdit(Control& edit, uint32_t message, uintptr_t first, uintptr_t second) {
    switch (message) {
        case EM_SETHANDLE:
            return TakeBlock(edit.window.text, second) ? 1 : 0;
        case EM_GETHANDLE:
            return LendBlock(edit.window.text);
        case EM_LIMITTEXT:
            edit.longestTyped = first;
            return 1;
        default:
            return 0;
    }
}

uintptr_t SendToControl(Control& control, uint32_t message, uintptr_t first, uintptr_t second) {
    switch (message) {
        case WM_SETREDRAW:
            control.isRedrawn = first != 0;
            return 1;
        case WM_SETFONT:
            control.font = static_cast<FontHandle>(first);
            return 1;
        default:
            break;
    }
    const ControlKind kind = control.made->kind;
    if (kind == CONTROL_EDIT) return SendToEdit(control, message, first, second);
    return kind == CONTROL_LIST_BOX ? SendToListBox(control, message, first, second) : 0;
}

}  // namespace
}  // namespace vellim

uintptr_t SendMessageA(WindowHandle window, uint32_t message, uintptr_t first, uintptr_t second) {
    using namespace vellim;
    if (Control* control = FindControl(window); control != nullptr)
        return SendToControl(*control, message, first, second);
    const Dialog* dialog = FindDialog(window);
    if (dialog == nullptr) return 0;
    return static_cast<uintptr_t>(
        dialog->procedure(window, message, static_cast<uint32_t>(first), second));
}

uintptr_t SendDlgItemMessageA(WindowHandle dialog, int32_t control, uint32_t message,
                              uintptr_t first, uintptr_t second) {
    return SendMessageA(GetDlgItem(dialog, control), message, first, second);
}
