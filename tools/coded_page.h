// A page of fax code that no TIFF file tells about: a CALS drawing, an IOCA image, a bare stream.
// Wherever the code comes from, it is gathered in a file of its own that holds nothing else, and
// decoded from there line by line.
#pragma once

#include <cstdint>
#include <string>

#include "code_file.h"
#include "fax_coding.h"
#include "raster_formats.h"

namespace vellim::tool {

struct CodedPage {
    CodeFile code;  // for FaxCoding::Mmr with its block headers, for all others without
    FaxCoding coding = FaxCoding::G4;
    uint32_t fillOrder = 1;
    uint32_t width = 0;
    uint32_t height = 0;  // 0: nobody states it; the lines are then counted
    std::string doubt;    // what speaks against these figures, in words
};

// Makes the page ready: 1 is black. `info` gets the picture's size and type here, and has all the
// rest already. A height that nobody states is that of the lines that come before the closing
// codes, which give no white lines. What speaks for damage is told at the lines' end even if all of
// them came. Nothing, with the reason in `why`, if there is no such page:
// a size that isn't served, no line at all.
std::optional<RasterPage> OpenCodedPage(CodedPage page, PageInfo info, std::string& why);

// The page of a bare stream, whose ending (without the dot, in lower case) and hints say what its
// content doesn't: of code with EOLs the width and the kind are found out, else a width is wanted.
std::optional<RasterPage> OpenBareStream(int descriptor, std::string_view ending,
                                         const SourceHints& hints, std::string& why);

// Whether files with such an ending are bare streams: g3, g4, fax, mmr.
bool IsBareEnding(std::string_view ending);

}  // namespace vellim::tool
