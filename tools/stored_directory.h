// Directories as they stand in a file (TIFF 6.0, section 2), for what the library's own reading
// leaves out: links behind the last image that it takes in, and elements of the types SSHORT,
// SRATIONAL, FLOAT, DOUBLE and IFD, of which it holds a byte each.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "vellim/base.h"

namespace vellim::tool {

class StoredDirectories {
  public:
    // Of a document that the library reads from a disk.
    explicit StoredDirectories(TiffFileHandle file);
    ~StoredDirectories();
    StoredDirectories(const StoredDirectories&) = delete;
    StoredDirectories& operator=(const StoredDirectories&) = delete;

    // The place of the first directory, and of the one behind that at `directory`; 0 if there is
    // none or it can't be read.
    [[nodiscard]] uint32_t First() const;
    [[nodiscard]] uint32_t Next(uint32_t directory) const;

    // The elements of tag `tag` in the directory of `image`, in words: "-3", "1/4", "0.5". None for
    // a tag of another type than those above, or if it can't be read.
    [[nodiscard]] std::vector<std::string> WideElements(int32_t image, uint32_t tag) const;

  private:
    [[nodiscard]] bool ReadAt(uint64_t place, uint8_t* bytes, uint32_t count) const;
    [[nodiscard]] uint32_t ShortAt(uint64_t place) const;
    [[nodiscard]] uint32_t LongAt(uint64_t place) const;
    [[nodiscard]] std::vector<std::string> ElementsOf(uint64_t entry) const;

    bool bigEndian_;
    int32_t stream_ = 0;
};

}  // namespace vellim::tool
