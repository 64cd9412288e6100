#include "byte_source.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace vellim::tool {
namespace {

constexpr size_t kBufferBytes = 64UL << 10U;

// Reads `count` bytes at `position`, fewer at the file's end or on an error.
size_t ReadAt(ByteSource& source, uint64_t position, uint8_t* bytes, size_t count) {
    size_t done = 0;
    while (done < count) {
        const ssize_t got = pread(source.descriptor, bytes + done, count - done,
                                  static_cast<off_t>(position + done));
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) source.failure = std::strerror(errno);
        if (got <= 0) break;
        done += static_cast<size_t>(got);
    }
    return done;
}

// Brings the byte at `position` into the buffer.
bool Fill(ByteSource& source) {
    source.buffer.resize(kBufferBytes);
    source.bufferAt = source.position;
    const size_t got = ReadAt(source, source.position, source.buffer.data(), kBufferBytes);
    source.buffer.resize(got);
    if (got == 0 && source.failure.empty()) source.failure = kEndsTooSoon;
    return got > 0;
}

// Bytes of the buffer from `position` on.
size_t Buffered(const ByteSource& source) {
    const uint64_t end = source.bufferAt + source.buffer.size();
    const bool inside = source.position >= source.bufferAt && source.position < end;
    return inside ? static_cast<size_t>(end - source.position) : 0;
}

}  // namespace

const char* const kEndsTooSoon = "the file ends before the picture does";

ByteSource SourceOf(int descriptor) {
    ByteSource source;
    source.descriptor = descriptor;
    struct stat status = {};
    if (fstat(descriptor, &status) == 0) source.size = static_cast<uint64_t>(status.st_size);
    return source;
}

bool ReadBytes(ByteSource& source, void* bytes, size_t count) {
    auto* to = static_cast<uint8_t*>(bytes);
    while (count > 0) {
        if (Buffered(source) == 0 && !Fill(source)) return false;
        const size_t ready = std::min(Buffered(source), count);
        std::memcpy(to, source.buffer.data() + (source.position - source.bufferAt), ready);
        source.position += ready;
        to += ready;
        count -= ready;
    }
    return true;
}

int ReadByte(ByteSource& source) {
    if (Buffered(source) == 0 && !Fill(source)) return -1;
    const uint64_t place = source.position++ - source.bufferAt;
    return source.buffer[static_cast<size_t>(place)];
}

uint64_t BytesLeft(const ByteSource& source) {
    return source.size - std::min(source.size, source.position);
}

}  // namespace vellim::tool
