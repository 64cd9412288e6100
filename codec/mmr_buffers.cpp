#include "codec/mmr_buffers.h"

#include <array>

#include "codec/buffers.h"
#include "vellim/failures.h"
#include "vellim/platform.h"
#include "vellim/streams.h"

namespace vellim {
namespace {

constexpr uint32_t kMaxMmrCodeBuffer = 65520;

using BlockHead = std::array<uint8_t, 4>;
constexpr uint8_t kBlockMark[] = {0xFE, 0x92};

}  // namespace

uint32_t InitMmrDecodeBuffers(CodecState& state) {
    const uint32_t result = AllocateWorkMemory(state, kMaxMmrCodeBuffer);
    if (result != TIFF_SUCCESS) return result;
    if (FillMmrCodeBuffer(&state) != TIFF_SUCCESS) return TIFF_IO_ERROR;
    BeginLine(state);
    return TIFF_SUCCESS;
}

// A writer ends its data with a block of length 0 when its last bytes filled the block before, so
// that the stream may end right behind a head. What the buffer then still holds is this run's own.
uint32_t FillMmrCodeBuffer(CodecState* state) {
    BlockHead head{};
    const int32_t got = _lread(state->Stream, head.data(), uint32_t{head.size()});
    if (got != int32_t{head.size()} || head[0] != kBlockMark[0] || head[1] != kBlockMark[1]) {
        return TIFF_UNEXPECTED_END;
    }
    const uint32_t stated = uint32_t{head[2]} << 8 | head[3];
    const uint32_t length = stated == 0 ? state->CodeBufferSize : stated;
    if (length > state->CodeBufferSize) return TIFF_UNEXPECTED_END;
    state->BufferMark = state->StreamCursor;
    state->CodeLeft = length;
    state->StreamCursor += length;
    state->CodeCursor = state->CodeBufferBase;
    return _lread(state->Stream, state->CodeBufferBase, length) < 0 ? TIFF_IO_ERROR : TIFF_SUCCESS;
}

uint32_t FlushMmrCodeBuffer(CodecState* state) {
    const uint32_t length = state->CodeBufferSize - state->CodeLeft;
    BlockHead head{kBlockMark[0], kBlockMark[1], static_cast<uint8_t>(length >> 8),
                   static_cast<uint8_t>(length)};
    if (LongWrite(state->Stream, TIFF_TYPE_BYTE, uint32_t{head.size()}, head.data(),
                  TIFF_LITTLE_ENDIAN, static_cast<int32_t>(state->FillOrder)) == 0) {
        return TIFF_IO_ERROR;
    }
    return FlushCodeBuffer(state);
}

}  // namespace vellim
