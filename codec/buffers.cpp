// The two buffers of a run: compressed bytes on their way from or to the stream (the code buffer),
// and the one line on its way to or from the callback (the line buffer).
//
// Engines ask for more code bytes and hand over finished lines, nothing else. Where strips begin,
// which line ends one, and what the stream's position is, is kept here. A decoding run reads
// straight on through the stream, across the ends of strips; only SeekStrip moves the place that
// it reads from. An encoding run learns a strip's length when the line behind it is asked for.

#include "codec/buffers.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "container/sizes.h"
#include "platform/guards.h"
#include "vellim/failures.h"
#include "vellim/platform.h"
#include "vellim/streams.h"

namespace vellim {
namespace {

constexpr uint32_t kMaxCodeBuffer = 32767;
constexpr uint32_t kSpareLineBytes = 256;  // a packet may run past the line's end
constexpr uint32_t kSlackBytes = 100;      // and a wide load past the code buffer's
constexpr uint32_t kOldJpegHeadBytes = 8;  // in front of each tile of JPEGProc 0

// `line`, or the image's last line if that comes before it.
uint32_t CutToImage(const CodecState& state, uint64_t line) {
    const uint32_t lastLine = static_cast<uint32_t>(state.Dimensions.biHeight) - 1;
    return static_cast<uint32_t>(std::min<uint64_t>(line, lastLine));
}

// Last line of the strip that begins at LineNumber. No rows a strip means a single strip.
uint32_t FirstStripLastLine(const CodecState& state) {
    if (state.RowsPerStrip == 0) return CutToImage(state, std::numeric_limits<uint32_t>::max());
    return CutToImage(state, uint64_t{state.RowsPerStrip} + state.LineNumber - 1);
}

uint32_t NextStripLastLine(const CodecState& state) {
    return CutToImage(state, uint64_t{state.RowsPerStrip} + state.StripLastLine);
}

// Where strip StripIndex begins in the stream, or -1 when the table doesn't reach so far: a file
// may well have fewer entries than its height needs.
int64_t StripOffset(const CodecState& state) {
    const LockedBlock table(state.StripOffsets);
    if (!table) return -1;
    const bool isShort = state.StripOffsetType == TIFF_TYPE_SHORT;
    const uint64_t entryBytes = isShort ? sizeof(uint16_t) : sizeof(uint32_t);
    if ((uint64_t{state.StripIndex} + 1) * entryBytes > table.Size()) return -1;
    const int64_t entry = isShort ? table.As<uint16_t>()[state.StripIndex]
                                  : int64_t{table.As<uint32_t>()[state.StripIndex]};
    const bool skipHead = state.Key == TIFF_KEY_JPEG && state.JpegProc == 0;
    return skipHead ? entry + kOldJpegHeadBytes : entry;
}

// How many bytes of the stream the code buffer holds: the last fill can be a short one.
uint32_t BufferedBytes(const CodecState& state) {
    if (state.CodeCursor == nullptr || state.BufferMark >= state.StreamLimit) return 0;
    return std::min(state.CodeBufferSize, state.StreamLimit - state.BufferMark);
}

// Both ends count as buffered: at the far one the next fill goes on right there.
bool IsBuffered(const CodecState& state, int64_t offset) {
    return state.CodeCursor != nullptr && offset >= state.BufferMark &&
           offset <= int64_t{state.BufferMark} + state.CodeBufferSize;
}

bool StoreStripEntry(GlobalHandle table, uint32_t index, uint32_t value) {
    const LockedBlock entries(table);
    if (!entries || (uint64_t{index} + 1) * sizeof(uint32_t) > entries.Size()) return false;
    entries.As<uint32_t>()[index] = value;
    return true;
}

// Enters the strip that has just ended into the tables and begins the next one behind it.
uint32_t CloseStrip(CodecState& state) {
    const uint32_t byteCount = state.StreamCursor + state.BufferMark - state.CodeLeft;
    if (!StoreStripEntry(state.StripOffsets, state.StripIndex, state.StreamLimit) ||
        !StoreStripEntry(state.StripByteCounts, state.StripIndex, byteCount)) {
        return TIFF_BAD_STRIP_INDEX;
    }
    state.StripLastLine = NextStripLastLine(state);
    state.StripIndex += 1;
    state.StreamLimit += byteCount;
    state.BufferMark = state.CodeLeft;
    state.StreamCursor = 0;
    return TIFF_SUCCESS;
}

}  // namespace

uint32_t AllocateWorkMemory(CodecState& state, uint32_t mostCodeBytes) {
    state.CodeBufferSize = std::min(state.StreamLimit, mostCodeBytes);
    const auto lineArea = CheckedSize(state.RowBytes, 1, kSpareLineBytes);
    if (!lineArea) return TIFF_NO_MEMORY;
    const auto total = CheckedSize(*lineArea, 1, int64_t{state.CodeBufferSize} + kSlackBytes);
    if (!total) return TIFF_NO_MEMORY;

    OwnedBlock block(GlobalAlloc(GHND, *total));
    auto* bytes = static_cast<uint8_t*>(GlobalLock(block.Get()));
    if (bytes == nullptr) return TIFF_NO_MEMORY;
    state.WorkMemory = block.Release();
    state.LineAreaSize = *lineArea;
    state.LineBuffer = bytes;
    state.CodeBufferBase = bytes + *lineArea;
    state.StreamCursor = 0;
    state.StripLastLine = FirstStripLastLine(state);
    state.StripEnded = 0;
    return TIFF_SUCCESS;
}

void BeginLine(CodecState& state) {
    state.LineBytesLeft = state.RowBytes;
    state.LinePixels = state.Dimensions.biWidth;
    state.LineCursor = state.LineBuffer;
}

bool SeekStrip(CodecState& state) {
    const int64_t offset = StripOffset(state);
    if (offset < 0) return false;
    if (IsBuffered(state, offset)) {
        const auto inBuffer = static_cast<uint32_t>(offset - state.BufferMark);
        const uint32_t buffered = BufferedBytes(state);
        state.CodeCursor = state.CodeBufferBase + inBuffer;
        state.CodeLeft = buffered > inBuffer ? buffered - inBuffer : 0;
        return true;
    }
    if (offset > std::numeric_limits<int32_t>::max()) return false;
    state.StreamCursor = static_cast<uint32_t>(offset);
    if (mSeek(state.Stream, static_cast<int32_t>(offset), 0) < 0) return false;
    return FillCodeBuffer(&state) == TIFF_SUCCESS;
}

void ReleaseCodecState(CodecState& state) {
    if (state.WorkMemory != 0) GlobalUnlock(state.WorkMemory);
    // The fields are packed, so each handle is copied out, never referred to.
    const auto release = [](GlobalHandle block) {
        if (block != 0) GlobalFree(block);
        return GlobalHandle{0};
    };
    state.WorkMemory = release(state.WorkMemory);
    state.StripOffsets = release(state.StripOffsets);
    state.StripByteCounts = release(state.StripByteCounts);
    state.JpegQTables = release(state.JpegQTables);
    state.JpegACTables = release(state.JpegACTables);
    state.JpegDCTables = release(state.JpegDCTables);
    state.JpegScratch = release(state.JpegScratch);
}

}  // namespace vellim

