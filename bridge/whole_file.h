// A file that is written anew, and is there as a whole or not at all wherever its folder lets that
// be.
#pragma once

#include <cstdint>
#include <string>

#include "container/streams.h"

namespace vellim {

// A file that is at the path already keeps its bytes until the new ones are all on the disk.
// Without a Commit the path is at the end of the scope as it was. A device is written to as it is,
// and so is a file in a folder that takes no other beside it, or what a link leads to that isn't
// there. Memory that can't be had is thrown as std::bad_alloc.
class WholeFile {
  public:
    explicit WholeFile(const char* path);
    ~WholeFile();
    WholeFile(const WholeFile&) = delete;
    WholeFile& operator=(const WholeFile&) = delete;

    explicit operator bool() const { return stream_ != -1; }
    [[nodiscard]] StreamHandle Get() const { return stream_; }

    // Closes the file. False when what was written can't be brought to its place.
    bool Commit();

  private:
    void WriteInPlace(const char* path);

    StreamHandle stream_ = -1;
    std::string original_;
    std::string unfinished_;  // the path to be deleted without a Commit; empty for a device
};

}  // namespace vellim
