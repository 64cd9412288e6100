// Two ways to paint a line. A line of few runs is painted run by run. In a line of many runs each
// change inverts its word of the line from its place on, and one pass over the words then carries
// the colour across; that costs the same wherever the runs lie, with no branch a run. It needs
// changes in rising order; a damaged line that has them otherwise is painted run by run.
#include "codec/run_painter.h"

#include <algorithm>
#include <cstring>

#include "codec/bit_reader.h"

namespace vellim {
namespace {

void PaintOneRun(uint8_t* line, uint32_t begin, uint32_t end) {
    const uint32_t first = begin >> 3;
    const uint32_t last = end >> 3;
    const auto head = static_cast<uint8_t>(0xFFU >> (begin & 7U));
    const auto tail = static_cast<uint8_t>(~(0xFFU >> (end & 7U)));
    if (first == last) {
        line[first] = static_cast<uint8_t>(line[first] | (head & tail));
        return;
    }
    line[first] = static_cast<uint8_t>(line[first] | head);
    std::memset(line + first + 1, 0xFF, last - first - 1);
    // A run that ends at a byte's end has no part in the byte behind.
    if (tail != 0) line[last] = static_cast<uint8_t>(line[last] | tail);
}

void PaintRunByRun(const int32_t* list, uint8_t* line, uint32_t count, uint32_t rowBytes) {
    std::memset(line, 0, rowBytes);
    const int64_t width = int64_t{rowBytes} * 8;
    for (uint32_t i = 0; i + 1 < count; i += 2) {
        int64_t begin = list[i];
        int64_t end = list[i + 1];
        if (end < begin) end = begin + 1;
        begin = std::clamp<int64_t>(begin, 0, width);
        end = std::clamp<int64_t>(end, 0, width);
        if (begin < end) {
            PaintOneRun(line, static_cast<uint32_t>(begin), static_cast<uint32_t>(end));
        }
    }
}

// Whether the changes rise from 0 on and stay within the line. Written for the compiler to take
// several at once.
bool RisesWithin(const int32_t* list, uint32_t count, uint32_t width) {
    const auto at = [list](uint32_t i) { return static_cast<uint32_t>(list[i]); };
    uint32_t falls = at(0);
    for (uint32_t i = 1; i < count; ++i)
        falls |= at(i) - at(i - 1);
    constexpr uint32_t kSignBit = 1U << 31;
    return (falls & kSignBit) == 0 && at(count - 1) <= width;
}

// Inverts the word of the line that `change` lies in from there on.
inline void Invert(uint8_t* line, uint32_t change) {
    constexpr uint32_t kWordBits = 64;
    uint8_t* const word = line + change / kWordBits * sizeof(uint64_t);
    StoreNative64(word, LoadNative64(word) ^ ~uint64_t{0} >> change % kWordBits);
}

void PaintByChanges(const int32_t* list, uint8_t* line, uint32_t count, uint32_t rowBytes) {
    // A change at the line's end falls into the spare word.
    std::memset(line, 0, rowBytes + sizeof(uint64_t));
    for (uint32_t i = 0; i + 1 < count; i += 2) {
        Invert(line, static_cast<uint32_t>(list[i]));
        Invert(line, static_cast<uint32_t>(list[i + 1]));
    }
    // The last bit of a word tells whether the number of changes so far is odd.
    uint64_t carry = 0;
    for (uint32_t at = 0; at < rowBytes; at += sizeof(uint64_t)) {
        const uint64_t word = LoadNative64(line + at) ^ carry;
        carry = 0 - (word & 1);
        StoreBigEndian64(line + at, word);
    }
}

}  // namespace

void PaintRuns(const int32_t* list, uint8_t* line, uint32_t count, uint32_t rowBytes) {
    // The last change of an odd count closes nothing.
    count &= ~1U;
    if (count == 0) {
        std::memset(line, 0, rowBytes);
        return;
    }
    // Below about one change for every four words painting run by run is cheaper.
    const bool many = count > rowBytes / 32;
    if (many && RisesWithin(list, count, rowBytes * 8)) {
        PaintByChanges(list, line, count, rowBytes);
    } else {
        PaintRunByRun(list, line, count, rowBytes);
    }
}

}  // namespace vellim