using namespace vellim;

uint32_t InitDecodeBuffers(CodecState* state) {
    if (state == nullptr) return TIFF_IO_ERROR;
    const uint32_t result = AllocateWorkMemory(*state, kMaxCodeBuffer);
    if (result != TIFF_SUCCESS) return result;
    state->CodeCursor = nullptr;  // nothing is buffered yet
    state->CodeLeft = 0;
    const bool ready =
        state->StripOffsets != 0 ? SeekStrip(*state) : FillCodeBuffer(state) == TIFF_SUCCESS;
    if (!ready) return TIFF_IO_ERROR;
    BeginLine(*state);
    return TIFF_SUCCESS;
}

uint32_t FillCodeBuffer(CodecState* state) {
    if (state == nullptr) return TIFF_IO_ERROR;
    const uint32_t unread =
        state->StreamLimit > state->StreamCursor ? state->StreamLimit - state->StreamCursor : 0;
    const uint32_t count = std::min(unread, state->CodeBufferSize);
    state->BufferMark = state->StreamCursor;
    state->CodeLeft = count;
    state->StreamCursor += count;
    state->CodeCursor = state->CodeBufferBase;
    if (count == 0) return TIFF_UNEXPECTED_END;
    const bool read = LongRead(state->Stream, TIFF_TYPE_BYTE, count, state->CodeBufferBase,
                               TIFF_LITTLE_ENDIAN, static_cast<int32_t>(state->FillOrder)) != 0;
    return read ? TIFF_SUCCESS : TIFF_IO_ERROR;
}

