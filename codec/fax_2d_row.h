// One line of two-dimensional coding (ITU-T T.4 section 4.2, T.6 section 2): its modes, read
// against the line above.
//
//          b1    b2
//   reference  ____####____      a0  the position reached, and its colour
//   current    __####______      b1  first change right of a0 to the colour opposite to a0's
//                ^a0  ^a1        b2  the next change
//
//   pass        0001            a0 moves to b2, the colour stays
//   horizontal  001 + two runs  a0a1 in a0's colour, a1a2 in the other
//   vertical    1, 01s, 00001s, 000001s: a1 is b1, or b1 1, 2, 3 to the right (s = 1) or left
//
// b1 is found by an index that moves on from where it was, by twos, since changes of one colour
// stand at every second place of a list. Lines are never seen as pixels here.
#pragma once

#include <cstdint>

#include "codec/bit_reader.h"
#include "codec/change_lists.h"

namespace vellim {

// Where the reader of mode codes stands in its look-ahead. A mode is told by its first 1 bit, and
// eight bits are brought in only when those in hand are all zeros; so at the end of a stream it
// hangs on what was in hand whether one more mode can be read. `valid` (0 to 8) bits are in hand at
// the bit `position` of the code buffer. Quick reading doesn't keep this up to date; it is worked
// out anew from the last known point when it matters.
struct LookAhead {
    int64_t position = 0;
    uint32_t valid = 0;
};

struct FaxRow {
    int32_t width = 0;
    uint32_t count = 0;         // changes stored
    int32_t a0 = 0;             // position reached; the line ends at the width or beyond
    uint32_t b1 = 0;            // index of b1 in the reference list
    bool endsWithPass = false;  // the line's last mode was a pass
    bool hasEndOfLine = false;  // eight zero bits have ended the line
};

enum class FaxDialect : uint8_t {
    Group3,  // eight zero bits end the line; an extension code is passed over
    Group4,  // eight zero bits begin the closing code (EOFB); there are no extensions
    Mmr,     // eight zero bits end the line; there are no extensions
};

// Reads the modes of one line into the current list of `lists`. 0, or the failure code that ends
// the run: TIFF_BAD_CODE, TIFF_UNEXPECTED_EOFB, or that of the reader's fill. A line of more
// changes than the lists hold, which only damage makes, is TIFF_BAD_CODE.
template <FaxDialect kDialect>
uint32_t DecodeFaxRow(FaxRow& row, const ChangeLists& lists, BitReader& reader,
                      LookAhead& lookAhead);

}  // namespace vellim
