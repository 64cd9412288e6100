// The two readers that are set against each other. Each decodes the first image of a file in
// memory from opening to closing, and keeps nothing of it.
#pragma once

#include <cstdint>
#include <string>

#include "bench/pages.h"
#include "vellim/base.h"

namespace vellim::bench {

// A page in a block of VELLIM's memory layer.
class PageBlock {
  public:
    explicit PageBlock(const Bytes& file);
    ~PageBlock();
    PageBlock(const PageBlock&) = delete;
    PageBlock& operator=(const PageBlock&) = delete;

    [[nodiscard]] GlobalHandle Handle() const { return block_; }
    [[nodiscard]] int32_t Size() const { return size_; }

  private:
    GlobalHandle block_;
    int32_t size_;
};

// Decodes with VELLIM and gives the number of lines that came, or 0 on failure.
uint32_t DecodeWithVellim(const PageBlock& block);

// The same with the MMR stream of a file, and whether it gives exactly `rows`.
uint32_t DecodeMmrWithVellim(const std::string& path, uint32_t width, uint32_t height);
bool MmrGives(const std::string& path, uint32_t width, uint32_t height, const Bytes& rows);

// libtiff decodes into a strip that the caller owns, or into a line of it.
enum class LibtiffCall { EncodedStrip, Scanline };

// Decodes with libtiff, `buffer` being reused from call to call, and gives the number of lines.
uint32_t DecodeWithLibtiff(Bytes& file, LibtiffCall call, Bytes& buffer);

// Every row of the page as VELLIM decodes it, one behind the other; empty on failure.
Bytes RowsOf(const PageBlock& block);

// Whether both readers give every row of the page alike.
bool ReadersAgree(const PageBlock& block, Bytes& file);

}  // namespace vellim::bench
