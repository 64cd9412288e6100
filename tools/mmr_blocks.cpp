// The library takes a block's length as it stands, so that of a file that was cut it would decode
// what its buffer held before. Blocks made here are full ones but for the last, and true.
#include "mmr_blocks.h"

#include <algorithm>
#include <array>

namespace vellim::tool {
namespace {

constexpr std::array<uint8_t, 2> kMark = {0xFE, 0x92};
constexpr uint64_t kFullBytes = 65520;  // also of a block with a length of 0

std::array<uint8_t, kMmrHeadBytes> HeadOf(uint64_t length) {
    return {kMark[0], kMark[1], static_cast<uint8_t>(length >> 8U), static_cast<uint8_t>(length)};
}

}  // namespace

bool IsMmr(const std::vector<uint8_t>& bytes) {
    return bytes.size() >= kMmrHeadBytes && bytes[0] == kMark[0] && bytes[1] == kMark[1];
}

bool TakeFromBlocks(const CodeFile& blocks, CodeFile& code, uint64_t& end, std::string& why) {
    if (!BeginCode(code, why)) return false;
    for (end = 0;;) {
        const std::vector<uint8_t> head = ReadCode(blocks, end, kMmrHeadBytes);
        if (!IsMmr(head)) return true;
        const uint64_t stated = uint64_t{head[2]} << 8U | head[3];
        const uint64_t codeAt = end + kMmrHeadBytes;
        const uint64_t length = std::min(stated == 0 ? kFullBytes : stated, blocks.size - codeAt);
        if (!AddCode(code, blocks.descriptor.Get(), codeAt, length, why)) return false;
        end = codeAt + length;
    }
}

bool PutIntoBlocks(const CodeFile& code, CodeFile& blocks, std::string& why) {
    if (!CutCode(blocks, 0, why)) return false;
    for (uint64_t at = 0; at < code.size; at += kFullBytes) {
        const uint64_t length = std::min(kFullBytes, code.size - at);
        const auto head = HeadOf(length);
        if (!AddCode(blocks, head.data(), head.size(), why) ||
            !AddCode(blocks, code.descriptor.Get(), at, length, why)) {
            return false;
        }
    }
    return true;
}

bool CutBlocks(CodeFile& blocks, uint64_t codeBytes, std::string& why) {
    const uint64_t lastAt = codeBytes / kFullBytes * (kFullBytes + kMmrHeadBytes);
    const uint64_t length = codeBytes % kFullBytes;
    if (length == 0) return CutCode(blocks, lastAt, why);
    const auto head = HeadOf(length);
    return ReplaceCode(blocks, lastAt, head.data(), head.size(), why) &&
           CutCode(blocks, lastAt + kMmrHeadBytes + length, why);
}

}  // namespace vellim::tool
