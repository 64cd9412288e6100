// Bytes between the parts of a file that belong to none of them, as a reader passes them one by
// one. Zeros that stand before a part or at the end are padding and don't count, nor does a line
// end that ends all.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vellim::tool {

struct StrayBytes {
    uint64_t total = 0;  // of the gaps that are closed
    // Of the gap that is open:
    uint64_t passed = 0;   // from the first byte that isn't zero on
    uint64_t counted = 0;  // from there to the last one that isn't zero
    bool lineEnd = true;   // all of them may be one
};

void PassByte(StrayBytes& stray, int byte);

// Closes the gap: the next part begins, or nothing comes any more.
void CloseGap(StrayBytes& stray);
void CloseLastGap(StrayBytes& stray);

// Adds to `words` that there are so many bytes that are no `part`, unless there are none.
void TellStray(std::string& words, uint64_t bytes, std::string_view part);

}  // namespace vellim::tool
