// Where a note comes to lie on its image.
#pragma once

#include "vellim/notes.h"

namespace vellim {

// Works out the note's box. Its upper left corner is `point`, a place of the window, in pixels of
// the image, or without one the corner that the note has; moved by `origin`, or without one by what
// the window is scrolled. It is as large as the text is in the window's font. With NOTE_CENTRED in
// `flags` the window's margins are taken off `point` itself. Where the note has no image that can
// be read, none is scrolled and its scale is that of the ratios.
void PlaceNoteBox(WindowHandle window, NoteRecord* note, POINT* point, const POINT* origin,
                  const ZoomRatios* zoom, uint32_t flags);

}  // namespace vellim
