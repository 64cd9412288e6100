// A page of a document coded anew, with its note burned into it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "note_dialog_answer.h"
#include "page_source.h"
#include "tiff_output.h"

namespace vellim::tool {

// The tags of an image in memory that the new page can't have: they point to something that stays
// behind, or are of a type that the library doesn't hold in full.
std::vector<uint32_t> TagsLostByBurning(TiffFileHandle file, int32_t image);

// How much of the page came.
struct BurnedPage {
    uint32_t came = 0;
    uint32_t due = 0;
    std::string reason;  // why lines are missing; they are white then
};

// Adds the image, with `note` burned into it, to `output`: coded as it was, with all tags but that
// of the note and those lost. Without `acceptDamage`, lines that don't come are a failure. False,
// with the reason in `why`, if it can't be.
bool AddBurnedPage(const PageSource& source, int32_t image, const NoteAnswer& note,
                   bool acceptDamage, TiffOutput& output, BurnedPage& page, std::string& why);

}  // namespace vellim::tool
