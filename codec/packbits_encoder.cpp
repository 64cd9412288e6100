// PackBits (TIFF 6.0 section 9), each line by itself, by two rules only. Where a packet begins with
// two equal bytes it is a repeat, as long as they go on. Else it is a literal up to the first byte
// that the next one equals, that byte included: a pair behind a literal is split between the two
// packets. Either stands for 128 bytes at most.
//
//     A B B C C C      01 A B   01 B C   FF C
//
// Bytes are compared eight at a time. That may read behind the line's end, where the line buffer
// has spare bytes; what is found there is cut off by the packet's bound.

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstring>

#include "codec/end_of_run.h"
#include "codec/engines.h"
#include "vellim/failures.h"

namespace vellim {
namespace {

constexpr uint32_t kLongestPacket = 128;
constexpr std::ptrdiff_t kPacketRoom = kLongestPacket + 1;  // with its head
constexpr uint32_t kWordBytes = sizeof(uint64_t);
constexpr uint32_t kChunkBytes = 16;
constexpr uint64_t kOnes = 0x0101010101010101;
constexpr uint64_t kTops = 0x8080808080808080;

// Eight bytes, the first of them lowest.
uint64_t LoadWord(const uint8_t* from) {
    uint64_t word = 0;
    std::memcpy(&word, from, sizeof(word));
    if constexpr (std::endian::native == std::endian::big) word = __builtin_bswap64(word);
    return word;
}

uint32_t FirstByteOf(uint64_t mark) {
    return static_cast<uint32_t>(std::countr_zero(mark)) / 8;
}

// How many bytes from `from` on equal the first, `most` of them at most.
uint32_t RepeatLength(const uint8_t* from, uint32_t most) {
    const uint64_t pattern = *from * kOnes;
    for (uint32_t done = 0; done < most; done += kWordBytes) {
        const uint64_t other = LoadWord(from + done) ^ pattern;
        if (other != 0) return std::min(done + FirstByteOf(other), most);
    }
    return most;
}

// How many bytes from `from` on stand before or at the first that equals the one behind it.
uint32_t LiteralLength(const uint8_t* from, uint32_t most) {
    for (uint32_t done = 0; done < most; done += kWordBytes) {
        const uint64_t same = LoadWord(from + done) ^ LoadWord(from + done + 1);
        // Marks zero bytes; a false mark can only stand above a true one.
        const uint64_t zeros = (same - kOnes) & ~same & kTops;
        if (zeros != 0) return std::min(done + FirstByteOf(zeros) + 1, most);
    }
    return most;
}

constexpr uint8_t RepeatHead(uint32_t length) {
    return static_cast<uint8_t>(1 - length);
}

constexpr uint8_t LiteralHead(uint32_t length) {
    return static_cast<uint8_t>(length - 1);
}

// Codes packets while the code buffer surely has room for the next one. A literal is copied in
// chunks, the last of which may touch what is behind it: both buffers have bytes to spare there.
void PutWholePackets(CodecState& state) {
    const uint8_t* line = state.LineCursor;
    const uint8_t* const lineEnd = line + state.LineBytesLeft;
    uint8_t* code = state.CodeCursor;
    const uint8_t* const codeEnd = code + state.CodeLeft;
    while (line != lineEnd && codeEnd - code >= kPacketRoom) {
        const auto most =
            static_cast<uint32_t>(std::min<std::ptrdiff_t>(lineEnd - line, kLongestPacket));
        uint32_t length = 1;
        if (most > 1 && line[0] == line[1]) {
            length = RepeatLength(line, most);
            *code++ = RepeatHead(length);
            *code++ = *line;
        } else {
            length = LiteralLength(line, most);
            *code++ = LiteralHead(length);
            for (uint32_t done = 0; done < length; done += kChunkBytes)
                std::memcpy(code + done, line + done, kChunkBytes);
            code += length;
        }
        line += length;
    }
    state.LineCursor += line - state.LineCursor;
    state.LineBytesLeft = static_cast<uint32_t>(lineEnd - line);
    state.CodeCursor = code;
    state.CodeLeft = static_cast<uint32_t>(codeEnd - code);
}

uint32_t PutByte(CodecState& state, uint8_t byte) {
    if (state.CodeLeft == 0) {
        const uint32_t result = FlushCodeBuffer(&state);
        if (result != TIFF_SUCCESS) return result;
    }
    *state.CodeCursor = byte;
    state.CodeCursor += 1;
    state.CodeLeft -= 1;
    return TIFF_SUCCESS;
}

// Moves `count` bytes of the line, and flushes the code buffer whenever that fills it.
uint32_t PutBytes(CodecState& state, uint32_t count) {
    while (count > 0) {
        const uint32_t fitting = std::min<uint32_t>(count, state.CodeLeft);
        std::memcpy(state.CodeCursor, state.LineCursor, fitting);
        state.CodeCursor += fitting;
        state.CodeLeft -= fitting;
        state.LineCursor += fitting;
        count -= fitting;
        if (state.CodeLeft > 0) continue;
        const uint32_t result = FlushCodeBuffer(&state);
        if (result != TIFF_SUCCESS) return result;
    }
    return TIFF_SUCCESS;
}

// Codes one packet, the code buffer being full before, in or behind it.
uint32_t PutPacketInPieces(CodecState& state) {
    const uint8_t* line = state.LineCursor;
    const uint32_t most = std::min<uint32_t>(state.LineBytesLeft, kLongestPacket);
    const bool isRepeat = most > 1 && line[0] == line[1];
    const uint32_t length = isRepeat ? RepeatLength(line, most) : LiteralLength(line, most);
    uint32_t result = PutByte(state, isRepeat ? RepeatHead(length) : LiteralHead(length));
    if (result == TIFF_SUCCESS) result = isRepeat ? PutByte(state, *line) : PutBytes(state, length);
    if (isRepeat) state.LineCursor += length;
    state.LineBytesLeft -= length;
    return result;
}

uint32_t EncodeLine(CodecState& state) {
    uint32_t result = TIFF_SUCCESS;
    while (result == TIFF_SUCCESS && state.LineBytesLeft > 0) {
        if (state.CodeLeft >= kPacketRoom)
            PutWholePackets(state);
        else
            result = PutPacketInPieces(state);
    }
    return result;
}

}  // namespace

uint32_t EncodePackBits(CodecState& state) {
    uint32_t result = InitEncodeBuffers(&state);
    if (result != TIFF_SUCCESS) return EndOfRun(result);
    while (result == TIFF_SUCCESS) {
        result = EncodeLine(state);
        if (result != TIFF_SUCCESS) return result;
        result = FillDataBuffer(&state);
    }
    // What was coded goes out even if the lines have failed.
    const uint32_t flushed = FlushCodeBuffer(&state);
    return result == TIFF_LINE_STOP ? flushed : result;
}

}  // namespace vellim
