// TIFFINFO: what a stored image is, before it is loaded.
#pragma once

#include "resources/dialog_template.h"

namespace vellim {

inline constexpr ControlTemplate kTiffInfoControls[] = {
    {111, CONTROL_GROUP_BOX, "User informations", {12, 6, 166, 54}},
    {121, CONTROL_TEXT, "Title", {18, 22, 26, 10}},
    {205, CONTROL_TEXT, "No title defined", {52, 22, 124, 10}},
    {119, CONTROL_TEXT, "Artist", {18, 34, 26, 10}},
    {206, CONTROL_TEXT, "No artist defined", {52, 34, 122, 10}},
    {103, CONTROL_TEXT, "Date", {18, 46, 28, 10}},
    {207, CONTROL_TEXT, "No date defined", {52, 46, 124, 10}},
    {112, CONTROL_GROUP_BOX, "Dimensions", {12, 62, 80, 52}},
    {107, CONTROL_TEXT, "Width", {16, 74, 30, 10}},
    {200, CONTROL_RIGHT_TEXT, "0", {51, 74, 35, 10}},
    {126, CONTROL_TEXT, "Height", {16, 86, 34, 10}},
    {201, CONTROL_RIGHT_TEXT, "0", {51, 86, 35, 10}},
    {130, CONTROL_TEXT, "Strips", {16, 98, 48, 10}},
    {210, CONTROL_RIGHT_TEXT, "1", {51, 98, 35, 10}},
    {115, CONTROL_GROUP_BOX, "Colors", {98, 62, 80, 52}},
    {109, CONTROL_TEXT, "Planes", {102, 74, 30, 10}},
    {202, CONTROL_RIGHT_TEXT, "1", {138, 74, 32, 10}},
    {110, CONTROL_TEXT, "Bits", {102, 86, 30, 10}},
    {203, CONTROL_RIGHT_TEXT, "1", {140, 86, 30, 10}},
    {204, CONTROL_TEXT, "Monochrom", {102, 98, 74, 10}},
    {125, CONTROL_GROUP_BOX, "Compression", {183, 6, 80, 54}},
    {208, CONTROL_TEXT, "No compression", {189, 23, 70, 10}},
    {128, CONTROL_TEXT, "Predictor", {189, 38, 36, 10}},
    {209, CONTROL_RIGHT_TEXT, "None", {227, 38, 32, 10}},
    {1, CONTROL_PUSH_BUTTON, "Load", {191, 66, 64, 20}, CONTROL_TAB_STOP},
    {2, CONTROL_PUSH_BUTTON, "Cancel", {191, 93, 64, 20}, CONTROL_TAB_STOP}};

inline constexpr DialogTemplate kTiffInfoDialog = {
    "TIFFINFO",       "Noname.tif", {"Helv", 2}, {40, 70, 273, 126}, kPopup | kCaption | kFontGiven,
    kTiffInfoControls};

}  // namespace vellim
