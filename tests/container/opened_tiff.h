// A TIFF made by a test, open for the length of a scope: from a file, from a memory block, or new;
// and the tags of images as the library gives and takes them.
#pragma once

#include <string>

#include "support/test_files.h"
#include "vellim/files.h"
#include "vellim/tags.h"

namespace vellim::test {

enum class Storage { kDisk, kMemory };

class OpenedTiff {
  public:
    explicit OpenedTiff(const Bytes& bytes, Storage storage = Storage::kMemory,
                        int32_t mode = T_READ) {
        if (storage == Storage::kMemory) {
            block_.Reset(BlockOf(bytes));
            handle_ = OpenTiffInMemory(block_.Get(), static_cast<int32_t>(bytes.size()), mode);
        } else {
            path_ = FileOf(bytes, "opened.tif");
            handle_ = OpenTiffFile(path_.c_str(), mode);
        }
    }
    OpenedTiff() : handle_(OpenTiffFile("never-written.tif", T_CREAT)) {}
    ~OpenedTiff() { CloseTiffFile(handle_); }
    OpenedTiff(const OpenedTiff&) = delete;
    OpenedTiff& operator=(const OpenedTiff&) = delete;

    [[nodiscard]] TiffFileHandle Handle() const { return handle_; }
    [[nodiscard]] GlobalHandle Block() const { return block_.Get(); }
    [[nodiscard]] const std::string& Path() const { return path_; }
    [[nodiscard]] int32_t ImageCount() const {
        return NumberOfTiffImages(handle_, TIFF_ALL_IMAGES);
    }

  private:
    OwnedBlock block_;
    std::string path_;
    TiffFileHandle handle_ = 0;
};

struct Asked {
    int32_t result = -1;
    uint32_t type = 0, count = 0;
    Bytes value = {};
};

inline Asked Ask(TiffFileHandle file, uint32_t tag) {
    Asked asked;
    GlobalHandle block = 0;
    asked.result = GetTiffImageInfoBuffer(file, 0, tag, &block, &asked.type, &asked.count);
    asked.value = BytesOf(OwnedBlock(block).Get());
    return asked;
}

inline int32_t Define(TiffFileHandle file, int32_t image, const TagSpec& tag) {
    return DefineTiffImageInfoBuffer(file, image, tag.tag, tag.value.data(), tag.type, tag.count);
}

}  // namespace vellim::test
