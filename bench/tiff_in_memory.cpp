// The procedures that libtiff reaches a MemoryFile by.
#include "bench/tiff_in_memory.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace vellim::bench {

namespace {

MemoryFile& FileOf(thandle_t handle) {
    return *static_cast<MemoryFile*>(handle);
}

tmsize_t Read(thandle_t handle, void* buffer, tmsize_t size) {
    MemoryFile& file = FileOf(handle);
    const uint64_t left =
        file.bytes->size() - std::min<uint64_t>(file.position, file.bytes->size());
    const uint64_t count = std::min(left, static_cast<uint64_t>(size));
    if (count != 0) std::memcpy(buffer, file.bytes->data() + file.position, count);
    file.position += count;
    return static_cast<tmsize_t>(count);
}

tmsize_t Write(thandle_t handle, void* buffer, tmsize_t size) {
    MemoryFile& file = FileOf(handle);
    const uint64_t end = file.position + static_cast<uint64_t>(size);
    if (end > file.bytes->size()) file.bytes->resize(end);
    std::memcpy(file.bytes->data() + file.position, buffer, static_cast<size_t>(size));
    file.position = end;
    return size;
}

// libtiff gives a move back as a large unsigned number, which wraps round to the place meant.
toff_t Seek(thandle_t handle, toff_t offset, int origin) {
    MemoryFile& file = FileOf(handle);
    if (origin == SEEK_SET) file.position = offset;
    if (origin == SEEK_CUR) file.position += offset;
    if (origin == SEEK_END) file.position = file.bytes->size() + offset;
    return file.position;
}

int Close(thandle_t /*handle*/) {
    return 0;
}

toff_t Size(thandle_t handle) {
    return FileOf(handle).bytes->size();
}

int Map(thandle_t handle, void** base, toff_t* size) {
    *base = FileOf(handle).bytes->data();
    *size = FileOf(handle).bytes->size();
    return 1;
}

void Unmap(thandle_t /*handle*/, void* /*base*/, toff_t /*size*/) {}

TiffPointer Open(MemoryFile& file, const char* mode) {
    file.position = 0;
    return TiffPointer(
        TIFFClientOpen("memory", mode, &file, Read, Write, Seek, Close, Size, Map, Unmap));
}

}  // namespace

TiffPointer OpenForReading(MemoryFile& file) {
    return Open(file, "r");
}

TiffPointer OpenForWriting(MemoryFile& file) {
    file.bytes->clear();
    return Open(file, "w");
}

}  // namespace vellim::bench
