#include "container/file_stream.h"

namespace vellim {
namespace {

// While a file is being written its record names the stream.
StreamHandle OpenFor(TiffFileHandle file, FileUse use) {
    const TiffFileAccess access(file);
    if (!access) return -1;
    if (use == FileUse::Read) return OpenForReading(*access);
    if (access->Stream != 0) return -1;
    const StreamHandle stream = OpenForWriting(*access);
    if (stream != -1) access->Stream = stream;
    return stream;
}

}  // namespace

FileStream::FileStream(TiffFileHandle file, FileUse use)
    : file_(file), use_(use), stream_(OpenFor(file, use)) {}

FileStream::~FileStream() {
    const TiffFileAccess access(file_);
    if (!stream_ || !access) return;
    if (use_ == FileUse::Write) access->Stream = 0;
    // A callback that closed the stream has left nothing to take back.
    const GlobalHandle block = mBlock(stream_.Get());
    if (block == 0) return;
    access->MemoryBlock = block;
    if (use_ == FileUse::Write) access->MemorySize = mSize(stream_.Get());
}

}  // namespace vellim
