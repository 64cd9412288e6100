// One page to one picture.
#pragma once

#include <string>

#include "commands.h"
#include "document.h"
#include "output_formats.h"

namespace vellim::tool {

struct PageRequest {
    int32_t image = 0;  // counted from 0
    std::string path;   // "-": standard output
    const OutputFormat* format = nullptr;
    bool square = false;
};

// Converts a page; failures are told on standard error.
Outcome ConvertPage(const Document& document, const PageRequest& request);

}  // namespace vellim::tool
