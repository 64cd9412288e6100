// Reading a directory (TIFF 6.0, section 2): a 16-bit entry count, 12-byte entries, and behind
// them the 4-byte link to the next directory.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "container/stream_window.h"

namespace vellim {

inline constexpr uint32_t kEntryCountBytes = 2;
inline constexpr uint32_t kEntryBytes = 12;
inline constexpr uint32_t kLinkBytes = 4;
inline constexpr uint32_t kInlineValueBytes = 4;  // a longer value stands elsewhere in the file

// An entry, in host order.
struct DirectoryEntry {
    uint16_t Tag;
    uint16_t Type;
    uint32_t Count;
    uint32_t ValueBytes;
    // The value itself, by the elements of its type, when it fits; else the offset where it stands.
    std::array<uint8_t, kInlineValueBytes> ValueField;

    [[nodiscard]] bool IsInline() const { return ValueBytes <= kInlineValueBytes; }
    [[nodiscard]] uint32_t ValueOffset() const;
};

// What is known of a directory without fetching values.
struct DirectorySummary {
    uint32_t EntryCount;
    uint32_t TagBytes;    // of the tags as records of a tag buffer
    uint8_t SubfileType;  // low byte of NewSubfileType, or of SubfileType less 1
    uint64_t LinkOffset;
};

// Where entry `index` of the directory at `directoryOffset` stands.
uint64_t EntryOffset(uint32_t directoryOffset, uint32_t index);

std::optional<uint16_t> ReadShort(StreamWindow& window, uint64_t offset, uint16_t byteOrder);
std::optional<uint32_t> ReadLong(StreamWindow& window, uint64_t offset, uint16_t byteOrder);

// The entry at `offset`. Nothing, with code 6, when it isn't all there, or with code 9 when its
// value is too long to be held; the size is looked at before the value field is.
std::optional<DirectoryEntry> ReadDirectoryEntry(StreamWindow& window, uint64_t offset,
                                                 uint16_t byteOrder);

// The directory at `offset`, read whole but for its link. Nothing, with code 6 or 9, when an entry
// fails or the values are too many to be held.
std::optional<DirectorySummary> ReadDirectorySummary(StreamWindow& window, uint32_t offset,
                                                     uint16_t byteOrder);

}  // namespace vellim
