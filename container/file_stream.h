// The bytes of a TIFF file for the length of an operation, on disk or in memory.
#pragma once

#include "container/streams.h"
#include "container/tiff_file.h"

namespace vellim {

enum class FileUse { Read, Write };

// Opens the file, and closes it at the end of the scope, when a memory TIFF takes its block back
// from the stream: writing may have replaced it, and changed its size. The file's record is locked
// for moments only: a callback may use the file meanwhile, but nobody gets a second stream to write
// to.
class FileStream {
  public:
    FileStream(TiffFileHandle file, FileUse use);
    ~FileStream();
    FileStream(const FileStream&) = delete;
    FileStream& operator=(const FileStream&) = delete;

    explicit operator bool() const { return bool{stream_}; }
    [[nodiscard]] StreamHandle Get() const { return stream_.Get(); }

  private:
    TiffFileHandle file_;
    FileUse use_;
    OpenStream stream_;
};

}  // namespace vellim
