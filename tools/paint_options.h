// What `vellim paint` can be asked on the command line.
#pragma once

#include <CLI/App.hpp>

#include "commands.h"

namespace vellim::tool {

// What its help says above the options.
extern const char* const kAboutPaint;

void AddPaintOptions(CLI::App& command, PaintOptions& options);

}  // namespace vellim::tool
