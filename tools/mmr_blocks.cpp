// The library takes a block's length as it stands, so that of a file that was cut it would decode
// what its buffer held before; and code that is to follow would be taken for the rest of the block.
#include "mmr_blocks.h"

#include <algorithm>
#include <array>

namespace vellim::tool {
namespace {

constexpr std::array<uint8_t, 2> kMark = {0xFE, 0x92};
constexpr uint64_t kUnstatedBytes = 65520;  // of a block with a length of 0

void AddToTail(std::vector<uint8_t>& tail, const std::vector<uint8_t>& bytes, size_t most) {
    tail.insert(tail.end(), bytes.begin(), bytes.end());
    if (tail.size() > most) tail.erase(tail.begin(), tail.end() - static_cast<ptrdiff_t>(most));
}

}  // namespace

bool IsMmr(const std::vector<uint8_t>& bytes) {
    return bytes.size() >= kMmrHeadBytes && bytes[0] == kMark[0] && bytes[1] == kMark[1];
}

bool SettleMmrBlocks(CodeFile& code, std::vector<uint8_t>& tail, size_t most, std::string& why) {
    uint64_t at = 0;
    for (;;) {
        const std::vector<uint8_t> head = ReadCode(code, at, kMmrHeadBytes);
        if (!IsMmr(head)) break;
        const uint64_t stated = uint64_t{head[2]} << 8U | head[3];
        const uint64_t codeAt = at + kMmrHeadBytes;
        const uint64_t length = std::min(stated == 0 ? kUnstatedBytes : stated, code.size - codeAt);
        if (length == 0) break;
        const std::array<uint8_t, 2> settled = {static_cast<uint8_t>(length >> 8U),
                                                static_cast<uint8_t>(length)};
        if (length != stated && !ReplaceCode(code, at + 2, settled.data(), settled.size(), why)) {
            return false;
        }
        const uint64_t kept = std::min<uint64_t>(length, most);
        AddToTail(tail, ReadCode(code, codeAt + length - kept, static_cast<size_t>(kept)), most);
        at = codeAt + length;
    }
    return CutCode(code, at, why);
}

}  // namespace vellim::tool
