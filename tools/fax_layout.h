// Text laid out in lines and pages before the library draws it.
//
// The page maker wraps lines and turns pages itself, but drops the character at which it breaks a
// line, lets the last line of a page hang over its margin, and doesn't know form feeds. A page laid
// out here gives it nothing to wrap or to turn.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vellim::tool {

// Widths and heights in pixels.
struct FaxLetters {
    static constexpr char kFirst = ' ';
    static constexpr size_t kCount = 95;
    std::array<uint32_t, kCount> widths{};
    uint32_t height = 0;  // of a line
    uint32_t step = 0;    // from line to line

    [[nodiscard]] uint32_t WidthOf(char letter) const {
        return widths[static_cast<size_t>(letter - kFirst)];
    }
};

// Where text goes, as the page maker works it out of its request.
struct FaxFrame {
    uint32_t left = 0, right = 0, top = 0, bottom = 0;  // right and bottom lie beyond
    std::vector<uint32_t> tabStops;                     // from the page's edge, ascending
};

// Whether a letter fits.
bool HasRoom(const FaxFrame& frame, const FaxLetters& letters);

// The pages of a prepared text, each with CR LF between its lines. Lines break behind spaces and
// hyphens, a word without either where the line ends; spaces at a break go. A tab leads to the next
// stop behind what is written, and is a space behind the last one. A form feed begins a page; with
// nothing behind it, it doesn't.
std::vector<std::string> LayOutPages(std::string_view text, const FaxFrame& frame,
                                     const FaxLetters& letters);

}  // namespace vellim::tool
