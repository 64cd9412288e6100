// The bytes of an image object, which are one stream wherever they stand: in a row in an IOCA file,
// or in pieces, in the picture data of many structured fields, where every piece may end anywhere.
#pragma once

#include <optional>
#include <string>

#include "byte_source.h"

namespace vellim::tool {

// A size and its resolution as IOCA and MO:DCA state it; a 0 says nothing.
struct StatedSize {
    uint32_t unitBase = 0;  // resolution: 0 to ten inches, 1 to ten centimetres, else to nothing
    uint32_t xResolution = 0, yResolution = 0;
    uint32_t width = 0, height = 0;
};

constexpr size_t kStatedSizeBytes = 9;
StatedSize ReadStatedSize(const uint8_t* bytes);

// Bytes that stand in a row in the file.
struct Piece {
    uint64_t begin = 0, end = 0;
    uint64_t fieldAt = 0;    // of the structured field that they are the data of
    uint64_t nextField = 0;  // where to look for the next piece
    bool last = true;
};

struct ImageBytes {
    ByteSource source;
    Piece piece;
    bool inFields = false;
    bool wholeObject = false;              // from its Begin Image on
    std::optional<StatedSize> descriptor;  // of the fields passed so far
};

// The place of a byte of a structured field's data, in one number: data has less than 2^16 bytes.
constexpr unsigned kOffsetBits = 16;
constexpr uint64_t PlaceInField(uint64_t fieldAt, uint64_t offset) {
    return fieldAt << kOffsetBits | offset;
}

// From `place`, which is the offset, to the end of the file.
ImageBytes BytesInARow(int descriptor, uint64_t place);

// The picture data of an image object up to its end or the next object's beginning: from `place`
// on, or all of it where a Begin Image stands there. What is no structured field is passed over.
ImageBytes BytesInFields(int descriptor, uint64_t place);

// The place of the byte that was read last.
uint64_t LastPlace(const ImageBytes& bytes);

// The next byte, or -1.
int ReadByte(ImageBytes& bytes);

// The next bytes, at most `count`, which are still to come.
std::string Peek(ImageBytes& bytes, size_t count);

// Passes over the next bytes, as many of `most` as stand in a row in the file, from `at` on. Gives
// their number; 0: there are no more.
uint64_t TakeStretch(ImageBytes& bytes, uint64_t most, uint64_t& at);

// Passes over `count` bytes. False if there are fewer.
bool SkipBytes(ImageBytes& bytes, uint64_t count);

}  // namespace vellim::tool
