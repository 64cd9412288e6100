// CALSEDIT: the header of a CALS file about to be written, its texts to be filled in.
#pragma once

#include "resources/dialog_template.h"

namespace vellim {

inline constexpr uint32_t kCalsTextLine = CONTROL_BORDER | CONTROL_AUTO_SCROLL | CONTROL_TAB_STOP;

inline constexpr ControlTemplate kCalsEditControls[] = {
    {1, CONTROL_DEFAULT_BUTTON, "OK", {282, 23, 50, 14}, CONTROL_TAB_STOP},
    {2, CONTROL_PUSH_BUTTON, "Cancel", {282, 47, 50, 14}, CONTROL_TAB_STOP},
    {1013, CONTROL_TEXT, "File name:", {8, 8, 256, 8}},
    {111, CONTROL_TEXT, "rtype: 1", {8, 24, 236, 8}},
    {1003, CONTROL_TEXT, "rorient: 090,270", {8, 36, 236, 8}},
    {1004, CONTROL_TEXT, "rpelcnt: 000000,000000", {8, 48, 236, 8}},
    {1005, CONTROL_TEXT, "rdensty: 0000", {8, 60, 236, 8}},
    {kNoControlId, CONTROL_TEXT, "srcdocid:", {8, 78, 32, 8}},
    {kNoControlId, CONTROL_TEXT, "dstdocid:", {8, 94, 32, 8}},
    {kNoControlId, CONTROL_TEXT, "txtfilid:", {8, 110, 32, 8}},
    {kNoControlId, CONTROL_TEXT, "figid:", {8, 126, 32, 8}},
    {kNoControlId, CONTROL_TEXT, "scrgph:", {8, 142, 32, 8}},
    {kNoControlId, CONTROL_TEXT, "doccls:", {8, 158, 32, 8}},
    {kNoControlId, CONTROL_TEXT, "notes:", {8, 174, 32, 8}},
    {1006, CONTROL_EDIT, "", {47, 75, 292, 12}, kCalsTextLine},
    {1007, CONTROL_EDIT, "", {47, 91, 292, 12}, kCalsTextLine},
    {1008, CONTROL_EDIT, "", {47, 107, 292, 12}, kCalsTextLine},
    {1009, CONTROL_EDIT, "", {47, 123, 292, 12}, kCalsTextLine},
    {1010, CONTROL_EDIT, "", {47, 139, 292, 12}, kCalsTextLine},
    {1011, CONTROL_EDIT, "", {47, 155, 292, 12}, kCalsTextLine},
    {1012, CONTROL_EDIT, "", {47, 171, 292, 12}, kCalsTextLine}};

inline constexpr DialogTemplate kCalsEditDialog = {
    "CALSEDIT",
    "Save CALS ",
    {"MS Sans Serif", 8},
    {40, 70, 341, 208},
    kPopup | kVisible | kCaption | kSystemMenu | kModalFrame | kFontGiven,
    kCalsEditControls};

}  // namespace vellim
