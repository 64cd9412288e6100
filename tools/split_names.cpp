// The pattern is taken apart here and never reaches a printing function.
#include "split_names.h"

#include <algorithm>
#include <string_view>

namespace vellim::tool {
namespace {

// The length of "d" or "0Nd" at the start of `text`, with N in `digits`; 0 if it is neither.
size_t ReadNumberForm(std::string_view text, size_t& digits) {
    if (text.starts_with('d')) return 1;
    if (text.size() < 3 || text[0] != '0' || text[1] < '1' || text[1] > '9' || text[2] != 'd') {
        return 0;
    }
    digits = static_cast<size_t>(text[1] - '0');
    return 3;
}

}  // namespace

std::optional<NamePattern> ParseNamePattern(const std::string& text) {
    NamePattern pattern;
    bool numbered = false;
    for (size_t at = 0; at < text.size(); ++at) {
        std::string& part = numbered ? pattern.behind : pattern.before;
        if (text[at] != '%') {
            part += text[at];
        } else if (text.compare(at + 1, 1, "%") == 0) {
            part += text[++at];
        } else {
            const size_t length =
                ReadNumberForm(std::string_view(text).substr(at + 1), pattern.digits);
            if (length == 0 || numbered) return {};
            numbered = true;
            at += length;
        }
    }
    if (!numbered) return {};
    return pattern;
}

std::string NumberedName(const NamePattern& pattern, uint32_t number) {
    std::string digits = std::to_string(number);
    digits.insert(0, pattern.digits - std::min(pattern.digits, digits.size()), '0');
    return pattern.before + digits + pattern.behind;
}

}  // namespace vellim::tool
