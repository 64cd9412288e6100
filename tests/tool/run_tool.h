// The built program run as a process, and what its files hold as other programs see them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "support/stored_tiff.h"

namespace vellim::test {

struct ToolRun {
    int exitCode = -1;
    std::string out;
    std::string err;
};

// Runs `vellim` with `arguments`, as a shell reads them, and `input` as standard input.
ToolRun RunTool(const std::string& arguments, const Bytes& input = {});

// Runs it, and expects this exit code and `words` where this command tells of what it found: `info`
// and `check` on standard output, others on standard error.
ToolRun ExpectTool(const std::string& arguments, int exitCode, const std::string& words = {},
                   const Bytes& input = {});

// The path of a sample of the project.
std::string Sample(const std::string& name);

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
Bytes PnmPixels(const std::string& pnm, int fields);

// The image with a resolution; stored in tiles of 16 x 16; two images, the link to the second
// leading out of the file.
ImageSpec WithDots(ImageSpec image, uint32_t x, uint32_t y);
ImageSpec Tiled(ImageSpec image);
Bytes BrokenChain(const ImageSpec& image);

}  // namespace vellim::test
