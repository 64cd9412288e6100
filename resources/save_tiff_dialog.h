// SAVETIFF: how a picture is to be written. Its radio buttons are checked by the dialog procedure.
#pragma once

#include "resources/dialog_template.h"

namespace vellim {

inline constexpr ControlTemplate kSaveTiffControls[] = {
    {200, CONTROL_GROUP_BOX, "Compression mode", {5, 0, 110, 114}},
    {201, CONTROL_RADIO_BUTTON, "No compression", {10, 15, 95, 10}, kFirstInGroup},
    {202, CONTROL_RADIO_BUTTON, "PackBits", {10, 25, 65, 10}},
    {203, CONTROL_RADIO_BUTTON, "LZW", {10, 35, 65, 10}},
    {204, CONTROL_RADIO_BUTTON, "Differencing and LZW", {10, 45, 100, 10}},
    {205, CONTROL_RADIO_BUTTON, "CCITT G3 1D No EOL", {10, 55, 100, 10}},
    {206, CONTROL_RADIO_BUTTON, "CCITT G3 1D EOL", {10, 65, 100, 10}},
    {207, CONTROL_RADIO_BUTTON, "CCITT G3 2D", {10, 75, 80, 10}},
    {208, CONTROL_RADIO_BUTTON, "CCITT G4", {10, 85, 80, 10}},
    {209, CONTROL_RADIO_BUTTON, "JPEG", {10, 96, 80, 10}},
    {211, CONTROL_TEXT, "Title:", {125, 10, 25, 10}, CONTROL_GROUP},
    {250, CONTROL_EDIT, "", {165, 10, 100, 10}, CONTROL_TAB_STOP},
    {212, CONTROL_TEXT, "Artist:", {125, 25, 25, 10}},
    {251, CONTROL_EDIT, "", {165, 25, 100, 10}, CONTROL_TAB_STOP},
    {118, CONTROL_GROUP_BOX, "Save as ...", {126, 42, 75, 58}},
    {260, CONTROL_RADIO_BUTTON, "Monochrome", {131, 56, 67, 9}, kFirstInGroup},
    {261, CONTROL_RADIO_BUTTON, "Greyscale", {131, 69, 65, 10}},
    {262, CONTROL_RADIO_BUTTON, "Palette color", {131, 82, 67, 10}},
    {1, CONTROL_PUSH_BUTTON, "OK", {211, 53, 50, 14}, kFirstInGroup},
    {2, CONTROL_PUSH_BUTTON, "Cancel", {211, 80, 50, 14}, CONTROL_TAB_STOP}};

inline constexpr DialogTemplate kSaveTiffDialog = {"SAVETIFF",
                                                   "Saving TIFF file",
                                                   {"Helv", 2},
                                                   {11, 26, 271, 121},
                                                   kPopup | kCaption | kFontGiven,
                                                   kSaveTiffControls};

}  // namespace vellim
