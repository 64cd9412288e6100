// What the user asks of a conversion's output, and what of it doesn't go together.
#pragma once

#include <optional>
#include <string>

#include "commands.h"
#include "output_formats.h"
#include "page_source.h"

namespace vellim::tool {

// The format by --format, else by the ending of OUT; null if there is none of that name.
const OutputFormat* ChooseFormat(const ConvertOptions& options);

// How OUT is written, as far as that is known before IN is opened. Nothing, with the reason in
// `why`, if the options don't go together.
std::optional<WriteOptions> ChooseWriting(const ConvertOptions& options, const OutputFormat& format,
                                          std::string& why);

// Adds what is told of a bare stream, which is told of IN where IN is one, else of OUT. False, with
// the reason in `why`, if it doesn't go together.
bool ChooseCoding(const ConvertOptions& options, const OutputFormat& format,
                  const PageSource& source, WriteOptions& writing, std::string& why);

}  // namespace vellim::tool
