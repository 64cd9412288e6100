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

// Takes the code out of its blocks: all that come one after the other, the last one as far as its
// bytes came. `end` is where they end. False, with the reason in `why`, if it can't be done.
bool TakeFromBlocks(const CodeFile& blocks, CodeFile& code, uint64_t& end, std::string& why);

// Puts code into blocks, which replace what `blocks` held.
bool PutIntoBlocks(const CodeFile& code, CodeFile& blocks, std::string& why);

// Leaves out, of blocks that PutIntoBlocks made, all but the first `codeBytes` bytes of their code.
bool CutBlocks(CodeFile& blocks, uint64_t codeBytes, std::string& why);

}  // namespace vellim::tool
