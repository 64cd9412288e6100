// What `vellim stamp` can be asked on the command line.
#pragma once

#include <CLI/App.hpp>

#include "commands.h"

namespace vellim::tool {

// What its help says above the options.
extern const char* const kAboutStamp;

void AddStampOptions(CLI::App& command, StampOptions& options);

}  // namespace vellim::tool
