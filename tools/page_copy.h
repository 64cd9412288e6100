// One page copied from document to document with its data as it is stored.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "document.h"
#include "tiff_output.h"

namespace vellim::tool {

struct Page {
    const Document* document = nullptr;
    int32_t image = 0;
    uint32_t number = 0;             // through all documents, from 1
    std::vector<uint32_t> lostTags;  // that would point nowhere in the copy
};

// Looks whether the page can be copied into a file of byte order `order`, and which tags it would
// lose. False, with the reason in `why`, if it can't.
bool ExaminePage(Page& page, uint16_t order, std::string& why);

enum class PageCopied { Whole, NotRead, NotWritten };

// Adds the page, without `lostTags`, to `destination`. If it can't be, the reason is in `why`.
PageCopied CopyPage(const Page& page, const TiffOutput& destination, std::string& why);

}  // namespace vellim::tool
