// Writing a stored image into another file, its directory in front of its data.
#pragma once

#include <cstdint>
#include <optional>

#include "container/image_source.h"

namespace vellim {

// Where an image goes, and how.
struct CopyTarget {
    StreamHandle Stream;
    uint32_t At;  // the stream's position
    uint16_t ByteOrder;
    bool Followed;  // the next image's directory will stand right behind this image
};

struct CopiedImage {
    uint32_t LinkOffset;  // of the directory's link
    uint32_t TagBytes;    // of its tags as records of a tag buffer
    uint32_t End;         // the stream's position
};

// Bytes that copies may take of a source in all. Values and strips may be shared, and images may
// share all of theirs, but a small file whose every strip is said to be the whole of it would fill
// the disk.
uint64_t CopyAllowance(uint64_t sourceBytes);

// Whether the image can be copied at all, as far as its own tags say. The codes are those below.
bool CanBeCopied(const ImageSource& source);

// Writes, without alignment: the directory, the values that its entries can't hold, the strips or
// tiles, the JPEG tables. The image's tags must be in memory; they aren't changed. `allowance`
// falls by what was written.
//
// Nothing, with the failure code set, when that fails: 1 (memory), 6 (I/O, a file that would grow
// beyond 31 bits, or beyond the allowance), 9 (a value that couldn't be read back), or as
// ImageData::Find tells. Before any strip is read the tags are seen to, so that of an image that
// can't be copied at all nothing is written.
std::optional<CopiedImage> WriteImageCopy(const ImageSource& source, const CopyTarget& target,
                                          uint64_t& allowance);

}  // namespace vellim
