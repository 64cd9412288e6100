// One seek, read and write surface over disk files and memory blocks.
//
// The sign of a handle tells the two apart: a positive one goes to the platform's file calls, a
// negative one names a slot of this thread's table of memory streams. A memory stream borrows its
// block; a write may replace the block, so whoever opened the stream takes it back with mBlock.

#include "container/streams.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

#include "platform/files/descriptors.h"
#include "platform/guards.h"

namespace vellim {
namespace {

struct MemoryStream {
    GlobalHandle Block = 0;
    int32_t Position = -1;  // -1 marks a free slot, since a stream may be open without a block
    int32_t Size = -1;

    [[nodiscard]] bool IsFree() const { return Position == -1; }
};

constexpr StreamHandle kFirstHandle = -2;  // -1 is every call's failure value
constexpr StreamHandle kLastHandle = -30;
constexpr int64_t kMaxPosition = std::numeric_limits<int32_t>::max();

// Indexed by the magnitude of the handle.
constinit thread_local std::array<MemoryStream, -kLastHandle + 1> memoryStreams = {};

MemoryStream& Slot(StreamHandle handle) {
    return memoryStreams[static_cast<size_t>(-handle)];
}

// The memory stream of `handle`, or null when it names a disk file, nothing, or a closed stream.
MemoryStream* MemoryStreamOf(StreamHandle handle) {
    if (handle >= 0 || handle < kLastHandle) return nullptr;
    MemoryStream& stream = Slot(handle);
    return stream.IsFree() ? nullptr : &stream;
}

int32_t SeekMemory(MemoryStream& stream, int32_t offset, int32_t origin) {
    int64_t target = 0;
    switch (origin) {
        case 0:
            target = offset;
            break;
        case 1:
            target = int64_t{stream.Position} + offset;
            break;
        case 2:
            target = int64_t{stream.Size} - offset;
            break;
        default:
            return stream.Position;
    }
    // Counted back from the end, a position may lie behind it: a write there fills the gap.
    const int64_t limit = origin == 2 ? kMaxPosition : stream.Size;
    if (target < 0 || target > limit) return -1;
    stream.Position = static_cast<int32_t>(target);
    return stream.Position;
}

// Reads what is there: neither the stream's size nor the block's is ever passed, and the two may
// differ, since the size is what the application said.
int32_t ReadMemory(MemoryStream& stream, void* buffer, int32_t count) {
    const LockedBlock block(stream.Block);
    if (!block) return -1;
    const int64_t end = std::min<int64_t>(stream.Size, block.Size());
    const auto taken =
        static_cast<int32_t>(std::clamp<int64_t>(end - stream.Position, 0, int64_t{count}));
    if (taken == 0) return 0;
    std::memcpy(buffer, block.As<uint8_t>() + stream.Position, static_cast<size_t>(taken));
    stream.Position += taken;
    return taken;
}

// Grows the block to exactly `size`. The stream changes only when that worked. What the write that
// asks for it covers need not be cleared before, only a gap in front of it.
bool GrowTo(MemoryStream& stream, int32_t size) {
    const auto bytes = static_cast<uint32_t>(size);
    const uint32_t flags = stream.Position > stream.Size ? uint32_t{GHND} : uint32_t{GMEM_MOVEABLE};
    const GlobalHandle grown =
        stream.Block == 0 ? GlobalAlloc(GHND, bytes) : GlobalReAlloc(stream.Block, bytes, flags);
    if (grown == 0) return false;
    stream.Block = grown;
    stream.Size = size;
    return true;
}

int32_t WriteMemory(MemoryStream& stream, const void* buffer, int32_t count) {
    const int64_t end = int64_t{stream.Position} + count;
    if (end > kMaxPosition) return -1;
    if (end > stream.Size && !GrowTo(stream, static_cast<int32_t>(end))) return -1;
    const LockedBlock block(stream.Block);
    if (!block || end > block.Size()) return -1;
    if (count > 0)
        std::memcpy(block.As<uint8_t>() + stream.Position, buffer, static_cast<size_t>(count));
    stream.Position += count;
    return count;
}

bool IsTransfer(const void* buffer, int32_t count) {
    return count >= 0 && (buffer != nullptr || count == 0);
}

}  // namespace

StreamHandle mOpen(GlobalHandle block, int32_t size) {
    if (size < 0) return -1;
    for (StreamHandle handle = kFirstHandle; handle >= kLastHandle; handle--) {
        if (!Slot(handle).IsFree()) continue;
        Slot(handle) = {.Block = block, .Position = 0, .Size = size};
        return handle;
    }
    return -1;
}

GlobalHandle mBlock(StreamHandle handle) {
    const MemoryStream* stream = MemoryStreamOf(handle);
    return stream == nullptr ? 0 : stream->Block;
}

}  // namespace vellim

using namespace vellim;

int32_t mSize(StreamHandle handle) {
    if (handle <= 0) {
        const MemoryStream* stream = MemoryStreamOf(handle);
        return stream == nullptr ? -1 : stream->Size;
    }
    return FileBytes(handle);
}

int32_t mTell(StreamHandle handle) {
    if (handle > 0) return _llseek(handle, 0, 1);
    const MemoryStream* stream = MemoryStreamOf(handle);
    return stream == nullptr ? -1 : stream->Position;
}

int32_t mSeek(StreamHandle handle, int32_t offset, int32_t origin) {
    if (handle > 0) return _llseek(handle, offset, origin);
    MemoryStream* stream = MemoryStreamOf(handle);
    return stream == nullptr ? -1 : SeekMemory(*stream, offset, origin);
}

int32_t mRead(StreamHandle handle, void* buffer, int32_t count) {
    if (!IsTransfer(buffer, count)) return -1;
    if (handle > 0) return _lread(handle, buffer, static_cast<uint32_t>(count));
    MemoryStream* stream = MemoryStreamOf(handle);
    return stream == nullptr ? -1 : ReadMemory(*stream, buffer, count);
}

int32_t mWrite(StreamHandle handle, const void* buffer, int32_t count) {
    if (!IsTransfer(buffer, count)) return -1;
    if (handle > 0) return _lwrite(handle, buffer, static_cast<uint32_t>(count));
    MemoryStream* stream = MemoryStreamOf(handle);
    return stream == nullptr ? -1 : WriteMemory(*stream, buffer, count);
}

int32_t mClose(StreamHandle handle) {
    if (handle > 0) return _lclose(handle);
    if (handle < kLastHandle) return handle;
    if (handle != 0) Slot(handle) = MemoryStream{};
    return 0;
}
