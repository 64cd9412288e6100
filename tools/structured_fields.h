// The structured fields that a document of mixed objects (MO:DCA) is a row of: 0x5A, a length that
// counts itself, an identifier of three bytes, flags, two bytes of sequence, and data.
#pragma once

#include <string_view>

#include "byte_source.h"
#include "stray_bytes.h"

namespace vellim::tool {

enum FieldId : uint32_t {
    kBeginImage = 0xD3A8FB,
    kEndImage = 0xD3A9FB,
    kImageDescriptor = 0xD3A6FB,
    kPictureData = 0xD3EEFB,
    kEndPicture = 0xD3A9C7,
};

struct StructuredField {
    uint64_t at = 0;
    uint32_t id = 0;
    uint64_t dataAt = 0;     // behind the extension
    uint64_t dataBytes = 0;  // that are in the file, without the padding
    uint64_t next = 0;       // where the field behind it begins
};

// Whether a file that begins so is a row of them.
bool IsStructured(std::string_view head);

// The field that begins at `at`. False if there is none. Leaves the source anywhere.
bool ReadField(ByteSource& source, uint64_t at, StructuredField& field);

// That field or, behind bytes that are none, the first one that has another or the file's end
// behind it. Those bytes go to `stray`. False if there is none up to the file's end.
bool FindField(ByteSource& source, uint64_t at, StructuredField& field, StrayBytes& stray);

}  // namespace vellim::tool
