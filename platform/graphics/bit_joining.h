// Rows of one bit that shrink: the bits of each group joined, a word of them at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "platform/graphics/pixel_groups.h"
#include "platform/graphics/row_buffer.h"

namespace vellim {

class BitJoiner {
  public:
    // False where these groups are for StretchRow: they don't follow each other without overlap, as
    // those of a row that shrinks do, or this machine can't gather bits quickly; or without memory.
    bool Prepare(std::span<const PixelGroup> groups);

    // Writes a bit for each group, set where the row, each byte of it exclusive-or `inverted`, has
    // a one in it, and again inverted so; up to 7 bytes more are written. Bytes of the row up to
    // `bytes` are read.
    void Join(const uint8_t* row, size_t bytes, uint8_t inverted, uint8_t* to) const;

    // Bytes that must be there to write to.
    [[nodiscard]] size_t RoomNeeded() const { return count_ / 8 + 2 * sizeof(uint64_t); }

  private:
    // Which bits of 64 begin a group, the first pixel in the high bit, and how many there are; the
    // bits before the first of them belong to the group before.
    struct Word {
        uint64_t begins;
        uint64_t before;
        uint32_t count;
    };

    RowBuffer<Word> words_;
    size_t wordCount_ = 0;
    uint64_t inLast_ = 0;  // bits of the last word that the last group doesn't end before
    size_t count_ = 0;     // groups
};

}  // namespace vellim
