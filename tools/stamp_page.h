// A page of a TIFF file with text laid over it.
#pragma once

#include <memory>
#include <string>

#include "commands.h"
#include "page_source.h"
#include "stamp_text.h"
#include "tiff_output.h"

namespace vellim::tool {

struct StampedPage {
    // Of one page, which is its image 0; null: there is none, which was told.
    std::unique_ptr<TiffOutput> file;
    Outcome outcome = Outcome::Failed;  // Damaged: lines were missing, and are white
};

// Stores image `image` of a TIFF source with the text at (x, y), among the temporary files: of the
// same depth and tags, compressed in the same way where the library can. An image that can't be
// read whole is stored if `acceptLoss` is set.
StampedPage StampPage(const PageSource& source, uint32_t image, const StampText& text, uint32_t x,
                      uint32_t y, bool acceptLoss);

}  // namespace vellim::tool