uint32_t FlushDataBuffer(CodecState* state) {
    if (state == nullptr || state->Callback == nullptr) return TIFF_IO_ERROR;
    const uint32_t answer =
        state->Callback(state->LineBuffer, state->LineNumber, state->CallbackData);
    if (answer != TIFF_LINE_GO_ON) return answer;

    BeginLine(*state);
    state->StripEnded = state->LineNumber == state->StripLastLine ? 1 : 0;
    state->LineNumber += 1;
    if (state->StripEnded == 0) return TIFF_SUCCESS;
    if (state->Dimensions.biHeight <= int64_t{state->LineNumber}) return TIFF_LINE_STOP;
    state->StripIndex += 1;
    state->StripLastLine = NextStripLastLine(*state);
    return SeekStrip(*state) ? TIFF_SUCCESS : TIFF_IO_ERROR;
}

uint32_t InitEncodeBuffers(CodecState* state) {
    if (state == nullptr) return TIFF_IO_ERROR;
    state->LineNumber = 0;
    state->StripIndex = 0;
    state->StreamLimit = kMaxCodeBuffer;  // only for the size of the buffer
    const uint32_t result = AllocateWorkMemory(*state, kMaxCodeBuffer);
    if (result != TIFF_SUCCESS) return result;
    state->CodeCursor = state->CodeBufferBase;
    state->CodeLeft = state->CodeBufferSize;
    state->BufferMark = state->CodeBufferSize;
    const int32_t start = mTell(state->Stream);
    if (start < 0) return TIFF_IO_ERROR;
    state->StreamLimit = static_cast<uint32_t>(start);
    return FillDataBuffer(state);
}

uint32_t FillDataBuffer(CodecState* state) {
    if (state == nullptr || state->Callback == nullptr) return TIFF_IO_ERROR;
    if (state->StripEnded != 0) {
        const uint32_t result = CloseStrip(*state);
        if (result != TIFF_SUCCESS) return result;
        if (state->Dimensions.biHeight <= int64_t{state->LineNumber}) return TIFF_LINE_STOP;
    }
    BeginLine(*state);
    const uint32_t line = state->LineNumber;
    state->StripEnded = line == state->StripLastLine ? 1 : 0;
    state->LineNumber += 1;
    return state->Callback(state->LineBuffer, line, state->CallbackData);
}

uint32_t FlushCodeBuffer(CodecState* state) {
    if (state == nullptr || state->CodeLeft > state->CodeBufferSize) return TIFF_IO_ERROR;
    const uint32_t count = state->CodeBufferSize - state->CodeLeft;
    if (LongWrite(state->Stream, TIFF_TYPE_BYTE, count, state->CodeBufferBase, TIFF_LITTLE_ENDIAN,
                  static_cast<int32_t>(state->FillOrder)) == 0) {
        return TIFF_IO_ERROR;
    }
    state->StreamCursor += state->BufferMark - state->CodeLeft;
    state->CodeCursor = state->CodeBufferBase;
    state->CodeLeft = state->CodeBufferSize;
    state->BufferMark = state->CodeBufferSize;
    return TIFF_SUCCESS;
}
