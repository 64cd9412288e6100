#include "structured_fields.h"

#include <algorithm>
#include <array>

namespace vellim::tool {
namespace {

constexpr uint32_t kIntroducerBytes = 8;  // what the length counts before the data
enum FieldFlag : uint8_t { kHasExtension = 0x80, kHasPadding = 0x08 };

int ByteAt(ByteSource& source, uint64_t at) {
    source.position = at;
    return ReadByte(source);
}

// Bytes of the extension, whose first byte counts itself too.
uint64_t ExtensionBytes(ByteSource& source, const StructuredField& field) {
    if (field.dataBytes == 0) return 0;
    const int length = ByteAt(source, field.dataAt);
    return length > 0 ? static_cast<uint64_t>(length) : 0;
}

// The last byte counts the padding; if it is 0, the two bytes before it do.
uint64_t PaddingBytes(ByteSource& source, const StructuredField& field) {
    const uint64_t end = field.dataAt + field.dataBytes;
    if (field.dataBytes == 0) return 0;
    const int length = ByteAt(source, end - 1);
    if (length != 0 || field.dataBytes < 3) return length > 0 ? static_cast<uint64_t>(length) : 0;
    const int high = ByteAt(source, end - 3);
    const int low = ReadByte(source);
    return high < 0 || low < 0 ? 0 : static_cast<uint64_t>(high) << 8U | static_cast<uint64_t>(low);
}

}  // namespace

bool ReadField(ByteSource& source, uint64_t at, StructuredField& field) {
    std::array<uint8_t, 1 + kIntroducerBytes> head{};
    source.position = at;
    if (!ReadBytes(source, head.data(), head.size())) return false;
    const uint64_t length = uint64_t{head[1]} << 8U | head[2];
    if (head[0] != kFieldMark || head[3] != kFieldClass || length < kIntroducerBytes) return false;
    field.id = uint32_t{head[3]} << 16U | uint32_t{head[4]} << 8U | head[5];
    field.next = std::min(at + 1 + length, source.size);
    field.dataAt = at + head.size();
    field.dataBytes = field.next - field.dataAt;
    const uint8_t flags = head[6];
    if ((flags & kHasExtension) != 0) {
        const uint64_t extension = std::min(ExtensionBytes(source, field), field.dataBytes);
        field.dataAt += extension;
        field.dataBytes -= extension;
    }
    // Where the file ends inside the field, its padding isn't there.
    if ((flags & kHasPadding) != 0 && field.next == at + 1 + length) {
        field.dataBytes -= std::min(PaddingBytes(source, field), field.dataBytes);
    }
    return true;
}

}  // namespace vellim::tool
