// Notes that become part of an image's pixels.
#pragma once

#include "vellim/notes.h"

namespace vellim {

// Gives a copy of the note's image with its text in its box, as far as that lies on the image:
// black on white, or where the note isn't opaque black on what is there. `Dib` stays; the caller
// frees the copy, which has the image's density, and its format where that is one bit, else the
// display's. Frees the note's text, on failure too, but where the image or a context of the window
// couldn't be had. 0 then, and for an empty box, for an image that isn't whole and without memory.
DibHandle BurnNoteIntoDib(WindowHandle window, NoteRecord* note);

}  // namespace vellim
