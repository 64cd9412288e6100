// A document to read: a file, a pipe, or standard input.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "handles.h"

namespace vellim::tool {

struct Document {
    std::string name;            // as the user named it; "-" is standard input
    OwnedDescriptor descriptor;  // kept open for a path that only /proc can name
    OwnedBlock block;            // the bytes, where no path serves
    OwnedTiff tiff;              // declared last, so closed before what it reads from
    int32_t imageCount = 0;
    bool chainBroken = false;  // there may be images behind the last one that can't be reached

    [[nodiscard]] TiffFileHandle File() const { return tiff.Get(); }
};

// Opens `path`, or standard input for "-". Nothing, with the reason in `why`, if it can't be.
std::optional<Document> OpenDocument(const std::string& path, std::string& why);

// Opens the regular file that stands behind `descriptor`; `name` is for messages.
std::optional<Document> OpenDocument(const std::string& name, OwnedDescriptor descriptor,
                                     std::string& why);

// "the chain of images is broken behind image 3"
std::string BrokenChainMessage(const Document& document);

}  // namespace vellim::tool
