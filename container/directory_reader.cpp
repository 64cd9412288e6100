#include "container/directory_reader.h"

#include <cstring>

#include "container/failure.h"
#include "container/streams.h"
#include "container/tag_buffer.h"
#include "vellim/tags.h"

namespace vellim {
namespace {

constexpr uint64_t kValueLimit = 32768;
constexpr uint64_t kTagBytesLimit = 0x7FFFFFFF;

uint16_t ShortOf(const uint8_t* bytes, uint16_t byteOrder) {
    uint16_t value = 0;
    std::memcpy(&value, bytes, sizeof value);
    return byteOrder == TIFF_BIG_ENDIAN ? __builtin_bswap16(value) : value;
}

uint32_t LongOf(const uint8_t* bytes, uint16_t byteOrder) {
    uint32_t value = 0;
    std::memcpy(&value, bytes, sizeof value);
    return byteOrder == TIFF_BIG_ENDIAN ? __builtin_bswap32(value) : value;
}

// Adds the sizes of the entries' values to `total`, up to the first entry that must be looked at
// more closely: a subfile type, or a value that is too long. Gives the number of entries before it.
template <uint16_t kByteOrder>
uint32_t SumValueBytes(std::span<const uint8_t> entries, uint64_t& total) {
    const uint32_t count = static_cast<uint32_t>(entries.size()) / kEntryBytes;
    const uint8_t* entry = entries.data();
    for (uint32_t i = 0; i < count; ++i, entry += kEntryBytes) {
        const uint16_t tag = ShortOf(entry, kByteOrder);
        const uint16_t type = ShortOf(entry + 2, kByteOrder);
        const uint64_t bytes = uint64_t{LongOf(entry + 4, kByteOrder)} * TiffTypeSize(type);
        const bool isSubfileType = tag == TIFF_TAG_NEW_SUBFILE_TYPE || tag == TIFF_TAG_SUBFILE_TYPE;
        if (isSubfileType || bytes >= kValueLimit) return i;
        total += bytes;
    }
    return count;
}

uint32_t PlainEntries(std::span<const uint8_t> entries, uint16_t byteOrder, uint64_t& total) {
    return byteOrder == TIFF_BIG_ENDIAN ? SumValueBytes<TIFF_BIG_ENDIAN>(entries, total)
                                        : SumValueBytes<TIFF_LITTLE_ENDIAN>(entries, total);
}

}  // namespace

uint32_t DirectoryEntry::ValueOffset() const {
    return LongOf(ValueField.data(), TIFF_LITTLE_ENDIAN);
}

uint64_t EntryOffset(uint32_t directoryOffset, uint32_t index) {
    return uint64_t{directoryOffset} + kEntryCountBytes + uint64_t{index} * kEntryBytes;
}

std::optional<uint16_t> ReadShort(StreamWindow& window, uint64_t offset, uint16_t byteOrder) {
    const uint8_t* bytes = window.At(offset, sizeof(uint16_t));
    if (bytes == nullptr) return std::nullopt;
    return ShortOf(bytes, byteOrder);
}

std::optional<uint32_t> ReadLong(StreamWindow& window, uint64_t offset, uint16_t byteOrder) {
    const uint8_t* bytes = window.At(offset, sizeof(uint32_t));
    if (bytes == nullptr) return std::nullopt;
    return LongOf(bytes, byteOrder);
}

std::optional<DirectoryEntry> ReadDirectoryEntry(StreamWindow& window, uint64_t offset,
                                                 uint16_t byteOrder) {
    constexpr uint32_t kHeadBytes = kEntryBytes - kInlineValueBytes;
    const std::span<const uint8_t> bytes = window.Peek(offset, kEntryBytes);
    if (bytes.size() < kHeadBytes) return Fail(TIFF_IO_ERROR, std::nullopt);

    DirectoryEntry entry = {};
    entry.Tag = ShortOf(bytes.data(), byteOrder);
    entry.Type = ShortOf(bytes.data() + 2, byteOrder);
    entry.Count = LongOf(bytes.data() + 4, byteOrder);
    const uint64_t valueBytes = uint64_t{entry.Count} * TiffTypeSize(entry.Type);
    if (valueBytes >= kValueLimit) return Fail(TIFF_BAD_TAG, std::nullopt);
    entry.ValueBytes = static_cast<uint32_t>(valueBytes);

    if (bytes.size() < kEntryBytes) return Fail(TIFF_IO_ERROR, std::nullopt);
    std::memcpy(entry.ValueField.data(), bytes.data() + kHeadBytes, kInlineValueBytes);
    if (byteOrder == TIFF_BIG_ENDIAN) {
        // Two SHORTs lie side by side, each swapped by itself.
        const uint32_t type = entry.IsInline() ? entry.Type : uint32_t{TIFF_TYPE_OFFSET};
        SwapElements(entry.ValueField.data(), type, kInlineValueBytes / TiffTypeSize(type));
    }
    return entry;
}

std::optional<DirectorySummary> ReadDirectorySummary(StreamWindow& window, uint32_t offset,
                                                     uint16_t byteOrder) {
    const std::optional<uint16_t> entryCount = ReadShort(window, offset, byteOrder);
    if (!entryCount) return Fail(TIFF_IO_ERROR, std::nullopt);

    DirectorySummary summary = {};
    summary.EntryCount = *entryCount;
    summary.LinkOffset = EntryOffset(offset, *entryCount);
    uint64_t tagBytes = uint64_t{*entryCount} * kTagRecordHeadBytes;
    // Of a directory that lies in the window as a whole, the sizes of values are all that most
    // entries need; reading single ones doesn't move the window then.
    const uint32_t bytes = *entryCount * kEntryBytes;
    const uint8_t* const entries =
        bytes <= StreamWindow::kBytes ? window.At(EntryOffset(offset, 0), bytes) : nullptr;
    for (uint32_t i = 0; i < *entryCount; ++i) {
        if (entries != nullptr) {
            const std::span<const uint8_t> whole(entries, bytes);
            i += PlainEntries(whole.subspan(size_t{i} * kEntryBytes), byteOrder, tagBytes);
            if (i == *entryCount) break;
        }
        const std::optional<DirectoryEntry> entry =
            ReadDirectoryEntry(window, EntryOffset(offset, i), byteOrder);
        if (!entry) return std::nullopt;
        tagBytes += entry->ValueBytes;
        if (tagBytes >= kTagBytesLimit) return Fail(TIFF_BAD_TAG, std::nullopt);
        const uint8_t lowByte = entry->ValueField[0];
        if (entry->Tag == TIFF_TAG_NEW_SUBFILE_TYPE) summary.SubfileType = lowByte;
        if (entry->Tag == TIFF_TAG_SUBFILE_TYPE) {
            summary.SubfileType = static_cast<uint8_t>(lowByte - 1);
        }
    }
    summary.TagBytes = static_cast<uint32_t>(tagBytes);
    return summary;
}

}  // namespace vellim
