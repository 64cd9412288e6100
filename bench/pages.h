// The pages that are measured: TIFF files of a folder, and their conversions to other codings.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "bench/tiff_in_memory.h"

namespace vellim::bench {

enum class PageKind {
    Document,  // text, letters, forms, drawings: what a scanner mostly sees
    Halftone,  // bilevel pictures, the hard case of run coding
    Colour     // more than one bit a pixel
};

struct Page {
    std::string name;
    PageKind kind;
    uint32_t width;
    uint32_t height;
    uint32_t bitsPerPixel;
    Bytes file;

    [[nodiscard]] double Pixels() const { return static_cast<double>(width) * height; }
};

// A Compression of TIFF with its T4Options or its Predictor.
struct Coding {
    const char* name;
    uint16_t compression;
    uint16_t option;
};

// The folder of the environment variable VELLIM_PAGES, else the one of pages beside the checkout,
// else the samples.
std::string PageFolder();

// All pages of a folder, by name; the first image of each file alone counts.
std::vector<Page> LoadPages(const std::string& folder);

// The same page in another coding, made by libtiff; its file is empty when that fails.
Page Convert(const Page& page, const Coding& coding);

}  // namespace vellim::bench
