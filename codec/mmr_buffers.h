// The code buffer of an MMR run, whose stream is a sequence of blocks (IOCA image data): 0xFE,
// 0x92, the number of bytes that follow in 16 bits, high byte first, and those bytes. The code runs
// on from block to block as if they weren't there.
#pragma once

#include <cstdint>

#include "vellim/codec.h"

namespace vellim {

// As InitDecodeBuffers for a stream of blocks: 1 without memory, 6 when the first block can't be
// read, whatever the cause.
uint32_t InitMmrDecodeBuffers(CodecState& state);

// Reads one block into the code buffer. A length of 0 stands for as many bytes as the buffer holds.
// 5 when no block begins here, or one that the buffer doesn't hold; 6 on an I/O failure. Bytes that
// are missing at the stream's end aren't missed: the buffer keeps what it held in their place.
uint32_t FillMmrCodeBuffer(CodecState* state);

// Writes the filled part of the code buffer as one block, be it empty. 6 when it can't.
uint32_t FlushMmrCodeBuffer(CodecState* state);

}  // namespace vellim
