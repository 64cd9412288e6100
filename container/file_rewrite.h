// Writing a whole TIFF file anew with one tag of one image changed, and putting it in the old
// file's place.
#pragma once

#include <cstdint>
#include <optional>

namespace vellim {

struct NewValue {
    uint32_t Type;
    const void* Value;
    uint32_t Count;
};

// Tag `Tag` goes, and comes back with the new value if there is one.
struct TagChange {
    uint32_t Tag;
    std::optional<NewValue> New;
};

// True, or false with the failure code set: 6 (no such path; a stream that can't be opened; I/O;
// the last step), 1 (not a TIFF file, no memory), 3 (no such image), 9 (a new value that couldn't
// be read back), or as WriteImageCopy tells. The old file is as it was then.
bool RewriteTiffFile(const char* path, int32_t image, const TagChange& change);

}  // namespace vellim
