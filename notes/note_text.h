// A note's text, line by line. It ends before its first zero byte, or with its block.
//
// Measuring and drawing part it into lines differently. To measure, a line ends at each carriage
// return, and blank lines count. To draw, a run of line ends is one end, so that blank lines inside
// the text aren't drawn and what is below them moves up.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "platform/guards.h"
#include "vellim/graphics.h"
#include "vellim/notes.h"

namespace vellim {

// Empty for a block that couldn't be locked.
std::string_view NoteTextIn(const LockedBlock& text);

// A line to be measured. Its bytes below 32 take no width; one of nothing else is blank.
struct MeasuredLine {
    std::string_view bytes;
    bool isBlank = true;
    bool isLast = true;
};

// Takes the next line, with its carriage return, off the head of `rest`.
MeasuredLine ReadNoteLine(std::string_view& rest);

// Takes the next line to be drawn, with the line ends behind it, off the head of `rest`; nothing at
// the text's end.
std::optional<std::string_view> TakeDrawnLine(std::string_view& rest);

// How the lines of a note are drawn: the first at `At`, each of `MostBytes` at most, as far as they
// lie in `Clip`.
struct NoteLines {
    POINT At{};
    RECT Clip{};
    size_t MostBytes = std::string_view::npos;
    uint32_t Options = 0;  // of TextOption
};
void DrawNoteLines(DeviceContextHandle context, std::string_view text, const NoteLines& lines);

// Draws the text of a note over an image, from the upper left corner of `box`: opaque or not as the
// note tells, which the context keeps.
void DrawNoteIn(DeviceContextHandle context, const RECT& box, const NoteRecord& note);

// Whether there is a note that lies over the image, and isn't part of its pixels.
bool LiesOverImage(const NoteRecord* note);

}  // namespace vellim
