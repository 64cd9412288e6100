#include "stray_bytes.h"

namespace vellim::tool {
namespace {

constexpr uint64_t kLongestLineEnd = 2;

}  // namespace

void PassByte(StrayBytes& stray, int byte) {
    if (byte == 0 && stray.passed == 0) return;
    ++stray.passed;
    if (byte == 0) return;
    stray.counted = stray.passed;
    stray.lineEnd = stray.lineEnd && (byte == '\r' || byte == '\n');
}

void CloseGap(StrayBytes& stray) {
    stray = {.total = stray.total + stray.counted};
}

void CloseLastGap(StrayBytes& stray) {
    if (stray.lineEnd && stray.counted <= kLongestLineEnd) stray.counted = 0;
    CloseGap(stray);
}

void TellStray(std::string& words, uint64_t bytes, std::string_view part) {
    if (bytes == 0) return;
    words.append(words.empty() ? "it holds " : ", ").append(std::to_string(bytes));
    words.append(bytes == 1 ? " byte that is no " : " bytes that are no ").append(part);
}

}  // namespace vellim::tool
