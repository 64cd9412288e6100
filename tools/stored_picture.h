// How the stored lines of an image are to be seen.
#pragma once

#include <optional>
#include <string>

#include "image_facts.h"
#include "picture.h"

namespace vellim::tool {

struct StoredPicture {
    Picture picture;
    bool whiteIsZero = false;  // lines are to be inverted
};

// The picture that the image's decoded lines make. Nothing, with the reason in `why`, for images
// that the library doesn't decode and for colours that would come out wrong.
std::optional<StoredPicture> DescribePicture(TiffFileHandle file, int32_t image,
                                             const ImageFacts& facts, std::string& why);

}  // namespace vellim::tool
