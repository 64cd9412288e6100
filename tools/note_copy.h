// A document written anew, all pages of it, with another note in one of them or a note burned in.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "commands.h"
#include "note_dialog_answer.h"
#include "page_source.h"
#include "passing_file.h"
#include "tag_rewrite.h"

namespace vellim::tool {

struct NoteChange {
    int32_t image = 0;
    std::optional<TagEdit> edit;       // of the note's tag
    std::optional<NoteAnswer> burned;  // or: the note that is burned in
    std::string words;                 // what was done
};

struct NoteTarget {
    std::string path;  // "-": standard output
    Overwrite mode = Overwrite::Refuse;
    const EditClaim* claim = nullptr;  // where it is the source itself
    bool acceptLoss = false;
};

// Writes the TIFF file of `source` to the target, with the change. What would be lost is told, and
// nothing written unless that is accepted. All of it happens or nothing.
Outcome WriteChanged(const PageSource& source, const NoteChange& change, const NoteTarget& target);

}  // namespace vellim::tool
