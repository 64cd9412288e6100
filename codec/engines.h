// The engines side by side. Each takes a run that its driver has set up and gives 0 or a failure
// code; the finishing signal 3 of the buffer calls has become 0 by then.
#pragma once

#include <cstdint>

#include "vellim/codec.h"

namespace vellim {

using Engine = uint32_t (*)(CodecState& state);

// Uncompressed (TIFF 6.0 section 3) and PackBits (section 9).
uint32_t DecodeRaw(CodecState& state);
uint32_t DecodePackBits(CodecState& state);
uint32_t EncodeRaw(CodecState& state);
uint32_t EncodePackBits(CodecState& state);

// LZW, with and without horizontal differencing (TIFF 6.0 sections 13 and 14).
uint32_t DecodeLzw(CodecState& state);
uint32_t EncodeLzw(CodecState& state);

// T.4 one-dimensional coding: lines on byte boundaries without EOL, and lines with EOL.
uint32_t Decode1DNoEol(CodecState& state);
uint32_t Decode1DEol(CodecState& state);
uint32_t Encode1D(CodecState& state);  // both, by the run's key

// T.4 two-dimensional coding, and T.6.
uint32_t Decode2DEol(CodecState& state);
uint32_t DecodeGroup4(CodecState& state);
uint32_t EncodeGroup3TwoD(CodecState& state);
uint32_t EncodeGroup4(CodecState& state);

// MMR streams (IOCA). These have no key; the encoder writes its last block itself.
uint32_t DecodeMmr(CodecState& state);
uint32_t EncodeMmr(CodecState& state);

}  // namespace vellim
