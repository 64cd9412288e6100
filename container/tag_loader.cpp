// Bringing a stored image's tags into memory, and letting go of them.
//
// A directory may claim far more than its file holds, by having every entry point at the same
// bytes. So the claim is held against the file's size before a value is read.

#include <cstring>
#include <optional>

#include "container/directory_reader.h"
#include "container/failure.h"
#include "container/streams.h"
#include "container/tag_buffer.h"
#include "container/tiff_file.h"
#include "vellim/tags.h"

namespace vellim {
namespace {

// A loaded buffer's block has this much more than its records take, one byte of it as capacity.
constexpr uint32_t kLoadedSpare = 23;
constexpr uint32_t kLoadedCapacitySpare = 1;

// Tags share values now and then (both resolutions, often), so some excess is honest.
constexpr uint64_t kUnquestionedTagBytes = 1U << 20;
constexpr uint64_t kHonestExcess = 16;

GlobalHandle AllocateTags(uint32_t tagBytes) {
    const uint64_t bytes = uint64_t{tagBytes} + kLoadedSpare;
    if (bytes > UINT32_MAX) return 0;
    return GlobalAlloc(GHND, static_cast<uint32_t>(bytes));
}

bool InProportion(uint32_t tagBytes, StreamHandle stream) {
    if (tagBytes <= kUnquestionedTagBytes) return true;
    const int32_t streamBytes = mSize(stream);
    return streamBytes >= 0 && tagBytes <= static_cast<uint64_t>(streamBytes) * kHonestExcess;
}

void ToHostOrder(uint8_t* value, const DirectoryEntry& entry, uint16_t byteOrder) {
    if (byteOrder != TIFF_BIG_ENDIAN) return;
    if (entry.Type == TIFF_TYPE_RATIONAL)
        SwapElements(value, TIFF_TYPE_LONG, 2 * entry.Count);
    else
        SwapElements(value, entry.Type, entry.Count);
}

// The value behind its offset, or the one in the entry itself.
bool ReadValue(StreamWindow& window, const DirectoryEntry& entry, uint16_t byteOrder,
               uint8_t* value) {
    if (entry.IsInline()) {
        std::memcpy(value, entry.ValueField.data(), entry.ValueBytes);
        return true;
    }
    if (!window.Copy(entry.ValueOffset(), value, entry.ValueBytes))
        return Fail(TIFF_IO_ERROR, false);
    ToHostOrder(value, entry, byteOrder);
    return true;
}

bool ReadRecord(StreamWindow& window, uint64_t entryOffset, uint16_t byteOrder, TagBuffer& tags) {
    const std::optional<DirectoryEntry> entry = ReadDirectoryEntry(window, entryOffset, byteOrder);
    if (!entry) return false;
    const TagRecordHead head = {
        .RecordSize = 0, .Tag = entry->Tag, .Type = entry->Type, .Count = entry->Count};
    uint8_t* value = tags.Append(head, entry->ValueBytes);
    // The directory has become longer between two looks at it.
    if (value == nullptr) return Fail(TIFF_IO_ERROR, false);
    return ReadValue(window, *entry, byteOrder, value);
}

// The walk's figure sizes the buffer, but a slot whose directory was written or changed since then
// has another: the directory as it is now decides.
bool FitToDirectory(TiffImageSlot& slot, uint32_t tagBytes) {
    if (slot.TagBytes == tagBytes) return true;
    const GlobalHandle fitted = GlobalReAlloc(slot.TagBufferHandle, tagBytes + kLoadedSpare, GHND);
    if (fitted == 0) return Fail(TIFF_NO_MEMORY, false);
    slot.TagBufferHandle = fitted;
    slot.TagBytes = tagBytes;
    return true;
}

bool LoadTagBuffer(const TiffFile& file, TiffImageSlot& slot) {
    const OpenStream stream(OpenForReading(file));
    // No directory stands at 0: the slot's image was never written.
    if (!stream || slot.DirectoryOffset == 0) return Fail(TIFF_IO_ERROR, false);
    StreamWindow window(stream.Get());
    const std::optional<DirectorySummary> directory =
        ReadDirectorySummary(window, slot.DirectoryOffset, file.ByteOrder);
    if (!directory) return false;
    if (!InProportion(directory->TagBytes, stream.Get())) return Fail(TIFF_IO_ERROR, false);
    if (!FitToDirectory(slot, directory->TagBytes)) return false;

    TagBuffer tags(slot.TagBufferHandle);
    if (!tags) return Fail(TIFF_NO_MEMORY, false);
    tags.SetHead({.TagCount = 0, .Capacity = slot.TagBytes + kLoadedCapacitySpare, .Used = 0});
    for (uint32_t i = 0; i < directory->EntryCount; i++) {
        const uint64_t entryOffset = EntryOffset(slot.DirectoryOffset, i);
        if (!ReadRecord(window, entryOffset, file.ByteOrder, tags)) return false;
    }
    return true;
}

}  // namespace
}  // namespace vellim

using namespace vellim;

int32_t GetTiffImage(TiffFileHandle file, int32_t image) {
    if (image < 0 || image >= TIFF_MAX_IMAGES) return Fail(TIFF_BAD_INDEX, 0);
    const TiffFileAccess access(file);
    if (!access) return 0;
    TiffImageSlot& slot = access->Images[image];
    if ((slot.Flags & TIFF_IMAGE_IN_MEMORY) != 0) return 1;
    if (image >= access->ImageCount) return Fail(TIFF_BAD_INDEX, 0);

    OwnedBlock block(AllocateTags(slot.TagBytes));
    if (!block) return Fail(TIFF_NO_MEMORY, 0);
    slot.TagBufferHandle = block.Release();
    if (!LoadTagBuffer(*access, slot)) {
        // The slot keeps the dead handle: it still is this image's, not one for a new image.
        GlobalFree(slot.TagBufferHandle);
        return 0;
    }
    slot.Flags = static_cast<uint16_t>(slot.Flags | TIFF_IMAGE_IN_MEMORY);
    return 1;
}

int32_t DropTiffImage(TiffFileHandle file, int32_t image) {
    if (image < 0 || image >= TIFF_MAX_IMAGES) return Fail(TIFF_BAD_INDEX, 0);
    const TiffFileAccess access(file);
    if (!access) return 0;
    TiffImageSlot& slot = access->Images[image];
    if ((slot.Flags & TIFF_IMAGE_IN_MEMORY) == 0) return TiffError() == TIFF_SUCCESS ? 1 : 0;
    GlobalFree(slot.TagBufferHandle);
    slot.Flags = static_cast<uint16_t>(slot.Flags & ~TIFF_IMAGE_IN_MEMORY);
    return 1;
}
