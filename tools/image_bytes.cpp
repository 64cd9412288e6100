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
    Piece& piece = bytes.piece;
    StructuredField field;
    StrayBytes stray;
    while (!piece.last && FindField(bytes.source, piece.nextField, field, stray)) {
        if (field.id == kEndImage || field.id == kBeginImage) break;
        piece.nextField = field.next;
        if (field.id == kImageDescriptor) ReadDescriptor(bytes, field);
        if (field.id != kPictureData || field.dataBytes == 0) continue;
        piece.fieldAt = field.at;
        piece.begin = field.dataAt;
        piece.end = field.dataAt + field.dataBytes;
        bytes.source.position = piece.begin;
        return true;
    }
    piece.last = true;
    bytes.source.position = piece.end;
    return false;
}

// Whether there is a byte to come.
bool HasMore(ImageBytes& bytes) {
    return bytes.source.position < bytes.piece.end || NextPiece(bytes);
}

}  // namespace

StatedSize ReadStatedSize(const uint8_t* bytes) {
    const auto number = [bytes](size_t at) { return uint32_t{bytes[at]} << 8U | bytes[at + 1]; };
    return {bytes[0], number(1), number(3), number(5), number(7)};
}

ImageBytes BytesInARow(int descriptor, uint64_t place) {
    ImageBytes bytes;
    bytes.source = SourceOf(descriptor);
    bytes.source.position = place;
    bytes.piece.end = bytes.source.size;
    return bytes;
}

ImageBytes BytesInFields(int descriptor, uint64_t place) {
    constexpr uint64_t kOffset = (uint64_t{1} << kOffsetBits) - 1;
    ImageBytes bytes;
    bytes.source = SourceOf(descriptor);
    bytes.inFields = true;
    bytes.piece.last = false;
    bytes.piece.nextField = place >> kOffsetBits;
    StructuredField first;
    bytes.wholeObject =
        ReadField(bytes.source, bytes.piece.nextField, first) && first.id == kBeginImage;
    if (bytes.wholeObject) bytes.piece.nextField = first.next;
    bytes.source.position = 0;
    SkipBytes(bytes, place & kOffset);
    return bytes;
}

uint64_t LastPlace(const ImageBytes& bytes) {
    const uint64_t at = bytes.source.position - 1;
    return bytes.inFields ? PlaceInField(bytes.piece.fieldAt, at - bytes.piece.begin) : at;
}

int ReadByte(ImageBytes& bytes) {
    return HasMore(bytes) ? ReadByte(bytes.source) : -1;
}

std::string Peek(ImageBytes& bytes, size_t count) {
    const Piece piece = bytes.piece;
    const uint64_t position = bytes.source.position;
    std::string ahead;
    while (ahead.size() < count) {
        const int byte = ReadByte(bytes);
        if (byte < 0) break;
        ahead.push_back(static_cast<char>(byte));
    }
    bytes.piece = piece;
    bytes.source.position = position;
    return ahead;
}

uint64_t TakeStretch(ImageBytes& bytes, uint64_t most, uint64_t& at) {
    if (most == 0 || !HasMore(bytes)) return 0;
    at = bytes.source.position;
    const uint64_t count = std::min(most, bytes.piece.end - at);
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
