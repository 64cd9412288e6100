// One page to one picture.
#pragma once

#include <set>
#include <string>

#include "commands.h"
#include "halftone.h"
#include "output_formats.h"
#include "page_source.h"
#include "passing_file.h"
#include "tiff_writer.h"

namespace vellim::tool {

struct PageRequest {
    uint32_t page = 0;  // counted from 0
    bool square = false;
    uint32_t dpi = 0;  // 0: the page's own
    Halftone halftone = Halftone::FloydSteinberg;
    std::set<std::string>* notes = nullptr;  // what was told already, in this run

    // To a file of its own:
    const OutputFormat* format = nullptr;
    WriteOptions writeOptions;
    std::string path;  // "-": standard output
    Overwrite overwrite = Overwrite::Refuse;
    bool sparesInput = false;  // a file isn't replaced by less than all that is in it

    // or, in place of that, to a TIFF file:
    TiffOutput* tiff = nullptr;
    TiffOptions tiffOptions;
    bool keepsPageNumbers = false;  // they hold in the new file too
};

// Why a file that is the input too stays.
constexpr const char* kInputStays =
    "it is the input too, and what couldn't be read of it would be lost: it was left as it is; "
    "with "
    "--accept-loss it is replaced";

// Whether the file is to take the place of what is read from.
bool IsInput(const PageSource& source, const PassingFile& file);

// Whether the source holds what no page of it gives.
bool HoldsMore(const PageSource& source);

struct PageResult {
    Outcome outcome = Outcome::Failed;
    bool written = false;
    // What a TIFF file was to hold isn't all there, for a reason that isn't the page's damage.
    bool spoilt = false;
};

// Converts a page; failures are told on standard error.
PageResult ConvertPage(const PageSource& source, const PageRequest& request);

}  // namespace vellim::tool
