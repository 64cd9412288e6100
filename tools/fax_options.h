// What `vellim fax` can be asked on the command line.
#pragma once

#include <CLI/App.hpp>

#include "commands.h"

namespace vellim::tool {

// What its help says above the options.
extern const char* const kAboutFax;

void AddFaxOptions(CLI::App& command, FaxOptions& options);

}  // namespace vellim::tool
