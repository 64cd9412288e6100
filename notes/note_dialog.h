// The dialog in which a person writes a note.
#pragma once

#include "vellim/notes.h"

namespace vellim {

// What the dialog ends with. Any other number: it couldn't be shown.
enum NoteDialogEnd { NOTE_DIALOG_CANCEL = 0, NOTE_DIALOG_DELETE = 1, NOTE_DIALOG_STORE = 2 };

// Shows the dialog with the note in it. On NOTE_DIALOG_STORE the record has what was written, in a
// block of its own, with the one before freed; else it is as it was.
int32_t RunNoteDialog(WindowHandle owner, NoteRecord* note);

}  // namespace vellim
