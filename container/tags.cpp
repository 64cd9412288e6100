// Asking for and defining the tags of an image in memory.

#include "vellim/tags.h"

#include <cstring>

#include "container/failure.h"
#include "container/streams.h"
#include "container/tag_buffer.h"
#include "container/tiff_file.h"

namespace vellim {
namespace {

constexpr uint32_t kNewBufferBytes = 111;
constexpr uint32_t kNewBufferCapacity = 100;
constexpr uint32_t kGrownSpare = kTagBufferHeadBytes + 1;

// A block of exactly `size` bytes, a copy of `bytes`.
OwnedBlock CopyOf(const void* bytes, uint32_t size) {
    OwnedBlock copy(GlobalAlloc(GHND, size));
    const LockedBlock locked(copy.Get());
    if (!locked) return Fail(TIFF_NO_MEMORY, OwnedBlock());
    if (size != 0) std::memcpy(locked.As<void>(), bytes, size);
    return copy;
}

OwnedBlock TagNumbersOf(const TagBuffer& tags) {
    const uint32_t count = tags.Head().TagCount;
    OwnedBlock list(GlobalAlloc(GHND, count * uint32_t{sizeof(uint32_t)}));
    const LockedBlock locked(list.Get());
    if (!locked) return Fail(TIFF_NO_MEMORY, OwnedBlock());
    auto* numbers = locked.As<uint32_t>();
    std::optional<TagRecord> record = tags.RecordAt(0);
    for (uint32_t i = 0; i < count && record; i++) {
        numbers[i] = record->Head.Tag;
        record = tags.RecordAt(record->Place + record->Head.RecordSize);
    }
    return list;
}

void StoreElement(uint16_t type, const TagElement& element, void* value) {
    if (type == TIFF_TYPE_BYTE) {
        const auto byte = static_cast<uint8_t>(element.Number);
        std::memcpy(value, &byte, sizeof byte);
        return;
    }
    std::memcpy(value, &element.Number, sizeof element.Number);
    if (type == TIFF_TYPE_RATIONAL)
        std::memcpy(static_cast<uint8_t*>(value) + sizeof element.Number, &element.Denominator,
                    sizeof element.Denominator);
}

// What a record has room for: tag and type in 16 bits each, and the value behind them.
bool FitsRecord(uint32_t tag, uint32_t type, uint32_t count) {
    if (tag > UINT16_MAX || type > UINT16_MAX) return Fail(TIFF_BAD_TAG, false);
    return uint64_t{TiffTypeSize(type)} * count <= kMaxTagValueBytes || Fail(TIFF_NO_MEMORY, false);
}

// Makes room for one more record, and no more than that. The block may be replaced.
bool MakeRoom(TiffImageSlot& slot, uint32_t valueBytes) {
    uint64_t capacity = kTagRecordHeadBytes + valueBytes;
    {
        const TagBuffer tags(slot.TagBufferHandle);
        if (!tags || tags.Head().TagCount == UINT16_MAX) return false;
        if (tags.HasRoomFor(valueBytes)) return true;
        capacity += tags.Head().Used;
    }
    if (capacity + kGrownSpare > UINT32_MAX) return false;
    const GlobalHandle grown =
        GlobalReAlloc(slot.TagBufferHandle, static_cast<uint32_t>(capacity + kGrownSpare), GHND);
    if (grown == 0) return false;
    slot.TagBufferHandle = grown;
    TagBuffer tags(grown);
    TagBufferHead head = tags.Head();
    head.Capacity = static_cast<uint32_t>(capacity);
    tags.SetHead(head);
    return true;
}

}  // namespace
}  // namespace vellim

using namespace vellim;

int32_t GetTiffImageInfoBuffer(TiffFileHandle file, int32_t image, uint32_t tag,
                               GlobalHandle* valueHandle, uint32_t* type, uint32_t* count) {
    const TagBuffer tags(TagBufferOf(file, image));
    if (!tags) return 0;
    std::optional<TagRecord> record;
    if (tag != TIFF_ALL_TAGS) {
        record = tags.Find(tag);
        if (!record) return 0;
    }
    if (valueHandle != nullptr) {
        OwnedBlock value = record ? CopyOf(record->Value, record->ValueBytes) : TagNumbersOf(tags);
        if (!value) return 0;
        *valueHandle = value.Release();
    }
    if (type != nullptr) *type = record ? record->Head.Type : uint32_t{TIFF_TYPE_LONG};
    if (count != nullptr) *count = record ? record->Head.Count : tags.Head().TagCount;
    return 1;
}

