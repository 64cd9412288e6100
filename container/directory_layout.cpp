#include "container/directory_layout.h"

#include <algorithm>

namespace vellim {

void PutValue(uint8_t* to, const TagToStore& tag, uint16_t byteOrder) {
    if (tag.ValueBytes == 0) return;
    std::memcpy(to, tag.Value, tag.ValueBytes);
    if (byteOrder != TIFF_BIG_ENDIAN || tag.SwapUnit < 2) return;
    for (uint32_t at = 0; at + tag.SwapUnit <= tag.ValueBytes; at += tag.SwapUnit)
        std::reverse(to + at, to + at + tag.SwapUnit);
}

void PutEntry(uint8_t* to, const TagToStore& tag, uint32_t valueOffset, uint16_t byteOrder) {
    std::memset(to, 0, kEntryBytes);
    PutShort(to, tag.Tag, byteOrder);
    PutShort(to + kTypeFieldOffset, tag.Type, byteOrder);
    PutLong(to + kCountFieldOffset, tag.Count, byteOrder);
    if (tag.IsInline())
        PutValue(to + kValueFieldOffset, tag, byteOrder);
    else
        PutLong(to + kValueFieldOffset, valueOffset, byteOrder);
}

}  // namespace vellim
