// Pages of files of other kinds made images of a TIFF file, so that they can be put together with
// the images of TIFF files.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "commands.h"
#include "document.h"
#include "page_source.h"
#include "tiff_output.h"

namespace vellim::tool {

struct TransferredPages {
    std::unique_ptr<TiffOutput> scratch;  // takes the file with it when it goes
    Document document;                    // whose images are the pages, in their order
    Outcome outcome = Outcome::Well;
};

// Makes images of `pages`, counted from 1, in a file among the temporary ones. Nothing, and told,
// if one of them can't be had; of a damaged page the lines that came are kept.
std::optional<TransferredPages> TransferPages(const PageSource& source,
                                              const std::vector<uint32_t>& pages);

}  // namespace vellim::tool
