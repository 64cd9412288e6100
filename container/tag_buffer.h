// The tags of one image in memory: a head, then the records one behind the other, packed.
//
// Records stand in the order in which they came and hold their whole value in host order. A
// record's size is 16 bits wide, which is what limits a value. Used is always the sum of the
// records' sizes, and never more than the block has room for.
#pragma once

#include <cstdint>
#include <optional>

#include "platform/guards.h"
#include "vellim/files.h"

namespace vellim {

#pragma pack(push, 1)
struct TagBufferHead {
    uint16_t TagCount;
    uint32_t Capacity;  // bytes that the records may take
    uint32_t Used;      // bytes that they take
};

struct TagRecordHead {
    uint16_t RecordSize;  // of the head and the value behind it
    uint16_t Tag;
    uint16_t Type;
    uint32_t Count;
};
#pragma pack(pop)

inline constexpr uint32_t kTagBufferHeadBytes = 10;
inline constexpr uint32_t kTagRecordHeadBytes = 10;
inline constexpr uint32_t kMaxTagValueBytes = UINT16_MAX - kTagRecordHeadBytes;
static_assert(sizeof(TagBufferHead) == kTagBufferHeadBytes);
static_assert(sizeof(TagRecordHead) == kTagRecordHeadBytes);

// A record where it lies; valid while its buffer is locked and unchanged.
struct TagRecord {
    TagRecordHead Head;
    uint32_t Place;  // bytes of records before it
    const uint8_t* Value;
    uint32_t ValueBytes;
};

// The first element of a tag: a BYTE, SHORT or LONG widened, over 1, or a RATIONAL.
struct TagElement {
    uint32_t Number;
    uint32_t Denominator;
};

// A tag buffer, locked for the length of a scope; false for a block that isn't one.
class TagBuffer {
  public:
    explicit TagBuffer(GlobalHandle block);
    explicit operator bool() const { return bool{block_} && sound_; }

    [[nodiscard]] TagBufferHead Head() const;
    void SetHead(const TagBufferHead& head);
    [[nodiscard]] bool HasRoomFor(uint32_t valueBytes) const;

    // The record that begins at `place`, or nothing behind the last one.
    [[nodiscard]] std::optional<TagRecord> RecordAt(uint32_t place) const;
    // The first record of `tag`. Nothing, with code 13, when there is none.
    [[nodiscard]] std::optional<TagRecord> Find(uint32_t tag) const;

    // Adds a record at the end and gives the place of its value, to be filled by the caller; null
    // when there is no room. `head.RecordSize` is set from `valueBytes`.
    uint8_t* Append(TagRecordHead head, uint32_t valueBytes);
    void Remove(const TagRecord& record);
    // Removes every record of `tag`, in one pass.
    void RemoveAll(uint32_t tag);

  private:
    [[nodiscard]] uint8_t* Records() const;

    LockedBlock block_;
    bool sound_ = false;
};

// The tag buffer of an image that is in memory, else 0; code 3 for an `image` outside the table.
GlobalHandle TagBufferOf(TiffFileHandle file, int32_t image);

// Takes the first record of `tag` out of the image's tags. False, with code 13, when there is none.
bool RemoveTiffTag(TiffFileHandle file, int32_t image, uint32_t tag);

// Nothing for a record of another type, or without elements.
std::optional<TagElement> FirstElement(const TagRecord& record);

// The same by tag, with code 13 when the tag isn't there.
std::optional<TagElement> FirstTagElement(TiffFileHandle file, int32_t image, uint32_t tag);

// The first element as a number (of a RATIONAL: the numerator), or `otherwise` without one.
uint32_t TagNumber(TiffFileHandle file, int32_t image, uint32_t tag, uint32_t otherwise);

}  // namespace vellim
