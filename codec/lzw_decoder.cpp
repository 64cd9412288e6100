// LZW (TIFF 6.0 section 13), each strip by itself, lines with or without horizontal differencing
// (section 14).
//
// Strings are put out into a history (lzw_strings.h) and lines are cut from it, one as soon as it
// is whole: what comes out, and in which order lines, callbacks and failures come, is as if each
// code were read, spelled and delivered alone. A string may cross the ends of lines; what is left
// of it at the strip's end is dropped, and a strip needs no end code, for it ends by its lines.

#include <algorithm>
#include <numeric>

#include "codec/differencing.h"
#include "codec/end_of_run.h"
#include "codec/engines.h"
#include "codec/lzw_bits.h"
#include "codec/lzw_strings.h"
#include "container/sizes.h"
#include "platform/guards.h"
#include "vellim/failures.h"

namespace vellim {
namespace {

constexpr unsigned kFirstWidth = 9;
constexpr unsigned kLastWidth = 12;
constexpr uint32_t kReusableTail = 65536;  // room behind a full table's strings

// The width that codes are read with. A decoder opens its entries one code later than the encoder,
// so the change comes when the next free code needs the width itself.
struct CodeWidth {
    unsigned bits = kFirstWidth;
    uint32_t limit = 1U << kFirstWidth;  // next free code at which the width goes up

    void Follow(uint32_t nextFree) {
        if (nextFree < limit || bits == kLastWidth) [[likely]]
            return;
        ++bits;
        limit <<= 1;
    }
};

struct Decoder {
    explicit Decoder(CodecState& run) : state(run) {}

