// CCITT coding the slow and plain way: an encoder that looks at pixels, and a decoder that follows
// the rules step by step with a window of eight bits. The library's decoders must give the same
// lines and the same code on any input.
#pragma once

#include <cstdint>
#include <vector>

#include "support/engine_run.h"

namespace vellim::test {

// A bilevel picture, 1 is black; rows packed, first pixel in bit 7.
struct Picture {
    int32_t width = 0;
    std::vector<Bytes> rows;
};

// Runs of random length: `meanRun` pixels on the average, each row like the one above but for some
// of its changes, so that all modes come up.
Picture RandomPicture(uint32_t seed, int32_t width, int32_t height, double meanRun);

// In place of a key, where MMR streams have none.
inline constexpr CompressionKey kMmr = 0;

// `code` in the blocks of an MMR stream: full ones of `size` bytes, and the rest, be it empty.
Bytes InBlocks(const Bytes& code, size_t size);

// The other way, with a buffer that keeps what it held where bytes are missing.
Bytes CodeOfBlocks(const Bytes& stream);

// What an encoding run of shape and key `run` leaves of the first `lines` lines of a picture, where
// the callback stopped it behind them, or of all.
Encoded ReferenceCcittEncoder(const EngineRun& run, const Picture& picture, int32_t k,
                              size_t lines);

// Decodes the strips of `run` by the rules of its key.
Outcome ReferenceCcitt(const EngineRun& run);

}  // namespace vellim::test
