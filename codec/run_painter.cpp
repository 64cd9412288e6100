#include "codec/run_painter.h"

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

// Whether the changes rise from 0 on. Written for the compiler to take several at once.
bool Rises(const int32_t* list, uint32_t count) {
    const auto at = [list](uint32_t i) { return static_cast<uint32_t>(list[i]); };
    uint32_t falls = at(0);
    for (uint32_t i = 1; i < count; ++i)
        falls |= at(i) - at(i - 1);
    constexpr uint32_t kSignBit = 1U << 31;
    return (falls & kSignBit) == 0;
}

}  // namespace

void PaintRuns(const int32_t* list, uint8_t* line, uint32_t count, uint32_t rowBytes) {
    // The last change of an odd count closes nothing.
    count &= ~1U;
    if (count == 0) {
        std::memset(line, 0, rowBytes);
        return;
    }
    // Below about one change for every four words painting run by run is cheaper; and a damaged
    // line may have its changes in any order.
    const bool many = count > rowBytes / 32;
    if (!many || !Rises(list, count)) {
        PaintRunByRun(list, line, count, rowBytes);
        return;
    }
    LinePainter painter(line, rowBytes);
    for (uint32_t i = 0; i < count; i += 2)
        painter.Black(list[i], list[i + 1]);
    painter.Finish();
}

}  // namespace vellim
