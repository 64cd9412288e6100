// The built program run as a process, and its PNG files read back by libpng.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "support/tiff_builder.h"

namespace vellim::test {

struct ToolRun {
    int exitCode = -1;
    std::string out;
    std::string err;
};

// Runs `vellim` with `arguments`, as a shell reads them, and `input` as standard input.
ToolRun RunTool(const std::string& arguments, const Bytes& input = {});

// A path in the test's own folder; nothing is there yet.
std::string NewPath(const std::string& name);

// The path of a sample of the project.
std::string Sample(const std::string& name);

Bytes ReadFile(const std::string& path);

struct Png {
    uint32_t width = 0, height = 0;
    int depth = 0, colourType = 0;
    uint32_t pelsX = 0, pelsY = 0;  // of pHYs
    int unit = -1;                  // of pHYs; -1: there is none
    Bytes palette;                  // red, green, blue of each entry
    std::vector<Bytes> rows;        // as stored: packed, not expanded
};

// Fails the test if `path` is no sound PNG.
Png ReadPng(const std::string& path);

// The rows behind a PNM's header, which has `fields` fields.
Bytes PnmPixels(const Bytes& pnm, int fields);

}  // namespace vellim::test
