// What the library is to paint of a document: it finds files by their path, and by its own rules.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "handles.h"
#include "page_source.h"

namespace vellim::tool {

struct PaintSubject {
    std::string path;
    OwnedDescriptor copy;  // where the path is that of a copy
    int32_t format = 0;    // a ScreenFormat
    int32_t image = 0;
};

// Opens a document to paint; what it is is told by its content alone. Nothing, with the reason in
// `why`, if it can't be.
std::optional<PageSource> OpenPaintSource(const std::string& path, std::string& why);

// A page of it, counted from 1; good as long as `source` is. Nothing, with the reason in `why`, if
// it isn't there or the document of a kind that can't be painted.
std::optional<PaintSubject> FindPaintSubject(const PageSource& source, uint32_t page,
                                             std::string& why);

}  // namespace vellim::tool
