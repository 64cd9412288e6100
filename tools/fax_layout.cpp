#include "fax_layout.h"

#include <algorithm>
#include <cctype>
#include <cstddef>

namespace vellim::tool {
namespace {

// A line that is being filled.
struct Line {
    std::string text;
    uint64_t end = 0;    // where the next letter goes
    size_t tabs = 0;     // stops passed by
    size_t breakAt = 0;  // where it may be cut; 0: nowhere
    uint64_t endAtBreak = 0;
};

bool IsBlank(char letter) {
    return letter == ' ' || letter == '\t';
}

class Setter {
  public:
    Setter(const FaxFrame& frame, const FaxLetters& letters) : frame_(frame), letters_(letters) {
        line_.end = frame_.left;
    }

    // The lines of a paragraph, which ends where the text has a line end.
    std::vector<std::string> Set(std::string_view paragraph) {
        for (const char letter : paragraph) {
            if (letter == '\t') {
                Tab();
            } else {
                Put(letter);
            }
        }
        EndLine(line_.text.size());
        return std::move(lines_);
    }

  private:
    // What reaches the limit is too far.
    [[nodiscard]] bool Fits(uint64_t end) const { return end < frame_.right; }

    void Put(char letter) {
        const uint32_t width = letters_.WidthOf(letter);
        while (!Fits(line_.end + width) && !line_.text.empty())
            WrapBefore(letter);
        if (letter == ' ' && wrapped_ && line_.text.empty()) return;
        const char before = line_.text.empty() ? ' ' : line_.text.back();
        const bool opensWord = !IsBlank(letter) && IsBlank(before);
        if (opensWord && line_.text.find_first_not_of(" \t") != std::string::npos) MarkBreak();
        line_.text += letter;
        line_.end += width;
        if (letter == '-' && std::isalnum(static_cast<unsigned char>(before)) != 0) MarkBreak();
    }

    void MarkBreak() {
        line_.breakAt = line_.text.size();
        line_.endAtBreak = line_.end;
    }

    // Ends the line at its last break, and takes what stood behind that to the next one.
    void WrapBefore(char letter) {
        const bool betweenWords = IsBlank(letter) || IsBlank(line_.text.back());
        const size_t at = line_.breakAt == 0 || betweenWords ? line_.text.size() : line_.breakAt;
        const std::string tail = line_.text.substr(at);
        const uint64_t width = tail.empty() ? 0 : line_.end - line_.endAtBreak;
        EndLine(at);
        wrapped_ = true;
        line_.text = tail;
        line_.end += width;
    }

    void EndLine(size_t at) {
        line_.text.resize(at);
        line_.text.resize(line_.text.find_last_not_of(" \t") + 1);
        lines_.push_back(std::move(line_.text));
        line_ = {};
        line_.end = frame_.left;
    }

    // The page maker takes one stop for each tab, whatever was written by then.
    void Tab() {
        const auto stop =
            std::upper_bound(frame_.tabStops.begin() + static_cast<ptrdiff_t>(line_.tabs),
                             frame_.tabStops.end(), line_.end);
        if (stop == frame_.tabStops.end()) {
            Put(' ');
            return;
        }
        if (!Fits(uint64_t{*stop} + letters_.WidthOf(' '))) {
            EndLine(line_.text.size());
            wrapped_ = true;
            return;
        }
        const auto number = static_cast<size_t>(stop - frame_.tabStops.begin()) + 1;
        line_.text.append(number - line_.tabs, '\t');
        line_.tabs = number;
        line_.end = *stop;
    }

    const FaxFrame& frame_;
    const FaxLetters& letters_;
    Line line_;
    bool wrapped_ = false;  // this isn't the paragraph's first line
    std::vector<std::string> lines_;
};

struct Pager {
    size_t linesPerPage = 0;
    size_t lines = 0;  // on the last page
    std::vector<std::string> pages{1};

    void Turn() {
        pages.emplace_back();
        lines = 0;
    }

    void Put(const std::string& line) {
        if (lines == linesPerPage) Turn();
        if (lines++ > 0) pages.back() += "\r\n";
        pages.back() += line;
    }
};

size_t LinesPerPage(const FaxFrame& frame, const FaxLetters& letters) {
    const uint32_t height = frame.bottom - frame.top;
    return (height - letters.height) / std::max(letters.step, 1U) + 1;
}

// Takes what stands in front of the next `end` off `text`, and the end with it.
std::string_view TakeUpTo(std::string_view& text, char end) {
    const size_t at = text.find(end);
    const std::string_view part = text.substr(0, at);
    text.remove_prefix(at == std::string_view::npos ? text.size() : at + 1);
    return part;
}

void LayOutSection(std::string_view section, const FaxFrame& frame, const FaxLetters& letters,
                   Pager& pager) {
    while (!section.empty()) {
        for (const std::string& line : Setter(frame, letters).Set(TakeUpTo(section, '\n')))
            pager.Put(line);
    }
}

}  // namespace

bool HasRoom(const FaxFrame& frame, const FaxLetters& letters) {
    const uint64_t widest = *std::max_element(letters.widths.begin(), letters.widths.end());
    return frame.left + widest < frame.right &&
           uint64_t{frame.top} + letters.height <= frame.bottom;
}

std::vector<std::string> LayOutPages(std::string_view text, const FaxFrame& frame,
                                     const FaxLetters& letters) {
    Pager pager;
    pager.linesPerPage = LinesPerPage(frame, letters);
    for (bool first = true; !text.empty(); first = false) {
        if (!first) pager.Turn();
        LayOutSection(TakeUpTo(text, '\f'), frame, letters, pager);
        if (text.find_first_not_of(" \t\n") == std::string_view::npos) break;
    }
    return std::move(pager.pages);
}

}  // namespace vellim::tool
