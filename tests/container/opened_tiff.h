// A TIFF made by a test, open for the length of a scope: from a file, from a memory block, or new.
#pragma once

#include <string>

#include "platform/guards.h"
#include "support/tiff_builder.h"
#include "vellim/files.h"

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

}  // namespace vellim::test
