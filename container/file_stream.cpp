#include "container/file_stream.h"

namespace vellim {
namespace {

StreamHandle OpenFor(TiffFileHandle file, FileUse use) {
    const TiffFileAccess access(file);
    if (!access) return -1;
    return use == FileUse::Read ? OpenForReading(*access) : OpenForWriting(*access);
}

}  // namespace

StreamHandle OpenForWriting(const TiffFile& file) {
    return file.IsMemory() ? mOpen(file.MemoryBlock, file.MemorySize)
                           : OpenFile(file.PathName, nullptr, file.OpenStyle);
}

FileStream::FileStream(TiffFileHandle file, FileUse use)
    : file_(file), use_(use), stream_(OpenFor(file, use)) {}

FileStream::~FileStream() {
    if (!stream_ || stream_.Get() > 0) return;
    // A callback that closed the stream has left nothing to take back.
    const GlobalHandle block = mBlock(stream_.Get());
    const TiffFileAccess access(file_);
    if (!access || block == 0) return;
    access->MemoryBlock = block;
    if (use_ == FileUse::Write) access->MemorySize = mSize(stream_.Get());
}

}  // namespace vellim
