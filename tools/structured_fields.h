// The structured fields that a document of mixed objects (MO:DCA) is a row of: 0x5A, a length that
// counts itself, an identifier of three bytes, flags, two bytes of sequence, and data.
#pragma once

#include "byte_source.h"

namespace vellim::tool {

enum FieldId : uint32_t {
    kBeginImage = 0xD3A8FB,
    kEndImage = 0xD3A9FB,
    kImageDescriptor = 0xD3A6FB,
    kPictureData = 0xD3EEFB,
};

constexpr uint8_t kFieldMark = 0x5A;
constexpr uint8_t kFieldClass = 0xD3;  // first byte of every identifier

struct StructuredField {
    uint32_t id = 0;
    uint64_t dataAt = 0;     // behind the extension
    uint64_t dataBytes = 0;  // that are in the file, without the padding
    uint64_t next = 0;       // where the field behind it begins
};

// The field that begins at `at`. False if there is none. Leaves the source anywhere.
bool ReadField(ByteSource& source, uint64_t at, StructuredField& field);

}  // namespace vellim::tool
