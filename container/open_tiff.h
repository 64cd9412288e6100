// A TIFF file closed at the end of the scope.
#pragma once

#include "vellim/files.h"

namespace vellim {

class OpenTiff {
  public:
    OpenTiff(const char* path, int32_t mode) : file_(OpenTiffFile(path, mode)) {}
    ~OpenTiff() {
        if (file_ != 0) CloseTiffFile(file_);
    }
    OpenTiff(const OpenTiff&) = delete;
    OpenTiff& operator=(const OpenTiff&) = delete;

    explicit operator bool() const { return file_ != 0; }
    [[nodiscard]] TiffFileHandle Get() const { return file_; }

  private:
    TiffFileHandle file_;
};

}  // namespace vellim
