// Uncompressed lines (TIFF 6.0 section 3).
//
// Lines are delivered from where they were read to, without a copy: the callback gets an address in
// the code buffer in place of the line buffer's. They are read a few kilobytes at a time, so that
// they are still in the nearest cache when the callback looks at them. What FillCodeBuffer would
// have buffered is kept track of all the same, since it decides how a strip that begins behind the
// stream's end fails.

#include <algorithm>

#include "codec/end_of_run.h"
#include "codec/engines.h"
#include "vellim/failures.h"
#include "vellim/streams.h"

namespace vellim {
namespace {

constexpr uint32_t kPreferredRead = 8192;

// The bytes of the run's stream, line by line.
class LineSource {
  public:
    explicit LineSource(CodecState& state)
        : state_(state),
          base_(int64_t{mTell(state.Stream)} - state.StreamCursor),
          readable_(static_cast<uint32_t>(
              std::clamp<int64_t>(mSize(state.Stream) - base_, 0, state.StreamLimit))) {
        TakeOver();
    }

    // The next line, or null with the failure in `failure`.
    uint8_t* NextLine(uint32_t& failure) {
        failure = Buffer();
        if (failure != TIFF_SUCCESS) return nullptr;
        const uint32_t bytes = state_.RowBytes;
        if (position_ < readFrom_ || position_ + bytes > readTo_) {
            failure = Read(bytes);
            if (failure != TIFF_SUCCESS) return nullptr;
        }
        uint8_t* const line = memory_ + (position_ - memoryFrom_);
        position_ += bytes;
        // The callback may change its line; strips may overlap, but none sees those bytes again.
        readFrom_ = position_;
        return line;
    }

    // Brings the run's fields up to where the lines are, for a step to the next strip.
    void GiveBack() {
        state_.BufferMark = mark_;
        state_.StreamCursor = buffered_;
        state_.CodeCursor = state_.CodeBufferBase + (position_ - mark_);
        state_.CodeLeft = buffered_ - position_;
    }

    // Goes on where that step has led.
    void TakeOver() {
        const auto inBuffer = static_cast<uint32_t>(state_.CodeCursor - state_.CodeBufferBase);
        position_ = state_.BufferMark + inBuffer;
        buffered_ = state_.StreamCursor;
        if (state_.BufferMark == mark_ && memory_ != nullptr) return;
        mark_ = state_.BufferMark;
        SetMemory(state_.CodeBufferBase, mark_, mark_ + inBuffer + state_.CodeLeft);
    }

  private:
    // Moves the bounds of the code buffer on until they hold the line's end. 0, 5 where the run's
    // length ends before, or 6 where the stream itself does.
    uint32_t Buffer() {
        while (uint64_t{position_} + state_.RowBytes > buffered_) {
            if (buffered_ >= state_.StreamLimit) return TIFF_UNEXPECTED_END;
            mark_ = buffered_;
            buffered_ += std::min(state_.CodeBufferSize, state_.StreamLimit - buffered_);
            if (buffered_ > readable_) return TIFF_IO_ERROR;
        }
        return TIFF_SUCCESS;
    }

    // Reads the line at the position, and whole lines behind it as far as they are cheap.
    uint32_t Read(uint32_t lineBytes) {
        const bool isLong = lineBytes > state_.CodeBufferSize;
        const uint32_t room = isLong ? lineBytes : std::min(state_.CodeBufferSize, kPreferredRead);
        const uint32_t lines = lineBytes == 0 ? 0 : std::max(1U, room / lineBytes);
        const uint32_t bytes = std::min(lines * lineBytes, readable_ - position_);
        uint8_t* const memory = isLong ? state_.LineBuffer : state_.CodeBufferBase;
        if (position_ != streamAt_ &&
            mSeek(state_.Stream, static_cast<int32_t>(base_ + position_), 0) < 0) {
            return TIFF_IO_ERROR;
        }
        if (LongRead(state_.Stream, TIFF_TYPE_BYTE, bytes, memory, TIFF_LITTLE_ENDIAN,
                     static_cast<int32_t>(state_.FillOrder)) == 0) {
            return TIFF_IO_ERROR;
        }
        SetMemory(memory, position_, position_ + bytes);
        return TIFF_SUCCESS;
    }

    void SetMemory(uint8_t* memory, uint32_t from, uint32_t to) {
        memory_ = memory;
        memoryFrom_ = from;
        readFrom_ = from;
        readTo_ = to;
        streamAt_ = to;
    }

    CodecState& state_;
    // Offsets count from where the run's data began: bare data may begin inside its stream.
    int64_t base_;           // what they count from
    uint32_t readable_;      // where the run's length or the stream ends
    uint32_t position_ = 0;  // of the next line
    // The code buffer as FillCodeBuffer would have it: stream offsets of its start and its end.
    uint32_t mark_ = 0;
    uint32_t buffered_ = 0;
    // What has been read: memory_ holds the stream from memoryFrom_ to readTo_, of which the bytes
    // from readFrom_ on are as they were read.
    uint8_t* memory_ = nullptr;
    uint32_t memoryFrom_ = 0;
    uint32_t readFrom_ = 0;
    uint32_t readTo_ = 0;
    uint32_t streamAt_ = 0;  // position of the stream itself
};

// Delivers a line that isn't its strip's last: nothing but the count moves on.
uint32_t DeliverWithinStrip(CodecState& state, uint8_t* line) {
    const uint32_t answer = state.Callback(line, state.LineNumber, state.CallbackData);
    if (answer == TIFF_LINE_GO_ON) state.LineNumber += 1;
    return answer;
}

uint32_t DeliverLastOfStrip(CodecState& state, uint8_t* line) {
    uint8_t* const lineBuffer = state.LineBuffer;
    state.LineBuffer = line;
    const uint32_t result = FlushDataBuffer(&state);
    state.LineBuffer = lineBuffer;
    state.LineCursor = lineBuffer;
    return result;
}

}  // namespace

uint32_t DecodeRaw(CodecState& state) {
    if (const uint32_t code = InitDecodeBuffers(&state); code != 0) return EndOfRun(code);
    if (state.Callback == nullptr) return TIFF_IO_ERROR;
    LineSource source(state);
    for (;;) {
        uint32_t failure = 0;
        uint8_t* const line = source.NextLine(failure);
        if (failure != 0) return failure;
        uint32_t code = 0;
        if (state.LineNumber != state.StripLastLine) {
            code = DeliverWithinStrip(state, line);
        } else {
            source.GiveBack();
            code = DeliverLastOfStrip(state, line);
            source.TakeOver();
        }
        if (code != 0) return EndOfRun(code);
    }
}

}  // namespace vellim
