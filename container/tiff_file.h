// The control block behind a TiffFileHandle: a table of images, not an open stream.
#pragma once

#include <cstdint>

#include "platform/files/descriptors.h"
#include "platform/guards.h"
#include "vellim/files.h"
#include "vellim/streams.h"

namespace vellim {

struct TiffImageSlot {
    uint32_t DirectoryOffset;
    uint32_t TagBytes;             // bytes that the directory's tags take in a TagBuffer
    GlobalHandle TagBufferHandle;  // 0 while none was ever made for this slot
    uint16_t Flags;                // TIFF_IMAGE_IN_MEMORY, subfile type in the low byte
};

struct TiffFile {
    char PathName[TIFF_PATH_BYTES];  // empty for a memory TIFF
    StreamHandle Stream;             // open while stored images are edited, else 0
    uint32_t OpenStyle;              // for OpenFile
    uint32_t TailLinkOffset;         // the link that the next directory is hooked to
    GlobalHandle MemoryBlock;
    int32_t MemorySize;  // -1 for a disk file
    uint16_t ByteOrder;
    int32_t ImageCount;
    TiffImageSlot Images[TIFF_MAX_IMAGES];

    // Beside what a host may know of: the disk file that all of this was read from or written to.
    // Another one under the same path has its images elsewhere.
    FileIdentity Identity;
    bool MustBeNew;  // nothing was at the path when images were to be appended

    [[nodiscard]] bool IsMemory() const { return PathName[0] == '\0'; }
};

// A file's control block, locked for the length of a scope; false for a handle that isn't a file.
class TiffFileAccess {
  public:
    explicit TiffFileAccess(TiffFileHandle file) : block_(file) {}
    explicit operator bool() const { return block_ && block_.Size() == sizeof(TiffFile); }
    TiffFile* operator->() const { return block_.As<TiffFile>(); }
    TiffFile& operator*() const { return *block_.As<TiffFile>(); }

  private:
    LockedBlock block_;
};

// The file's bytes as a read-only stream, or -1: the disk file, or the memory block.
StreamHandle OpenForReading(const TiffFile& file);

// The file's bytes as a stream that can be written, or -1. A disk file is opened by its OpenStyle,
// and claimed: no two writers may be at work on one file.
StreamHandle OpenForWriting(TiffFile& file);

}  // namespace vellim
