// The formats that pictures are written in. A new one is a file with a `Begin` function and a row
// in the table.
#pragma once

#include <optional>
#include <string_view>

#include "output_file.h"
#include "picture.h"

namespace vellim::tool {

struct OutputFormat {
    std::string_view name;
    bool chains;  // pictures may follow one another in one stream
    // The type of pixel that `type` is written as.
    PixelType (*written)(PixelType type);
    // Begins a picture whose type is one that `written` gives. Nothing, with the reason in
    // `output.failure`, if it can't be written.
    std::optional<LineSink> (*begin)(const Picture& picture, OutputFile& output);
};

// TIFF has neither: all pages go to one file (tiff_writer.h).
inline bool IsTiff(const OutputFormat& format) {
    return format.begin == nullptr;
}

// By name ("png"), case aside; null if there is none.
const OutputFormat* FindFormat(std::string_view name);

// By the ending of a file name.
const OutputFormat* FormatOfPath(std::string_view path);

// "png, bmp, pbm, pgm, ppm, tif, tiff"
std::string FormatNames();

std::optional<LineSink> BeginPng(const Picture& picture, OutputFile& output);
std::optional<LineSink> BeginBmp(const Picture& picture, OutputFile& output);
std::optional<LineSink> BeginPnm(const Picture& picture, OutputFile& output);

}  // namespace vellim::tool
