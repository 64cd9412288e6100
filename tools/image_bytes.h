// The bytes of an image object, which are one stream wherever they stand: in a row in an IOCA file,
// or in pieces, in the picture data of many structured fields, where every piece may end anywhere.
#pragma once

#include <optional>

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

struct ImageBytes {
    ByteSource source;
    uint64_t pieceEnd = 0;
    bool inFields = false;  // there may be further pieces
    uint64_t nextField = 0;
    std::optional<StatedSize> descriptor;  // of the fields passed so far
};

// From `offset` to the end of the file.
ImageBytes BytesInARow(int descriptor, uint64_t offset);

// The picture data of the image object that begins with the structured field at `offset`: up to its
// end or the next object's beginning.
ImageBytes BytesInFields(int descriptor, uint64_t offset);

// The next byte, or -1.
int ReadByte(ImageBytes& bytes);

// Passes over the next bytes, as many of `most` as stand in a row in the file, from `at` on. Gives
// their number; 0: there are no more.
uint64_t TakeStretch(ImageBytes& bytes, uint64_t most, uint64_t& at);

// Passes over `count` bytes. False if there are fewer.
bool SkipBytes(ImageBytes& bytes, uint64_t count);

}  // namespace vellim::tool
