// How a directory and the values behind its offsets are laid out in bytes (TIFF 6.0, section 2), in
// either byte order. Nothing is aligned.
#pragma once

#include <cstdint>
#include <cstring>

#include "container/directory_reader.h"
#include "container/streams.h"
#include "container/tag_buffer.h"

namespace vellim {

inline constexpr uint32_t kTypeFieldOffset = 2;  // in an entry
inline constexpr uint32_t kCountFieldOffset = 4;
inline constexpr uint32_t kValueFieldOffset = 8;

// A tag on its way into a file: its value in host order.
struct TagToStore {
    uint16_t Tag;
    uint16_t Type;
    uint32_t Count;
    const uint8_t* Value;
    uint32_t ValueBytes;
    uint32_t SwapUnit;  // bytes that are reversed together in the other byte order

    [[nodiscard]] bool IsInline() const { return ValueBytes <= kInlineValueBytes; }
    [[nodiscard]] uint32_t AreaBytes() const { return IsInline() ? 0 : ValueBytes; }
};

// Of a RATIONAL each half is a number by itself.
constexpr uint32_t SwapUnitOf(uint32_t type) {
    return type == TIFF_TYPE_RATIONAL ? TiffTypeSize(TIFF_TYPE_LONG) : TiffTypeSize(type);
}

inline TagToStore TagToStoreOf(const TagRecord& record) {
    return {.Tag = record.Head.Tag,
            .Type = record.Head.Type,
            .Count = record.Head.Count,
            .Value = record.Value,
            .ValueBytes = record.ValueBytes,
            .SwapUnit = SwapUnitOf(record.Head.Type)};
}

constexpr uint32_t DirectoryBytes(uint32_t entries) {
    return kEntryCountBytes + entries * kEntryBytes + kLinkBytes;
}

inline void PutShort(uint8_t* to, uint16_t number, uint16_t byteOrder) {
    if (byteOrder == TIFF_BIG_ENDIAN) number = __builtin_bswap16(number);
    std::memcpy(to, &number, sizeof number);
}

inline void PutLong(uint8_t* to, uint32_t number, uint16_t byteOrder) {
    if (byteOrder == TIFF_BIG_ENDIAN) number = __builtin_bswap32(number);
    std::memcpy(to, &number, sizeof number);
}

// The value's bytes as they stand in the file.
void PutValue(uint8_t* to, const TagToStore& tag, uint16_t byteOrder);

// The 12 bytes of an entry. A value that isn't inline stands at `valueOffset`; the bytes of a value
// field that a short value leaves over are 0.
void PutEntry(uint8_t* to, const TagToStore& tag, uint32_t valueOffset, uint16_t byteOrder);

}  // namespace vellim
