// PackBits (TIFF 6.0 section 9). A packet is a signed byte n and what it stands for: n + 1 bytes
// to be taken as they are, or, below 0, 1 - n copies of one byte.
//
// Two leniencies. -128 is a repeat of 129 like its neighbours, not an empty packet. And a line
// needn't end where a packet does: what a packet has beyond the line's end is dropped, and the
// next line begins with the next packet. The surplus lands in the spare bytes behind the line,
// which is why a packet is written without a look at the room.
//
// A packet that lies in the code buffer as a whole is moved in chunks of 16 bytes, the last of
// which may read and write past the packet's end; both buffers have room for that. Where the
// buffer could end inside a packet, it is taken byte by byte.

#include <cstring>

#include "codec/end_of_run.h"
#include "codec/engines.h"
#include "vellim/failures.h"

namespace vellim {
namespace {

constexpr uint32_t kChunkBytes = 16;
constexpr int64_t kLongestPacket = 129;  // a head and 128 literal bytes

// The cursors of a run, in locals for as long as no buffer call comes between.
struct Cursors {
    uint8_t* code;
    uint8_t* codeEnd;
    uint8_t* line;
    int64_t lineLeft;
};

Cursors Load(const CodecState& state) {
    return {state.CodeCursor, state.CodeCursor + state.CodeLeft, state.LineCursor,
            int64_t{state.LineBytesLeft}};
}

constexpr int HeadOf(uint8_t byte) {
    return byte < 128 ? byte : byte - 256;
}

// What a packet of this head stands for, in bytes.
uint32_t BytesOf(int head) {
    return static_cast<uint32_t>((head < 0 ? -head : head) + 1);
}

void CopyChunks(uint8_t* to, const uint8_t* from, uint32_t count) {
    for (uint32_t done = 0; done < count; done += kChunkBytes)
        std::memcpy(to + done, from + done, kChunkBytes);
}

void FillChunks(uint8_t* to, uint8_t value, uint32_t count) {
    for (uint32_t done = 0; done < count; done += kChunkBytes)
        std::memset(to + done, value, kChunkBytes);
}

bool HoldsWholePacket(const Cursors& at) {
    return at.codeEnd - at.code >= kLongestPacket;
}

// Takes packets until the line is full or the buffer could end inside the next one.
void TakeWholePackets(Cursors& shared) {
    Cursors at = shared;
    do {
        const int head = HeadOf(*at.code++);
        const uint32_t count = BytesOf(head);
        if (head >= 0) {
            CopyChunks(at.line, at.code, count);
            at.code += count;
        } else {
            FillChunks(at.line, *at.code++, count);
        }
        at.line += count;
        at.lineLeft -= count;
    } while (at.lineLeft > 0 && HoldsWholePacket(at));
    shared = at;
}

// The stream's next byte. A failure to get one goes to `result`.
uint8_t TakeByte(CodecState& state, Cursors& at, uint32_t& result) {
    if (at.code == at.codeEnd) {
        result = FillCodeBuffer(&state);
        if (result != TIFF_SUCCESS) return 0;
        at.code = state.CodeCursor;
        at.codeEnd = at.code + state.CodeLeft;
    }
    return *at.code++;
}

uint32_t TakePacketByBytes(CodecState& state, Cursors& at) {
    uint32_t result = TIFF_SUCCESS;
    const int head = HeadOf(TakeByte(state, at, result));
    if (result != TIFF_SUCCESS) return result;
    const uint32_t count = BytesOf(head);
    if (head < 0) {
        FillChunks(at.line, TakeByte(state, at, result), count);
    } else {
        for (uint32_t i = 0; i < count && result == TIFF_SUCCESS; ++i)
            at.line[i] = TakeByte(state, at, result);
    }
    at.line += count;
    at.lineLeft -= count;
    return result;
}

// Takes at least one packet, so that even lines of no bytes use the data up.
uint32_t TakeLine(CodecState& state, Cursors& at) {
    uint32_t result = TIFF_SUCCESS;
    do {
        if (HoldsWholePacket(at))
            TakeWholePackets(at);
        else
            result = TakePacketByBytes(state, at);
    } while (result == TIFF_SUCCESS && at.lineLeft > 0);
    return result;
}

}  // namespace

uint32_t DecodePackBits(CodecState& state) {
    uint32_t result = InitDecodeBuffers(&state);
    while (result == TIFF_SUCCESS) {
        Cursors at = Load(state);
        result = TakeLine(state, at);
        if (result != TIFF_SUCCESS) break;
        state.CodeCursor = at.code;
        state.CodeLeft = static_cast<uint32_t>(at.codeEnd - at.code);
        result = FlushDataBuffer(&state);
    }
    return EndOfRun(result);
}

}  // namespace vellim
