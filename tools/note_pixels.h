// A note burned into some lines of a picture.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "note_dialog_answer.h"
#include "picture.h"

namespace vellim::tool {

// The part of a picture that a note covers, and its lines.
struct NoteBand {
    NoteAnswer note;
    RECT box = {};  // within the picture
    std::vector<std::vector<uint8_t>> lines;
};

// Finds the band of a note, still without lines. False, with the reason in `why`, if nothing of the
// note is on the picture.
bool FindNoteBand(const Picture& picture, NoteAnswer note, NoteBand& band, std::string& why);

// Burns the note into the lines of its box, as many as came. Pixels that the note leaves alone keep
// their value; black and white become the nearest that the picture has. False if memory is short.
bool BurnBand(const Picture& picture, NoteBand& band);

}  // namespace vellim::tool
