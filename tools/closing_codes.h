// The end-of-line codes of a page of fax code (ITU-T T.4 section 4.1.2), and those that close it:
// return to control (T.4 section 4.1.4), the end-of-facsimile-block of T.6, and what MMR streams
// have in their place.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "code_file.h"
#include "fax_coding.h"

namespace vellim::tool {

// The zeros of an end-of-line code, of which fill can make more; a 1 is behind them.
constexpr size_t kEolZeros = 11;

// What a page's code shows without being decoded, in bits from its start.
struct PageCodes {
    uint64_t lines = 0;       // stretches of code between end-of-line codes
    bool closed = false;      // by closing codes
    uint64_t closingBit = 0;  // where the first one's own eleven zeros begin
    uint64_t closedBit = 0;   // behind the last of them
    uint64_t codeEnd = 0;     // behind the last 1 that is neither in such codes nor a tag
};

// Looks through `code`, whose bytes have their first bit highest, up to the page's end: such codes
// one after the other as none stand between lines, or, where only zeros follow, fewer. False, with
// the reason in `why`, if it can't be read.
bool FindPageCodes(const CodeFile& code, FaxCoding coding, PageCodes& found, std::string& why);

// Leaves out what isn't the page's code. Of the closing codes only those stay without which the
// last line wouldn't come, or the page's end wouldn't be seen.
bool CutToPage(CodeFile& code, FaxCoding coding, const PageCodes& found, std::string& why);

}  // namespace vellim::tool
