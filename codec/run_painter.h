// From runs, or from a list of changing elements, to a packed line.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "codec/bit_reader.h"

namespace vellim {

// Paints the black runs of one line, from left to right. Each end of a run inverts its word of the
// line from its place on; one pass over the words in Finish then carries the colour across. That
// costs the same wherever the runs lie, with no branch a run.
//
// The line is zeroed first and must have room for a word more.
class LinePainter {
  public:
    LinePainter(uint8_t* line, uint32_t rowBytes) : line_(line), pixels_(rowBytes * 8) {
        std::memset(line, 0, rowBytes + sizeof(uint64_t));
    }

    // Pixels `from` to `to` - 1 become black; what lies behind the line's bytes is left out. Needs
    // `from` <= `to`, and no run may begin left of the end of the one before.
    void Black(int32_t from, int32_t to) {
        Invert(static_cast<uint32_t>(from));
        end_ = static_cast<uint32_t>(to);
        Invert(end_);
    }

    void Finish() {
        const uint8_t* const last = WordOf(std::min(end_, pixels_));
        // The last bit of a word tells whether the number of changes so far is odd.
        uint64_t carry = 0;
        for (uint8_t* word = line_; word <= last; word += sizeof(uint64_t)) {
            const uint64_t bits = LoadNative64(word) ^ carry;
            carry = 0 - (bits & 1);
            StoreBigEndian64(word, bits);
        }
    }

  private:
    static constexpr uint32_t kWordBits = 64;

    [[nodiscard]] uint8_t* WordOf(uint32_t pixel) const {
        return line_ + pixel / kWordBits * sizeof(uint64_t);
    }

    void Invert(uint32_t pixel) {
        const uint32_t place = std::min(pixel, pixels_);
        uint8_t* const word = WordOf(place);
        StoreNative64(word, LoadNative64(word) ^ ~uint64_t{0} >> place % kWordBits);
    }

    uint8_t* line_;
    uint32_t pixels_;   // that the line's bytes hold
    uint32_t end_ = 0;  // of the last run
};

// Zeroes `rowBytes` bytes of `line` and paints the first `count` entries of `list` in pairs (b, e):
// pixels b to e - 1 become black (1). An e below b marks the one pixel b, as damaged lines have it.
// The last entry of an odd count ends a white run and needs no work. Pixels outside the `rowBytes`
// bytes are left out. `line` must have room for a word more.
void PaintRuns(const int32_t* list, uint8_t* line, uint32_t count, uint32_t rowBytes);

}  // namespace vellim
