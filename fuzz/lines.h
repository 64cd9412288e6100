// Takes the lines of a decoding run and keeps a digest of them, so that two runs can be compared.
#pragma once

#include <cstdint>
#include <functional>

#include "vellim/codec.h"

namespace vellim::fuzz {

// What a decoding run gave.
struct Outcome {
    int32_t result = 0;
    int32_t code = 0;
    uint32_t lines = 0;
    uint64_t digest = 0;
    bool stopped = false;  // by the collector, which has a limit

    bool operator==(const Outcome&) const = default;
};

// A callback may change the bytes of a line. One run keeps its hands off, the other scribbles: a
// decoder that relies on the line before, or on a neutral buffer, gives different pictures. (LZW
// does so by rule: an end code in mid-line delivers the line with what the buffer held.)
enum class Hands { Off, Scribbling };

struct Expected {
    uint32_t rowBytes;
    uint32_t firstLine;
    int64_t lines;  // below 0: not known
};

using Decode = std::function<int32_t(uintptr_t callbackData, LineCallback callback)>;

// Runs `decode`, checks that lines come in order and that the result, the failure code and the
// number of lines fit together.
Outcome Run(const Expected& expected, Hands hands, const Decode& decode);

}  // namespace vellim::fuzz
