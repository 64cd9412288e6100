// The blocks that MMR code stands in: 0xFE, 0x92, a 16-bit length with the high byte first, and so
// many bytes of code.
#pragma once

#include <string>
#include <vector>

#include "code_file.h"

namespace vellim::tool {

constexpr size_t kMmrHeadBytes = 4;

// Whether `bytes` begin with a block.
bool IsMmr(const std::vector<uint8_t>& bytes);

// Makes the blocks as long as they say: the last one's length becomes that of the bytes that came,
// a length of 0 is written out, and what stands behind the last block is left out. `tail` gets the
// last bytes of the code that they hold, at most `most`. False, with the reason in `why`, if the
// file can't be changed.
bool SettleMmrBlocks(CodeFile& code, std::vector<uint8_t>& tail, size_t most, std::string& why);

}  // namespace vellim::tool
