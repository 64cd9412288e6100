// What TIFF 6.0 and its supplements lay down for the values of well-known tags, as far as it
// matters to somebody who sets them by hand.
#pragma once

#include <cstdint>

namespace vellim::tool {

enum class TagRole {
    Free,           // tells about the picture: anybody may set or delete it
    Needed,         // may be set, but readers can't do without it
    DescribesData,  // how the stored data has to be read
    PointsIntoFile  // where in the file something lies
};

struct TagRule {
    uint32_t tag = 0;
    TagRole role = TagRole::Free;
    uint32_t type = 0;             // 0: not known
    uint32_t widerType = 0;        // allowed too, for values that `type` can't hold; 0: none
    uint32_t count = 0;            // elements, for ASCII with the terminator; 0: any number
    uint32_t least = 0, most = 0;  // of the numbers that have a meaning; most 0: all have
};

// The rule of a tag; for one that isn't known, that anything goes.
TagRule RuleOf(uint32_t tag);

// A field type (TIFF 6.0, section 2) of more types than the library has names for.
enum FieldType : uint32_t {
    kFieldSignedByte = 6,
    kFieldUndefined = 7,
    kFieldSignedShort = 8,
    kFieldSignedLong = 9,
    kFieldSignedRational = 10,
    kFieldFloat = 11,
    kFieldDouble = 12,
    kFieldDirectory = 13  // "IFD": the place of a directory
};

}  // namespace vellim::tool
