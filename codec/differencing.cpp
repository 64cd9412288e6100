// A line of differences becomes pixels by a running sum, modulo 256 or 16, and pixels become
// differences by the opposite.
//
// Bytes are summed in blocks. Within a block the sums come by adding the block to itself moved on
// by one pixel, two, four and so on; what all blocks before add up to is added last. So the blocks
// wait for each other with a single addition, where a plain loop waits with every pixel. The
// differences are taken in blocks too, from the line's end down, so that what stands on the left of
// a block is still the pixels themselves.

#include "codec/differencing.h"

#include <cstddef>
#include <cstring>
#include <utility>

namespace vellim {
namespace {

constexpr size_t kLanes = 16;
using Lanes = uint8_t __attribute__((vector_size(kLanes)));

// Moves all bytes on by `Count` places, zeros moving in.
template <size_t Count, size_t... Lane>
void Raise(Lanes& value, std::index_sequence<Lane...> /*lanes*/) {
    value = __builtin_shufflevector(Lanes{}, value, (kLanes - Count + Lane)...);
}
template <size_t Count>
void Raise(Lanes& value) {
    Raise<Count>(value, std::make_index_sequence<kLanes>{});
}

// The same the other way.
template <size_t Count, size_t... Lane>
void Lower(Lanes& value, std::index_sequence<Lane...> /*lanes*/) {
    value = __builtin_shufflevector(value, Lanes{}, (Count + Lane)...);
}
template <size_t Count>
void Lower(Lanes& value) {
    Lower<Count>(value, std::make_index_sequence<kLanes>{});
}

// Each pixel of `Step` bytes becomes the sum of all up to it.
template <size_t Step, size_t Distance = Step>
void RunningSum(Lanes& value) {
    Lanes raised = value;
    Raise<Distance>(raised);
    value += raised;
    if constexpr (Distance * 2 + Step <= kLanes) RunningSum<Step, Distance * 2>(value);
}

// Bytes of the whole pixels in a block, the number of which is a power of two.
template <size_t Step>
constexpr size_t kBlock = Step == 1 ? 16 : 12;

// Sums a line's whole blocks, as far as there is a block to be read behind each; gives the bytes
// done. A block of fewer bytes than the lanes writes into the next one, which therefore has to be
// read first.
template <size_t Step>
size_t SumBlocks(uint8_t* line, size_t size) {
    constexpr size_t kSize = kBlock<Step>;
    if (size < kSize + kLanes) return 0;
    Lanes block;
    Lanes before{};
    std::memcpy(&block, line, kLanes);
    size_t done = 0;
    for (; done + kSize + kLanes <= size; done += kSize) {
        Lanes next;
        std::memcpy(&next, line + done + kSize, kLanes);
        Raise<kLanes - kSize>(block);
        RunningSum<Step>(block);
        Lanes last = block;
        Lower<kLanes - Step>(last);
        RunningSum<Step>(last);  // the block's last pixel, at every place
        Lower<kLanes - kSize>(block);
        block += before;
        before += last;
        std::memcpy(line + done, &block, kLanes);
        block = next;
    }
    std::memcpy(line + done, &block, kLanes);
    return done;
}

// Differences of `Step` bytes a pixel.
template <size_t Step>
void SumBytes(uint8_t* line, size_t size) {
    const size_t done = SumBlocks<Step>(line, size);
    for (size_t i = done == 0 ? Step : done; i < size; ++i)
        line[i] = static_cast<uint8_t>(line[i] + line[i - Step]);
}

// Two pixels a byte, the left one in the high half.
void SumNibbles(uint8_t* line, size_t size) {
    unsigned left = 0;
    for (size_t i = 0; i < size; ++i) {
        const unsigned high = left + (line[i] >> 4);
        left = high + line[i];
        line[i] = static_cast<uint8_t>((high & 0xF) << 4 | (left & 0xF));
    }
}

// Each byte but the first `Step` becomes its difference from the byte `Step` before.
template <size_t Step>
void DifferBytes(uint8_t* line, size_t size) {
    size_t left = size;
    for (; left >= kLanes + Step; left -= kLanes) {
        Lanes block;
        Lanes before;
        std::memcpy(&block, line + left - kLanes, kLanes);
        std::memcpy(&before, line + left - kLanes - Step, kLanes);
        block -= before;
        std::memcpy(line + left - kLanes, &block, kLanes);
    }
    for (; left > Step; --left)
        line[left - 1] = static_cast<uint8_t>(line[left - 1] - line[left - 1 - Step]);
}

// `pixels` minus what is on the left of each, both halves of a byte at once; `before` is the byte
// on the left of each byte.
template <typename T>
T DifferHalves(T pixels, T before) {
    constexpr uint8_t kHigh = 0xF0;
    constexpr uint8_t kLow = 0x0F;
    const T left = static_cast<T>((before << 4) | (pixels >> 4));
    const T high = static_cast<T>((pixels & kHigh) - (left & kHigh));
    const T low = static_cast<T>((pixels & kLow) - (left & kLow));
    return static_cast<T>((high & kHigh) | (low & kLow));
}

// Two pixels a byte. The very first has nothing on its left.
void DifferNibbles(uint8_t* line, size_t size) {
    size_t left = size;
    for (; left > kLanes; left -= kLanes) {
        Lanes block;
        Lanes before;
        std::memcpy(&block, line + left - kLanes, kLanes);
        std::memcpy(&before, line + left - kLanes - 1, kLanes);
        block = DifferHalves(block, before);
        std::memcpy(line + left - kLanes, &block, kLanes);
    }
    for (; left > 0; --left) {
        const uint8_t before = left > 1 ? line[left - 2] : uint8_t{0};
        line[left - 1] = DifferHalves(line[left - 1], before);
    }
}

}  // namespace

void UndoDifferencing(CodecState& state) {
    switch (state.Dimensions.biBitCount) {
        case 4:
            return SumNibbles(state.LineBuffer, state.RowBytes);
        case 8:
            return SumBytes<1>(state.LineBuffer, state.RowBytes);
        case 24:
            return SumBytes<3>(state.LineBuffer, state.RowBytes);
        default:
            return;
    }
}

void ApplyDifferencing(CodecState& state) {
    switch (state.Dimensions.biBitCount) {
        case 4:
            return DifferNibbles(state.LineBuffer, state.RowBytes);
        case 8:
            return DifferBytes<1>(state.LineBuffer, state.RowBytes);
        case 24:
            return DifferBytes<3>(state.LineBuffer, state.RowBytes);
        default:
            return;
    }
}

}  // namespace vellim
