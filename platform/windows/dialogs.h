// The dialogs under way: what a handle names, and what the calls about them share.
//
// A dialog lives as long as DialogBoxParamA runs, so that whatever its procedure or the driver does
// within finds it where it was. Only the thread of that call finds it at all: to another its
// handles are no handles.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/windows/window_text.h"
#include "resources/dialog_template.h"
#include "vellim/dialogs.h"
#include "vellim/text.h"

namespace vellim {

// What dialogs and controls have in common.
struct DialogWindow {
    WindowHandle handle = 0;
    bool isEnabled = true;
    WindowText text;
};

struct Control {
    DialogWindow window;
    const ControlTemplate* made = nullptr;
    bool isChecked = false;
    uintptr_t longestTyped = 0;      // of an edit control, 0: any length
    std::vector<std::string> lines;  // of a list box
    FontHandle font = 0;             // 0: the dialog's
    bool isRedrawn = true;
};

struct Dialog {
    DialogWindow window;
    const DialogTemplate* made = nullptr;
    WindowHandle owner = 0;
    DialogProc procedure = nullptr;
    std::vector<Control> controls;  // in the template's order, never moved
    bool isEnded = false;
    int32_t result = 0;
};

// Null for a number that is none, or belongs to another thread.
Dialog* FindDialog(WindowHandle dialog);
Control* FindControl(WindowHandle control);
DialogWindow* FindDialogWindow(WindowHandle window);

// Null without a control of this number.
Control* FindControl(WindowHandle dialog, int32_t id);

// Where the tab key goes first, null where it goes nowhere.
const Control* FirstTabStop(const Dialog& dialog);

// Dialogs and controls of the whole process.
uint32_t LiveDialogWindows();

}  // namespace vellim
