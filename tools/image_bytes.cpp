#include "image_bytes.h"

#include <algorithm>
#include <array>

#include "structured_fields.h"

namespace vellim::tool {
namespace {

// The Image Data Descriptor begins as an Image Size parameter does.
void ReadDescriptor(ImageBytes& bytes, const StructuredField& field) {
    std::array<uint8_t, kStatedSizeBytes> data{};
    bytes.source.position = field.dataAt;
    if (field.dataBytes < data.size() || !ReadBytes(bytes.source, data.data(), data.size())) return;
    bytes.descriptor = ReadStatedSize(data.data());
}

bool NextPiece(ImageBytes& bytes) {
    StructuredField field;
    while (bytes.inFields && ReadField(bytes.source, bytes.nextField, field)) {
        if (field.id == kEndImage || field.id == kBeginImage) break;
        bytes.nextField = field.next;
        if (field.id == kImageDescriptor) ReadDescriptor(bytes, field);
        if (field.id != kPictureData || field.dataBytes == 0) continue;
        bytes.source.position = field.dataAt;
        bytes.pieceEnd = field.dataAt + field.dataBytes;
        return true;
    }
    bytes.inFields = false;
    bytes.source.position = bytes.pieceEnd;
    return false;
}

// Whether there is a byte to come.
bool HasMore(ImageBytes& bytes) {
    return bytes.source.position < bytes.pieceEnd || NextPiece(bytes);
}

}  // namespace

StatedSize ReadStatedSize(const uint8_t* bytes) {
    const auto number = [bytes](size_t at) { return uint32_t{bytes[at]} << 8U | bytes[at + 1]; };
    return {bytes[0], number(1), number(3), number(5), number(7)};
}

ImageBytes BytesInARow(int descriptor, uint64_t offset) {
    ImageBytes bytes;
    bytes.source = SourceOf(descriptor);
    bytes.source.position = offset;
    bytes.pieceEnd = bytes.source.size;
    return bytes;
}

ImageBytes BytesInFields(int descriptor, uint64_t offset) {
    ImageBytes bytes;
    bytes.source = SourceOf(descriptor);
    bytes.inFields = true;
    bytes.nextField = offset;
    StructuredField first;
    if (ReadField(bytes.source, offset, first) && first.id == kBeginImage) {
        bytes.nextField = first.next;
    }
    bytes.source.position = 0;
    return bytes;
}

int ReadByte(ImageBytes& bytes) {
    return HasMore(bytes) ? ReadByte(bytes.source) : -1;
}

uint64_t TakeStretch(ImageBytes& bytes, uint64_t most, uint64_t& at) {
    if (most == 0 || !HasMore(bytes)) return 0;
    at = bytes.source.position;
    const uint64_t count = std::min(most, bytes.pieceEnd - at);
    bytes.source.position += count;
    return count;
}

bool SkipBytes(ImageBytes& bytes, uint64_t count) {
    uint64_t at = 0;
    while (count > 0) {
        const uint64_t passed = TakeStretch(bytes, count, at);
        if (passed == 0) return false;
        count -= passed;
    }
    return true;
}

}  // namespace vellim::tool
