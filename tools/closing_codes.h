// The end-of-line codes that close a page of fax code: return to control (ITU-T T.4 section 4.1.4),
// and what MMR streams have in its place.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vellim::tool {

enum class EolTag : uint8_t { None, Bit };

struct ClosingCodes {
    uint32_t count = 0;
    size_t firstBit = 0;  // where the first one's own eleven zeros begin
};

// The codes that stand one after the other at the end of `code`, the first bit of a byte being its
// highest. Each is at least eleven zeros and a 1, with EolTag::Bit one bit more behind it: a 1, but
// for the first, whose tag may still speak of a line to come, and for the last, which may be cut.
ClosingCodes FindClosingCodes(const std::vector<uint8_t>& code, EolTag tag);

// How far back from the end they are looked for: six codes, and as much fill as lines of the
// slowest fax machines had.
constexpr size_t kClosingBytes = 4096;

}  // namespace vellim::tool
