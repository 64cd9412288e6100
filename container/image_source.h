// A stored image that is about to be written into another file.
#pragma once

#include <cstdint>

#include "container/streams.h"
#include "container/tiff_file.h"

namespace vellim {

// A value that a caller adds to the image's tags. They hold the first part of it; the whole one
// counts.
struct AddedValue {
    uint32_t Tag;
    const void* Value;
};

struct ImageSource {
    TiffFileHandle File;
    int32_t Image;        // its tags are in memory
    StreamHandle Stream;  // the file's bytes
    uint64_t StreamBytes;
    const AddedValue* Added;  // or null
};

// Bytes of a source; of one too long to be told in 31 bits, more than any file has.
inline uint64_t SourceBytes(StreamHandle stream) {
    constexpr uint64_t kBeyondTelling = uint64_t{1} << 40U;
    const int32_t bytes = mSize(stream);
    return bytes < 0 ? kBeyondTelling : static_cast<uint64_t>(bytes);
}

}  // namespace vellim
