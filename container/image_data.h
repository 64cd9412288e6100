// The data of a stored image and the tags that say where it lies, for moving it to another file.
//
// Data comes in pieces: strips, by StripOffsets and StripByteCounts (TIFF 6.0, section 8), or for
// Compression 6 tiles, by TileOffsets and TileByteCounts (section 15), and behind them the tables
// that the tags 519, 520 and 521 point to (section 22). In the other file they lie one behind the
// other without gaps, in the order of their tags.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>

#include "container/directory_layout.h"
#include "container/image_source.h"

namespace vellim {

struct Piece {
    uint32_t From;
    uint32_t Claimed;  // bytes that it has by its tags
    uint32_t Present;  // of those, the ones before the file's end
};

// One tag whose values are the offsets of pieces.
struct PieceTable {
    uint32_t Tag = 0;
    uint32_t Type = 0;
    uint32_t Count = 0;
    uint64_t LastAt = 0;  // where its last piece goes, from the first one of the image
    OwnedBlock Pieces;
    OwnedBlock Offsets;  // new ones, as the tag's value
};

class ImageData {
  public:
    // Finds the pieces of the image whose tags are `tags`. Nothing, with the failure code set, for
    // an image without offsets or byte counts (13), or without a JPEG table (13, 10), with offsets
    // that aren't numbers (9) or can't be reached (6), or without memory (1). Offsets and byte
    // counts of different number fail too; a code that stands is then left alone.
    static std::optional<ImageData> Find(const ImageSource& source, const TagBuffer& tags);

    // Bytes that there are to copy.
    [[nodiscard]] uint64_t Bytes() const { return bytes_; }

    // With the first piece at `start`, an offset may need a LONG that was a SHORT. Makes such a
    // table one of LONGs; true when that has changed a tag's size.
    bool WidenOffsets(uint64_t start);
    // Computes the new offsets.
    void Place(uint32_t start);
    // The tag with the new offsets in place of the old. Other tags come back as they are.
    [[nodiscard]] TagToStore Relocated(const TagToStore& tag) const;

    // Copies the pieces, in their order, to the position of `to`. False, with code 1 or 6.
    [[nodiscard]] bool Copy(StreamHandle from, StreamHandle to) const;

  private:
    bool AddTable(const TagRecord& offsets, uint64_t streamBytes, auto claimed);
    void Measure();
    [[nodiscard]] std::span<const PieceTable> Tables() const { return {tables_.data(), count_}; }

    static constexpr uint32_t kMostTables = 4;
    std::array<PieceTable, kMostTables> tables_;
    uint32_t count_ = 0;
    uint64_t bytes_ = 0;
    bool closedUp_ = false;  // pieces take the room of what is there, not of what they claim
};

}  // namespace vellim
