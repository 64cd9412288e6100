// Lookup tables for the run length codes of ITU-T T.4: the next bits of the stream resolve a whole
// code in one step. They are complete: every pattern but eight zero bits begins with a code.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace vellim {

enum class RunKind : uint8_t {
    Terminating,
    MakeUp,
    ZeroByte,  // eight zero bits, as every end-of-line code begins with
};

struct RunEntry {
    uint16_t run;    // pixels
    uint8_t length;  // bits of the code
    RunKind kind;
};

// The longest white code has 12 bits, the longest black one 13.
inline constexpr int kWhiteLookupBits = 12;
inline constexpr int kBlackLookupBits = 13;

extern const std::array<RunEntry, 1U << kWhiteLookupBits> kWhiteRuns;
extern const std::array<RunEntry, 1U << kBlackLookupBits> kBlackRuns;

enum class RunColor : uint8_t { White = 0, Black = 1 };

constexpr RunColor OtherColor(RunColor color) {
    return color == RunColor::White ? RunColor::Black : RunColor::White;
}

// The entry for a window whose first bit is bit 63.
inline RunEntry LookUpRun(uint64_t window, RunColor color) {
    return color == RunColor::White ? kWhiteRuns[window >> (64 - kWhiteLookupBits)]
                                    : kBlackRuns[window >> (64 - kBlackLookupBits)];
}

// Two runs in one step: a run of a colour and the run of the other colour behind it, when both are
// terminating codes that together take no more than kPairBits. `bits` is 0 when they don't.
struct RunPair {
    uint8_t first;
    uint8_t second;
    uint8_t bits;        // of both codes
    uint8_t secondBits;  // of the second one
};

inline constexpr int kPairBits = 12;

// By the colour of the first run, then by the next bits.
extern const std::array<std::array<RunPair, 1U << kPairBits>, 2> kRunPairs;

inline RunPair LookUpRunPair(uint64_t window, RunColor first) {
    return kRunPairs[static_cast<size_t>(first)][window >> (64 - kPairBits)];
}

}  // namespace vellim
