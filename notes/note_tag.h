// A note as the text of a tag: "~,1,O,10,20,110,36,5,Hi" is an opaque note with its box and the
// size of its text's block; all behind the eighth comma is text.
#pragma once

#include <array>
#include <optional>
#include <string_view>

#include "vellim/notes.h"

namespace vellim {

struct NoteTagText {
    std::array<char, NOTE_TAG_BYTES + 1> bytes{};  // ends with zero
    uint32_t length = 0;                           // without it
};

// Nothing for a note whose text can't be had. What is too long is cut.
std::optional<NoteTagText> BuildNoteTagText(const NoteRecord& note);

// 1, or 0 with `note` as it was: a text that isn't a note's, that ends before its fifth number
// does, or without memory. `value` ends before its first zero byte.
int32_t ParseNoteTagText(std::string_view value, NoteRecord* note);

// Takes a number and its comma off the head of `rest`; nothing where there is no comma. Any byte
// counts as the digit that it is so many places behind '0', and a sign has no meaning. A number
// beyond 32 bits stays at their edge.
std::optional<int32_t> ReadNoteNumber(std::string_view& rest);

}  // namespace vellim
