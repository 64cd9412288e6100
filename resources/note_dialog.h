// NOTEITDLG: an image's note, and whether it goes beside the pixels or into them.
#pragma once

#include "resources/dialog_template.h"

namespace vellim {

inline constexpr ControlTemplate kNoteControls[] = {
    {1004,
     CONTROL_EDIT,
     "",
     {7, 6, 176, 79},
     kFirstInGroup | CONTROL_MULTI_LINE | CONTROL_AUTO_SCROLL | CONTROL_BORDER},
    {1000, CONTROL_CHECK_BOX, "Stored text on Image", {9, 89, 84, 10}, kFirstInGroup},
    {1001, CONTROL_CHECK_BOX, "Store text in header", {8, 101, 84, 10}, CONTROL_TAB_STOP},
    {1002, CONTROL_CHECK_BOX, "Transparent", {123, 89, 56, 10}, kFirstInGroup},
    {1003, CONTROL_CHECK_BOX, "Opaque", {123, 100, 53, 10}, CONTROL_TAB_STOP},
    {2, CONTROL_PUSH_BUTTON, "Cancel", {195, 4, 38, 14}, kFirstInGroup},
    {1, CONTROL_PUSH_BUTTON, "Store", {195, 28, 38, 14}, kFirstInGroup},
    {1005, CONTROL_PUSH_BUTTON, "Delete", {195, 51, 39, 14}, kFirstInGroup}};

inline constexpr DialogTemplate kNoteDialog = {
    "NOTEITDLG",
    "Notes",
    {"MS Sans Serif", 8},
    {50, 50, 241, 116},
    kPopup | kVisible | kCaption | kSystemMenu | kModalFrame | kFontGiven | kLocalEdit,
    kNoteControls};

}  // namespace vellim
