// What a dialog is made from: its frame and its controls in their order.
#pragma once

#include <cstdint>
#include <span>

#include "vellim/dialogs.h"

namespace vellim {

// The style word of a dialog's frame.
enum DialogStyle : uint32_t {
    kLocalEdit = 0x20,  // the blocks of edit controls are local memory
    kFontGiven = 0x40,
    kModalFrame = 0x80,
    kSystemMenu = 0x80000,
    kCaption = 0xC00000,
    kVisible = 0x10000000,
    kPopup = 0x80000000
};

// In dialog units.
struct TemplatePlace {
    int32_t x;
    int32_t y;
    int32_t width;
    int32_t height;
};

struct TemplateFont {
    const char* name;
    int32_t points;
};

inline constexpr int32_t kNoControlId = -1;
inline constexpr uint32_t kFirstInGroup = CONTROL_TAB_STOP | CONTROL_GROUP;

struct ControlTemplate {
    int32_t id;
    ControlKind kind;
    const char* text;
    TemplatePlace place;
    uint32_t style = 0;  // of ControlStyle
};

struct DialogTemplate {
    const char* name;
    const char* caption;
    TemplateFont font;
    TemplatePlace place;
    uint32_t style;  // of DialogStyle
    std::span<const ControlTemplate> controls;
};

}  // namespace vellim
