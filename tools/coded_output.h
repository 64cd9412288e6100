// Black and white pictures as files of fax code, with or without a head and a tail around it. The
// library writes such a file through a handle of its own, on the encoder's thread.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "fax_coding.h"
#include "output_file.h"
#include "picture.h"
#include "vellim/base.h"

namespace vellim::tool {

// Writes all of a file, which begins empty, taking the picture's lines by OnLineWanted with
// `callbackData`. The result is a failure code or 0.
using FileCoder = std::function<int32_t(StreamHandle file, uintptr_t callbackData)>;

// Begins a picture that is written so. Nothing, with the reason in `output.failure`, if it can't
// be.
std::optional<LineSink> BeginCoded(const Picture& picture, OutputFile& output, FileCoder coder);

// Whether a line isn't too long for the coding; if it is, the reason is in `why`.
bool TakesLine(FaxCoding coding, uint32_t width, std::string& why);

// Dots in `inches` inches; 0 where the picture's resolution isn't known.
uint32_t DotsIn(uint32_t inches, const Picture& picture, uint32_t pelsPerMetre);

}  // namespace vellim::tool
