// What stands around the lines of two-dimensional coding (ITU-T T.4 section 4.2): the lines of
// one-dimensional coding among them, the end-of-line code with its tag bit, and the step that makes
// a line the reference of the next.
#pragma once

#include <cstdint>

#include "codec/bit_reader.h"
#include "codec/change_lists.h"
#include "codec/fax_2d_row.h"

namespace vellim {

// Reads one line of one-dimensional coding into the current list of `lists`, so that the next line
// can be read against it, and sets `hasRuns` once a run has come. An end-of-line code closes the
// line; of that its first eight bits are taken alone. 0, TIFF_BAD_CODE for more runs than the lists
// hold, or the failure of the reader's fill.
uint32_t DecodeRowOfRuns(FaxRow& row, const ChangeLists& lists, BitReader& reader, bool& hasRuns);

// Passes over what is left of an end-of-line code, or over all of one, and takes the tag bit behind
// it: 1 when the next line is one-dimensional. 0, or the failure of the reader's fill.
uint32_t ReadEndOfLine(BitReader& reader, LookAhead& lookAhead, bool& oneDimensional);

// Makes a finished line the reference of the next.
void EndLine(const FaxRow& row, ChangeLists& lists);

}  // namespace vellim