int32_t GetTiffImageInfo(TiffFileHandle file, int32_t image, uint32_t tag, void* value) {
    const TagBuffer tags(TagBufferOf(file, image));
    if (!tags) return 0;
    if (tag == TIFF_ALL_TAGS) {
        const std::optional<TagRecord> first = tags.RecordAt(0);
        if (first && value != nullptr)
            StoreElement(TIFF_TYPE_LONG, {.Number = first->Head.Tag, .Denominator = 1}, value);
        return 1;
    }
    const std::optional<TagRecord> record = tags.Find(tag);
    if (!record) return 0;
    const std::optional<TagElement> element = FirstElement(*record);
    if (element && value != nullptr) StoreElement(record->Head.Type, *element, value);
    return 1;
}

// A place counts as free while no tags were ever held in it, so a stored image that wasn't loaded
// gives its place to the new one. A file of a thousand images is full all the same: the walk that
// stopped there doesn't know where the chain ends, so that one image more would cost a stored one.
int32_t DefineTiffImage(TiffFileHandle file) {
    const TiffFileAccess access(file);
    if (!access) return -1;
    if (access->ImageCount >= TIFF_MAX_IMAGES) return Fail(TIFF_NO_MEMORY, -1);
    int32_t image = 0;
    while (image < TIFF_MAX_IMAGES && access->Images[image].TagBufferHandle != 0)
        image++;
    if (image == TIFF_MAX_IMAGES) return Fail(TIFF_NO_MEMORY, -1);

    OwnedBlock block(GlobalAlloc(GHND, kNewBufferBytes));
    if (!block) return Fail(TIFF_NO_MEMORY, -1);
    TagBuffer(block.Get()).SetHead({.TagCount = 0, .Capacity = kNewBufferCapacity, .Used = 0});
    TiffImageSlot& slot = access->Images[image];
    slot.TagBufferHandle = block.Release();
    slot.Flags = static_cast<uint16_t>(slot.Flags | TIFF_IMAGE_IN_MEMORY);
    access->ImageCount++;
    return image;
}

// What can't be held at all (a tag or type above 16 bits, too long a value) is refused before the
// old value goes; without memory the old value is gone.
int32_t DefineTiffImageInfoBuffer(TiffFileHandle file, int32_t image, uint32_t tag,
                                  const void* value, uint32_t type, uint32_t count) {
    if (TagBufferOf(file, image) == 0) return 0;
    if (value == nullptr && count > 0) return 0;
    if (!FitsRecord(tag, type, count)) return 0;
    const uint32_t valueBytes = TiffTypeSize(type) * count;

    RemoveTiffTag(file, image, tag);
    const TiffFileAccess access(file);
    if (!MakeRoom(access->Images[image], valueBytes)) return Fail(TIFF_NO_MEMORY, 0);
    TagBuffer tags(access->Images[image].TagBufferHandle);
    const TagRecordHead head = {.RecordSize = 0,
                                .Tag = static_cast<uint16_t>(tag),
                                .Type = static_cast<uint16_t>(type),
                                .Count = count};
    uint8_t* to = tags ? tags.Append(head, valueBytes) : nullptr;
    if (to == nullptr) return Fail(TIFF_NO_MEMORY, 0);
    if (valueBytes > 0) std::memcpy(to, value, valueBytes);
    return 1;
}

// A RATIONAL, wider than the number, becomes the number over 1.
int32_t DefineTiffImageInfo(TiffFileHandle file, int32_t image, uint32_t tag, uint32_t type,
                            uint32_t number) {
    const uint32_t value[2] = {number, 1};
    return DefineTiffImageInfoBuffer(file, image, tag, value, type, 1);
}
