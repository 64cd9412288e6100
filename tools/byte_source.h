// A regular file read from front to back through a buffer, or from any place.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace vellim::tool {

struct ByteSource {
    int descriptor = -1;  // lent
    uint64_t size = 0;
    uint64_t position = 0;  // of the next byte
    std::vector<uint8_t> buffer;
    uint64_t bufferAt = 0;  // place of the buffer's first byte
    std::string failure;    // why a read gave less than was asked for
};

ByteSource SourceOf(int descriptor);

// The next `count` bytes. False, with the reason in `failure`, if there are fewer.
bool ReadBytes(ByteSource& source, void* bytes, size_t count);

// The next byte, or -1.
int ReadByte(ByteSource& source);

// Bytes from `position` to the end.
uint64_t BytesLeft(const ByteSource& source);

// The reason where a file ends before what it holds does.
extern const char* const kEndsTooSoon;

}  // namespace vellim::tool
