#include "fax/fax_line.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace vellim {

std::string SplitFaxLine(std::string& line) {
    constexpr std::string_view breaks = " !,-.:;?";
    const size_t at = line.find_last_of(breaks);
    if (at == std::string::npos || at == 0) return {};
    std::string tail = line.substr(at + 1);
    line.resize(at);
    return tail;
}

void FaxLine::Append(uint8_t byte) {
    text_.push_back(static_cast<char>(byte));
    width_ += WidthOf(byte);
}

void FaxLine::Clear() {
    text_.clear();
    width_ = 0;
}

// No byte is measured here twice: a tail has no break character, and is drawn whole by the next
// wrap.
std::string FaxLine::TakeHead() {
    std::string tail = SplitFaxLine(text_);
    std::string head = std::exchange(text_, std::move(tail));
    width_ = 0;
    for (const char letter : text_)
        width_ += WidthOf(static_cast<uint8_t>(letter));
    return head;
}

uint64_t FaxLine::WidthOf(uint8_t byte) const {
    return static_cast<uint64_t>(std::max(widths_.Of(byte), 0));
}

}  // namespace vellim
