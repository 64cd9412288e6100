// CALSINFO: the records of a CALS file's header.
#pragma once

#include "resources/dialog_template.h"

namespace vellim {

inline constexpr ControlTemplate kCalsInfoControls[] = {
    {1, CONTROL_DEFAULT_BUTTON, "OK", {286, 7, 40, 14}, CONTROL_TAB_STOP},
    {2, CONTROL_PUSH_BUTTON, "Cancel", {242, 7, 40, 14}, CONTROL_TAB_STOP},
    {111, CONTROL_TEXT, "File name", {7, 10, 226, 8}, CONTROL_NO_PREFIX | CONTROL_GROUP},
    {1001,
     CONTROL_LIST_BOX,
     "",
     {4, 28, 323, 161},
     CONTROL_BORDER | CONTROL_VERTICAL_BAR | CONTROL_TAB_STOP}};

inline constexpr DialogTemplate kCalsInfoDialog = {
    "CALSINFO",
    "CALS info",
    {"MS Sans Serif", 8},
    {40, 70, 331, 191},
    kPopup | kVisible | kCaption | kSystemMenu | kModalFrame | kFontGiven,
    kCalsInfoControls};

}  // namespace vellim
