// Where the lines of a bare stream end that tells nothing of its width.
//
// A one-dimensional line behind which an end-of-line code stands tells its length by itself: read
// as if it were far longer, it stops at that code, and the last change of colour is where its coder
// stopped.
#pragma once

#include <cstdint>

#include "fax_stream.h"

namespace vellim::tool {

struct LineEnds {
    uint32_t width = 0;  // at which most lines end; 0: none of them tells
    uint32_t agreeing = 0;
    uint32_t lines = 0;
};

// Of the first `most` lines of `stream`, whatever its width says.
LineEnds FindLineEnds(FaxStream& stream, uint32_t most);

// How many of the first `most` lines, each with an end-of-line code behind it, end elsewhere than
// at `width`.
uint32_t CountOddLines(FaxStream& stream, uint32_t width, uint32_t most);

// How the first lines of a stream decode with a width.
struct FirstLines {
    uint32_t count = 0;  // at most as many as are asked for
    int32_t failure = 0;
};
FirstLines DecodeFirstLines(FaxStream& stream, uint32_t width, uint32_t most);

}  // namespace vellim::tool
