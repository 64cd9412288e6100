#include "line_ends.h"

#include <algorithm>
#include <vector>

#include "vellim/failures.h"
#include "vellim/files.h"

namespace vellim::tool {
namespace {

struct Look {
    uint32_t width = 0;  // that lines are decoded with: whole bytes
    uint32_t most = 0;
    uint32_t lines = 0;
    std::vector<uint32_t> ends;  // with room for `most`
};

// Where the line's last change of colour is; 0 if it has none.
uint32_t LastChange(const uint8_t* line, uint32_t width) {
    const auto isBlack = [line](uint32_t x) { return (line[x / 8] & 0x80U >> x % 8) != 0; };
    const bool black = isBlack(width - 1);
    const uint8_t plain = black ? 0xFF : 0;
    uint32_t end = width;
    while (end > 0 && line[end / 8 - 1] == plain)
        end -= 8;
    while (end > 0 && isBlack(end - 1) == black)
        --end;
    return end;
}

uint32_t OnLook(uint8_t* line, uint32_t /*lineNumber*/, uintptr_t callbackData) noexcept {
    auto& look = *reinterpret_cast<Look*>(callbackData);
    const uint32_t end = LastChange(line, look.width);
    if (end != 0) look.ends.push_back(end);
    return ++look.lines == look.most ? TIFF_LINE_STOP : TIFF_LINE_GO_ON;
}

struct OddCount {
    uint32_t width = 0;
    uint32_t decodedWidth = 0;
    uint32_t odd = 0;
    uint32_t left = 0;
};

uint32_t OnOddCount(uint8_t* line, uint32_t /*lineNumber*/, uintptr_t callbackData) noexcept {
    auto& count = *reinterpret_cast<OddCount*>(callbackData);
    if (LastChange(line, count.decodedWidth) != count.width) ++count.odd;
    return --count.left == 0 ? TIFF_LINE_STOP : TIFF_LINE_GO_ON;
}

struct Count {
    uint32_t lines = 0;
    uint32_t most = 0;
};

uint32_t OnCount(uint8_t* /*line*/, uint32_t /*lineNumber*/, uintptr_t callbackData) noexcept {
    auto& count = *reinterpret_cast<Count*>(callbackData);
    return ++count.lines == count.most ? TIFF_LINE_STOP : TIFF_LINE_GO_ON;
}

}  // namespace

LineEnds FindLineEnds(FaxStream& stream, uint32_t most) {
    Look look;
    look.most = most;
    look.ends.reserve(most);
    uint32_t lines = 0;
    GetTiffSizeLimits(&look.width, &lines);
    look.width -= look.width % 8;
    LineEnds found;
    if (look.width == 0) return found;
    stream.width = look.width;
    DecodeFax(stream, 0, reinterpret_cast<uintptr_t>(&look), OnLook);
    found.lines = look.lines;
    std::sort(look.ends.begin(), look.ends.end());
    for (auto first = look.ends.begin(); first != look.ends.end();) {
        const auto next = std::upper_bound(first, look.ends.end(), *first);
        const auto times = static_cast<uint32_t>(next - first);
        if (times > found.agreeing) {
            found.width = *first;
            found.agreeing = times;
        }
        first = next;
    }
    return found;
}

uint32_t CountOddLines(FaxStream& stream, uint32_t width, uint32_t most) {
    const uint32_t wider = (width / 8 + 2) * 8;
    OddCount count{width, wider, 0, most};
    const uint32_t before = stream.width;
    stream.width = wider;
    DecodeFax(stream, 0, reinterpret_cast<uintptr_t>(&count), OnOddCount);
    stream.width = before;
    return count.odd;
}

FirstLines DecodeFirstLines(FaxStream& stream, uint32_t width, uint32_t most) {
    Count count{0, most};
    stream.width = width;
    const int32_t failure = DecodeFax(stream, 0, reinterpret_cast<uintptr_t>(&count), OnCount);
    return {count.lines, failure};
}

}  // namespace vellim::tool
