#include "container/tag_buffer.h"

#include <algorithm>
#include <cstring>

#include "container/failure.h"
#include "container/tiff_file.h"
#include "vellim/streams.h"

namespace vellim {
namespace {

template <typename Number>
std::optional<uint32_t> NumberAt(const TagRecord& record, uint32_t offset) {
    Number number = 0;
    if (record.ValueBytes < offset + sizeof number) return std::nullopt;
    std::memcpy(&number, record.Value + offset, sizeof number);
    return number;
}

std::optional<TagElement> OverOne(std::optional<uint32_t> number) {
    if (!number) return std::nullopt;
    return TagElement{.Number = *number, .Denominator = 1};
}

}  // namespace

TagBuffer::TagBuffer(GlobalHandle block) : block_(block) {
    const uint32_t size = block_ ? block_.Size() : 0;
    sound_ = size >= kTagBufferHeadBytes && Head().Used <= size - kTagBufferHeadBytes;
}

TagBufferHead TagBuffer::Head() const {
    TagBufferHead head;
    std::memcpy(&head, block_.As<uint8_t>(), sizeof head);
    return head;
}

void TagBuffer::SetHead(const TagBufferHead& head) {
    std::memcpy(block_.As<uint8_t>(), &head, sizeof head);
}

uint8_t* TagBuffer::Records() const {
    return block_.As<uint8_t>() + kTagBufferHeadBytes;
}

bool TagBuffer::HasRoomFor(uint32_t valueBytes) const {
    const TagBufferHead head = Head();
    const uint32_t room = std::min(uint32_t{head.Capacity}, block_.Size() - kTagBufferHeadBytes);
    return uint64_t{head.Used} + kTagRecordHeadBytes + valueBytes <= room;
}

std::optional<TagRecord> TagBuffer::RecordAt(uint32_t place) const {
    const uint32_t used = Head().Used;
    if (place >= used || used - place < kTagRecordHeadBytes) return std::nullopt;
    TagRecord record = {};
    std::memcpy(&record.Head, Records() + place, sizeof record.Head);
    if (record.Head.RecordSize < kTagRecordHeadBytes || record.Head.RecordSize > used - place)
        return std::nullopt;
    record.Place = place;
    record.Value = Records() + place + kTagRecordHeadBytes;
    record.ValueBytes = record.Head.RecordSize - kTagRecordHeadBytes;
    return record;
}

std::optional<TagRecord> TagBuffer::Find(uint32_t tag) const {
    std::optional<TagRecord> record = RecordAt(0);
    while (record && record->Head.Tag != tag)
        record = RecordAt(record->Place + record->Head.RecordSize);
    if (!record) SetTiffError(TIFF_TAG_NOT_FOUND);
    return record;
}

uint8_t* TagBuffer::Append(TagRecordHead head, uint32_t valueBytes) {
    TagBufferHead buffer = Head();
    if (valueBytes > kMaxTagValueBytes || !HasRoomFor(valueBytes) || buffer.TagCount == UINT16_MAX)
        return nullptr;
    head.RecordSize = static_cast<uint16_t>(kTagRecordHeadBytes + valueBytes);
    uint8_t* record = Records() + buffer.Used;
    std::memcpy(record, &head, sizeof head);
    buffer.TagCount++;
    buffer.Used += kTagRecordHeadBytes + valueBytes;
    SetHead(buffer);
    return record + kTagRecordHeadBytes;
}

void TagBuffer::Remove(const TagRecord& record) {
    TagBufferHead head = Head();
    const uint32_t size = record.Head.RecordSize;
    uint8_t* hole = Records() + record.Place;
    std::memmove(hole, hole + size, head.Used - record.Place - size);
    head.TagCount--;
    head.Used -= size;
    SetHead(head);
}

void TagBuffer::RemoveAll(uint32_t tag) {
    TagBufferHead kept = {.TagCount = 0, .Capacity = Head().Capacity, .Used = 0};
    for (auto record = RecordAt(0); record;) {
        const uint32_t size = record->Head.RecordSize;
        if (record->Head.Tag != tag) {
            std::memmove(Records() + kept.Used, Records() + record->Place, size);
            kept.TagCount++;
            kept.Used += size;
        }
        record = RecordAt(record->Place + size);
    }
    SetHead(kept);
}

GlobalHandle TagBufferOf(TiffFileHandle file, int32_t image) {
    if (image < 0 || image >= TIFF_MAX_IMAGES) return Fail(TIFF_BAD_INDEX, GlobalHandle{0});
    const TiffFileAccess access(file);
    if (!access) return 0;
    const TiffImageSlot& slot = access->Images[image];
    return (slot.Flags & TIFF_IMAGE_IN_MEMORY) != 0 ? slot.TagBufferHandle : 0;
}

bool RemoveTiffTag(TiffFileHandle file, int32_t image, uint32_t tag) {
    TagBuffer tags(TagBufferOf(file, image));
    if (!tags) return false;
    const std::optional<TagRecord> record = tags.Find(tag);
    if (record) tags.Remove(*record);
    return record.has_value();
}

std::optional<TagElement> FirstElement(const TagRecord& record) {
    switch (record.Head.Type) {
        case TIFF_TYPE_BYTE:
            return OverOne(NumberAt<uint8_t>(record, 0));
        case TIFF_TYPE_SHORT:
            return OverOne(NumberAt<uint16_t>(record, 0));
        case TIFF_TYPE_LONG:
            return OverOne(NumberAt<uint32_t>(record, 0));
        case TIFF_TYPE_RATIONAL: {
            const std::optional<uint32_t> denominator =
                NumberAt<uint32_t>(record, sizeof(uint32_t));
            if (!denominator) return std::nullopt;
            return TagElement{.Number = *NumberAt<uint32_t>(record, 0),
                              .Denominator = *denominator};
        }
        default:
            return std::nullopt;
    }
}

std::optional<TagElement> FirstTagElement(TiffFileHandle file, int32_t image, uint32_t tag) {
    const TagBuffer tags(TagBufferOf(file, image));
    if (!tags) return std::nullopt;
    const std::optional<TagRecord> record = tags.Find(tag);
    return record ? FirstElement(*record) : std::nullopt;
}

uint32_t TagNumber(TiffFileHandle file, int32_t image, uint32_t tag, uint32_t otherwise) {
    const std::optional<TagElement> element = FirstTagElement(file, image, tag);
    return element ? element->Number : otherwise;
}

}  // namespace vellim
