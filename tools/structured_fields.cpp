#include "structured_fields.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <string>

namespace vellim::tool {
namespace {

constexpr uint8_t kFieldMark = 0x5A;
constexpr uint8_t kFieldClass = 0xD3;     // first byte of every identifier
constexpr uint8_t kFieldType = 0x80;      // set in the second byte of every identifier
constexpr uint32_t kIntroducerBytes = 8;  // what the length counts before the data
constexpr size_t kClassAt = 3, kTypeAt = 4, kFlagsAt = 6;
constexpr size_t kHeadBytes = 1 + kIntroducerBytes;
enum FieldFlag : uint8_t { kHasExtension = 0x80, kHasPadding = 0x08, kReserved = 0x57 };
constexpr size_t kShortGap = 16;  // what may stand between two fields that vouch for each other

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

uint8_t ByteAt(std::string_view bytes, size_t at) {
    return static_cast<uint8_t>(bytes[at]);
}

uint64_t LengthOf(std::string_view head) {
    return uint64_t{ByteAt(head, 1)} << 8U | ByteAt(head, 2);
}

// Whether `bytes` begin as a field does of which nothing else is known.
bool IsHead(std::string_view bytes) {
    return bytes.size() >= kHeadBytes && IsStructured(bytes) &&
           LengthOf(bytes) >= kIntroducerBytes && (ByteAt(bytes, kFlagsAt) & kReserved) == 0;
}

// The bytes at `at`, read past the source: its buffer stays where the search is.
std::string BytesAt(const ByteSource& source, uint64_t at, size_t count) {
    std::string bytes(count, '\0');
    const ssize_t got = pread(source.descriptor, bytes.data(), count, static_cast<off_t>(at));
    bytes.resize(static_cast<size_t>(std::max<ssize_t>(got, 0)));
    return bytes;
}

// Whether a field begins at `at`, where any bytes may stand: a head alone is found in random data
// every few megabytes.
bool MakesSense(ByteSource& source, uint64_t at) {
    std::string head(kHeadBytes, '\0');
    source.position = at;
    if (!ReadBytes(source, head.data(), head.size()) || !IsHead(head)) return false;
    const uint64_t next = at + 1 + LengthOf(head);
    if (next > source.size || source.size - next <= kShortGap) return next <= source.size;
    const std::string behind = BytesAt(source, next, kShortGap + kHeadBytes);
    for (size_t gap = 0; gap < std::min(behind.size(), kShortGap + 1); ++gap) {
        if (IsHead(std::string_view(behind).substr(gap))) return true;
    }
    return false;
}

}  // namespace

bool IsStructured(std::string_view head) {
    return head.size() > kTypeAt && ByteAt(head, 0) == kFieldMark &&
           ByteAt(head, kClassAt) == kFieldClass && (ByteAt(head, kTypeAt) & kFieldType) != 0;
}

bool ReadField(ByteSource& source, uint64_t at, StructuredField& field) {
    std::array<uint8_t, kHeadBytes> head{};
    source.position = at;
    if (!ReadBytes(source, head.data(), head.size())) return false;
    const uint64_t length = uint64_t{head[1]} << 8U | head[2];
    if (head[0] != kFieldMark || head[kClassAt] != kFieldClass || length < kIntroducerBytes)
        return false;
    field.at = at;
    field.id = uint32_t{head[kClassAt]} << 16U | uint32_t{head[kTypeAt]} << 8U | head[5];
    field.next = std::min(at + 1 + length, source.size);
    field.dataAt = at + head.size();
    field.dataBytes = field.next - field.dataAt;
    const uint8_t flags = head[kFlagsAt];
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

bool FindField(ByteSource& source, uint64_t at, StructuredField& field, StrayBytes& stray) {
    if (ReadField(source, at, field)) return true;
    for (;; ++at) {
        source.position = at;
        const int byte = ReadByte(source);
        if (byte < 0) break;
        if (byte == kFieldMark && MakesSense(source, at) && ReadField(source, at, field)) {
            CloseGap(stray);
            return true;
        }
        PassByte(stray, byte);
    }
    CloseLastGap(stray);
    return false;
}

}  // namespace vellim::tool
