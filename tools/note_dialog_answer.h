// Notes made by the library: it measures and burns them behind the dialog in which a person writes
// one, and here the dialog is answered in a person's place.
#pragma once

#include <string>
#include <utility>

#include "vellim/notes.h"
#include "vellim/platform.h"

namespace vellim::tool {

// A note's record, whose text goes with it.
class OwnedNote {
  public:
    OwnedNote() = default;
    ~OwnedNote() { GlobalFree(record.Text); }
    OwnedNote(OwnedNote&& other) noexcept : record(std::exchange(other.record, {})) {}
    OwnedNote& operator=(OwnedNote&& other) noexcept {
        std::swap(record, other.record);
        return *this;
    }
    OwnedNote(const OwnedNote&) = delete;
    OwnedNote& operator=(const OwnedNote&) = delete;

    NoteRecord record = {};
};

// A note as a person writes it.
struct NoteAnswer {
    std::string text;  // as MakeNoteText has it
    bool opaque = false;
    POINT at = {};  // its upper left corner, in pixels of the image
};

// What the text of a note is; empty if it can't be had.
std::string TextOf(const NoteRecord& note);

// Makes the note, with its box. False if memory is short.
bool WriteNote(const NoteAnswer& answer, OwnedNote& note);

// Burns the note into a DIB. 0 if memory is short; else a new DIB, to be freed.
DibHandle BurnNote(const NoteAnswer& answer, DibHandle dib);

}  // namespace vellim::tool
