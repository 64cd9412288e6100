#include "note_text.h"

#include <algorithm>
#include <cstdint>

#include "windows_1252.h"

namespace vellim::tool {
namespace {

constexpr std::string_view kLineEnd = "\r\n";
constexpr uint8_t kFirstPrintable = 32;

bool IsControl(char c) {
    return static_cast<uint8_t>(c) < kFirstPrintable;
}

}  // namespace

std::optional<std::string> MakeNoteText(std::string_view utf8, std::string& why) {
    size_t lost = 0;
    const auto typed = ToWindows1252(utf8, lost);
    if (!typed) {
        why = "the text isn't UTF-8";
        return {};
    }
    if (lost != 0) {
        why = "a note is kept in Windows-1252, which lacks " + std::to_string(lost) +
              (lost == 1 ? " character" : " characters") + " of the text";
        return {};
    }
    std::string text;
    for (const std::string_view line : SplitNoteLines(*typed)) {
        if (std::any_of(line.begin(), line.end(), IsControl)) {
            why = "there are tabs or other control characters in the text";
            return {};
        }
        if (!text.empty() || line.data() != typed->data()) text += kLineEnd;
        text += line;
    }
    if (text.find_first_not_of(" \r\n") == std::string::npos) {
        why = "the text is empty";
        return {};
    }
    return text;
}

// CR LF, CR and LF each end a line.
std::vector<std::string_view> SplitNoteLines(std::string_view text) {
    std::vector<std::string_view> lines;
    for (;;) {
        const size_t end = text.find_first_of(kLineEnd);
        lines.push_back(text.substr(0, end));
        if (end == std::string_view::npos) return lines;
        text.remove_prefix(end);
        text.remove_prefix(text.starts_with(kLineEnd) ? kLineEnd.size() : 1);
    }
}

}  // namespace vellim::tool
