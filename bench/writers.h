// The two writers that are set against each other. Each makes a TIFF file in memory out of lines
// that a function of the caller's copies in, one by one.
#pragma once

#include <cstdint>
#include <string>

#include "bench/pages.h"
#include "vellim/base.h"

namespace vellim::bench {

// A page as lines.
struct PageRows {
    uint32_t width;
    uint32_t height;
    uint32_t bitsPerPixel;
    Bytes rows;

    [[nodiscard]] size_t RowBytes() const { return rows.size() / height; }
};

// The page decoded; its rows are empty on failure.
PageRows RowsOfPage(const Page& page);

// Encodes with VELLIM into a memory block, which the caller frees; 0 on failure.
GlobalHandle EncodeWithVellim(const PageRows& page, const Coding& coding);

// Encodes with VELLIM into a file, as an MMR stream.
bool EncodeMmrWithVellim(const PageRows& page, const std::string& path);

// libtiff takes a strip that is filled before, or a line.
enum class LibtiffWrite { EncodedStrip, Scanline };

// Encodes with libtiff into `file`; `buffer` is reused from call to call.
bool EncodeWithLibtiff(const PageRows& page, const Coding& coding, LibtiffWrite call, Bytes& buffer,
                       Bytes& file);

}  // namespace vellim::bench
