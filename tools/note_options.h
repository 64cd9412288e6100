// What `vellim note` can be asked on the command line.
#pragma once

#include <CLI/App.hpp>

#include "commands.h"

namespace vellim::tool {

// What its help says above the options.
extern const char* const kAboutNote;

void AddNoteOptions(CLI::App& command, NoteOptions& options);

}  // namespace vellim::tool
