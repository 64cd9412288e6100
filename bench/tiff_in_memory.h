// libtiff over bytes in memory, for reading without a copy and for writing.
#pragma once

#include <tiffio.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace vellim::bench {

using Bytes = std::vector<uint8_t>;

struct TiffCloser {
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};
using TiffPointer = std::unique_ptr<TIFF, TiffCloser>;

// What libtiff sees as a file. It outlives the TIFF that is opened on it.
struct MemoryFile {
    Bytes* bytes;
    uint64_t position = 0;
};

// Opens `file` for reading. libtiff gets the bytes by its map procedure, so that it decodes from
// them where they lie, as VELLIM does from its block.
TiffPointer OpenForReading(MemoryFile& file);

// Opens `file` for writing: its bytes become the new TIFF when the pointer is let go.
TiffPointer OpenForWriting(MemoryFile& file);

}  // namespace vellim::bench