    CodecState& state;
    LzwBits bits;
    LzwStrings strings;
    CodeWidth width;
    const uint8_t* taken = nullptr;  // output up to here is in the line buffer
    const uint8_t* room = nullptr;   // output may begin in front of here
    uint32_t lineLeft = 0;           // bytes that the line buffer still lacks
};

// Most bytes that the history can come to hold in front of a string: all strings of a full table,
// or a whole strip.
uint32_t HistoryBytes(const CodecState& state) {
    constexpr uint64_t kMost = kLzwLongestHistory + kReusableTail;
    const uint64_t stripBytes = uint64_t{state.RowBytes} * state.RowsPerStrip;
    const bool bounded = state.RowsPerStrip != 0 && stripBytes < kMost;
    return static_cast<uint32_t>(bounded ? stripBytes : kMost);
}

void Clear(Decoder& decoder) {
    decoder.strings.Clear();
    decoder.taken = decoder.strings.out;
    decoder.width = {};
}

void BeginStrip(Decoder& decoder) {
    decoder.state.StripEnded = 0;
    decoder.bits.BeginStrip(decoder.state);
    decoder.lineLeft = decoder.state.RowBytes;
    Clear(decoder);
}

// Moves `count` bytes of output to the line buffer.
void MoveToLine(Decoder& decoder, uint32_t count) {
    uint8_t* line = decoder.state.LineBuffer + (decoder.state.RowBytes - decoder.lineLeft);
    if (count != 0) std::memcpy(line, decoder.taken, count);
    decoder.taken += count;
    decoder.lineLeft -= count;
}

uint32_t Untaken(const Decoder& decoder) {
    return static_cast<uint32_t>(decoder.strings.out - decoder.taken);
}

// The output up to which no line is whole and no room is short.
const uint8_t* NextStop(const Decoder& decoder) {
    const auto roomLeft = static_cast<uint64_t>(decoder.room - decoder.taken);
    return roomLeft < decoder.lineLeft ? decoder.room : decoder.taken + decoder.lineLeft;
}

// A line of no bytes is whole from the start, but it too waits for a string.
bool HasReachedStop(const Decoder& decoder) {
    return Untaken(decoder) != 0 && decoder.strings.out >= NextStop(decoder);
}

// Delivers the line buffer as it stands. 0, 3 or a failure code.
uint32_t DeliverLine(Decoder& decoder) {
    CodecState& state = decoder.state;
    if (state.Key == TIFF_KEY_LZW_DIFFERENCING) UndoDifferencing(state);
    const uint32_t result = FlushDataBuffer(&state);
    if (result == TIFF_SUCCESS) decoder.lineLeft = state.RowBytes;
    return result;
}

// Delivers the lines that are whole, and makes room where the output has run out of it.
uint32_t DeliverLines(Decoder& decoder) {
    while (Untaken(decoder) >= decoder.lineLeft) {
        MoveToLine(decoder, decoder.lineLeft);
        const uint32_t result = DeliverLine(decoder);
        if (result != TIFF_SUCCESS) return result;
        if (decoder.state.StripEnded != 0) {
            BeginStrip(decoder);
            return TIFF_SUCCESS;
        }
        if (decoder.lineLeft == 0) return TIFF_BAD_CODE;
    }
    if (decoder.strings.out >= decoder.room) {
        MoveToLine(decoder, Untaken(decoder));
        decoder.strings.ReuseTail();
        decoder.taken = decoder.strings.out;
    }
    return TIFF_SUCCESS;
}

// An end code in front of the strip's last line. The line that was under way is delivered with what
// the buffer holds behind its new bytes: the line before, as its callback left it.
uint32_t EndStripEarly(Decoder& decoder) {
    MoveToLine(decoder, Untaken(decoder));
    const uint32_t result = DeliverLine(decoder);
    if (result != TIFF_SUCCESS) return result;
    if (decoder.state.StripEnded == 0) return TIFF_BAD_CODE;
    BeginStrip(decoder);
    return TIFF_SUCCESS;
}

// Reads strings while the code buffer has bytes to spare, up to a whole line or to a code that
// stands for no string.
void ReadStrings(Decoder& decoder) {
    LzwBits bits = decoder.bits;
    LzwStrings strings = decoder.strings;
    CodeWidth width = decoder.width;
    const uint8_t* const stop = NextStop(decoder);
    bool goOn = true;
    while (goOn && bits.CanFill()) {
        bits.Fill();
        for (int i = 0; goOn && i < LzwBits::kCodesPerFill; ++i) {
            width.Follow(strings.nextFree);
            const uint32_t code = bits.Peek(width.bits);
            if (!strings.IsString(code)) [[unlikely]] {
                goOn = false;
                break;
            }
            bits.Skip(width.bits);
            strings.Append(code);
            goOn = strings.out < stop;
        }
    }
    decoder.bits = bits;
    decoder.strings = strings;
    decoder.width = width;
}

// Reads one code, whatever it is, and acts on it.
uint32_t ReadCode(Decoder& decoder) {
    decoder.width.Follow(decoder.strings.nextFree);
    const uint32_t result = decoder.bits.Reserve(decoder.state, decoder.width.bits);
    if (result != TIFF_SUCCESS) return result;
    const uint32_t code = decoder.bits.Peek(decoder.width.bits);
    decoder.bits.Skip(decoder.width.bits);
    if (code == kLzwEnd) return EndStripEarly(decoder);
    if (code == kLzwClear) {
        MoveToLine(decoder, Untaken(decoder));
        Clear(decoder);
        return TIFF_SUCCESS;
    }
    if (!decoder.strings.IsString(code)) return TIFF_BAD_CODE;
    decoder.strings.Append(code);
    return TIFF_SUCCESS;
}

uint32_t DecodeStrips(Decoder& decoder) {
    BeginStrip(decoder);
    for (;;) {
        ReadStrings(decoder);
        uint32_t result = TIFF_SUCCESS;
        if (!HasReachedStop(decoder)) result = ReadCode(decoder);
        if (result == TIFF_SUCCESS && HasReachedStop(decoder)) result = DeliverLines(decoder);
        if (result != TIFF_SUCCESS) return result;
    }
}

}  // namespace

uint32_t DecodeLzw(CodecState& state) {
    uint32_t result = InitDecodeBuffers(&state);
    if (result != TIFF_SUCCESS) return result;

    const uint32_t historyBytes = HistoryBytes(state);
    const OwnedBlock block(GlobalAlloc(
        GHND, sizeof(LzwTable) + kLzwLiterals + historyBytes + kLzwLongestString + kLzwChunk));
    const LockedBlock memory(block.Get());
    if (!memory) return TIFF_NO_MEMORY;

    Decoder decoder(state);
    decoder.strings.table = memory.As<LzwTable>()->data();
    decoder.strings.history = memory.As<uint8_t>() + sizeof(LzwTable);
    decoder.room = decoder.strings.history + kLzwLiterals + historyBytes;
    std::iota(decoder.strings.history, decoder.strings.history + kLzwLiterals, uint8_t{0});
    for (uint32_t literal = 0; literal < kLzwLiterals; ++literal)
        decoder.strings.table[literal] = {literal, 1};
    result = DecodeStrips(decoder);
    return EndOfRun(result);
}

}  // namespace vellim
