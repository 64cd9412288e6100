// The bits of an encoding run on their way into its code buffer, first bit in bit 7 of a byte.
//
// Bits gather in a word of 64. A spill stores the word at the cursor and moves on by the whole
// bytes in it. What it stores behind those is stored again by the next spill, so that it may reach
// into the slack behind the code buffer. A full buffer goes to the stream at its exact size.
#pragma once

#include <cstdint>

#include "codec/bit_reader.h"
#include "vellim/codec.h"

namespace vellim {

struct BitCode {
    uint32_t bits = 0;  // the last of them in bit 0
    uint32_t length = 0;
};

// A run whose work memory has been taken, and what writes out its full code buffer:
// FlushCodeBuffer, unless the stream is cut into blocks.
struct CodeSink {
    CodecState* state;
    uint32_t (*flush)(CodecState* state);

    explicit CodeSink(CodecState& run, uint32_t (*flushBuffer)(CodecState*) = FlushCodeBuffer)
        : state(&run), flush(flushBuffer) {}
};

// Put needs room for its bits: 57 behind a Spill, or what MakeRoom was asked for. Inner loops work
// on a copy of the writer, which then lives in registers, and copy it back. The sink must outlive
// its writers.
class BitWriter {
  public:
    explicit BitWriter(const CodeSink& sink)
        : cursor_(sink.state->CodeCursor),
          end_(sink.state->CodeBufferBase + sink.state->CodeBufferSize),
          sink_(&sink) {}

    void Put(uint64_t bits, uint32_t length) {
        word_ = word_ << length | bits;
        count_ += length;
    }
    void Put(BitCode code) { Put(code.bits, code.length); }

    void MakeRoom(uint32_t bits) {
        if (count_ + bits > kWordBits) Spill();
    }

    void Spill() {
        // Without any bits this stores bytes that mean nothing, and moves on by none.
        StoreBigEndian64(cursor_, word_ << ((kWordBits - count_) % kWordBits));
        cursor_ += count_ / 8;
        count_ %= 8;
        if (cursor_ >= end_) WriteFullBuffer();
    }

    // A Spill and a Put.
    void PutCode(BitCode code) {
        Spill();
        Put(code);
    }

    void PutOnes(uint32_t count);

    // Fill up with zero bits, if need be: so that the next bit begins a byte, or so that `bits`
    // bits more will end one.
    void AlignToByte() { AlignEndOf(0); }
    void AlignEndOf(uint32_t bits) {
        Spill();
        Put(0, static_cast<uint32_t>((0 - count_ - bits) % 8));
    }

    // Fills the byte up with zero bits; one that hasn't been begun becomes zero as a whole.
    void StepToNextByte() {
        Spill();
        Put(0, static_cast<uint32_t>(8 - count_));
    }

    // Brings the run's fields up to all whole bytes so far; the bits of a byte that has been begun
    // stay here. 0, or the failure of a write since the writer was made.
    uint32_t HandOver() {
        Spill();
        sink_->state->CodeCursor = cursor_;
        sink_->state->CodeLeft = static_cast<uint32_t>(end_ - cursor_);
        return failure_;
    }

  private:
    static constexpr uint32_t kWordBits = 64;

    struct Written {
        uint8_t* cursor;
        uint32_t failure;
    };
    // Not a member, which would need the writer's address and keep it out of registers.
    static Written FlushFullBuffer(const CodeSink& sink, const uint8_t* cursor, uint32_t failure);

    void WriteFullBuffer() {
        const Written written = FlushFullBuffer(*sink_, cursor_, failure_);
        cursor_ = written.cursor;
        failure_ = written.failure;
    }

    // In an order that gives a compiler no cause to keep two of them in one vector register.
    uint64_t word_ = 0;  // the last count_ of its bits wait; those before are spilled
    uint8_t* cursor_;
    uint64_t count_ = 0;
    uint8_t* end_;
    const CodeSink* sink_;
    uint32_t failure_ = 0;
};

}  // namespace vellim
