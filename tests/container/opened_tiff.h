// A TIFF made by a test, open from a file or from a memory block for the length of a scope.
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

// A new file that has no path on disk yet, with one image defined in it.
class NewImage {
  public:
    NewImage() : handle_(OpenTiffFile("never-written.tif", T_CREAT)) {}
    ~NewImage() { CloseTiffFile(handle_); }
    NewImage(const NewImage&) = delete;
    NewImage& operator=(const NewImage&) = delete;

    [[nodiscard]] TiffFileHandle Handle() const { return handle_; }

  private:
    TiffFileHandle handle_;
};

}  // namespace vellim::test
