// Pages written as images of a TIFF file.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "image_facts.h"
#include "picture.h"
#include "tag_values.h"
#include "tiff_output.h"
#include "vellim/streams.h"

namespace vellim::tool {

enum class TiffCompression { None, PackBits, Lzw, LzwDifferencing, G3, G3Eol, G3TwoD, G4 };

// By its name on the command line ("lzw-diff"); nothing if there is none.
std::optional<TiffCompression> FindTiffCompression(std::string_view name);

// "none, packbits, ..."
std::string TiffCompressionNames();

struct TiffOptions {
    std::optional<TiffCompression> compression;  // nothing: what suits each page
    uint32_t fillOrder = TIFF_FILL_MSB_FIRST;
};

// What becomes of one page.
struct TiffPlan {
    PixelType type;  // that its pixels have to be brought to
    TiffCompression compression = TiffCompression::None;
    bool fax = false;  // it is a CCITT compression, in which white is zero
    uint32_t fillOrder = TIFF_FILL_MSB_FIRST;
    std::vector<std::string> notes;  // where that isn't what was asked for
};

// Left to itself, it takes Group 4 for black and white, LZW with differencing for grey and colours
// of 8 and 24 bits, plain LZW for palettes and for pixels of 4 bits. A CCITT compression makes
// pixels black or white. Nothing, with the reason in `why`, for a line too long for
// two-dimensional coding.
std::optional<TiffPlan> PlanTiffPage(const Picture& picture, const TiffOptions& options,
                                     std::string& why);

// A page as it is to be stored.
struct TiffPage {
    Picture picture;  // of the plan's type
    bool whiteIsZero = false;
    std::optional<Resolution> resolution;  // nothing: the tags are left out
    std::vector<TagValue> carried;         // further tags
    TiffPlan plan;
};

// Begins a page, whose lines are encoded on a thread of their own; it is stored when the sink has
// finished. Nothing if that can't be; the reason for that and for later failures of the sink goes
// to `failure`, which must outlive the sink.
std::optional<LineSink> BeginTiff(const TiffPage& page, TiffOutput& output, std::string& failure);

}  // namespace vellim::tool
