// A new image at the end of a file's chain: what all savers do alike.
#pragma once

#include "bridge/save_choices.h"
#include "container/open_tiff.h"

namespace vellim {

// The file, which is made with its first image if it isn't there, and the new image's tags, both
// let go of at the end of the scope. The image is none of the file's until its pixels are encoded.
class AppendedImage {
  public:
    explicit AppendedImage(const char* fileName);
    ~AppendedImage();
    AppendedImage(const AppendedImage&) = delete;
    AppendedImage& operator=(const AppendedImage&) = delete;

    [[nodiscard]] bool IsOpen() const { return isOpen_; }
    [[nodiscard]] TiffFileHandle File() const { return file_.Get(); }
    [[nodiscard]] int32_t Index() const { return image_; }

    // All tags but those of the strips, by the thread's choices. False, with the code set, when one
    // can't be defined, or there is no place for an image; a depth that isn't served leaves the
    // code alone.
    [[nodiscard]] bool DefineTags(const SavedPicture& picture, uint32_t compression) const;

  private:
    OpenTiff file_;
    bool isOpen_ = false;
    int32_t image_ = -1;
};

}  // namespace vellim
