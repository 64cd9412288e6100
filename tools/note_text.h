// The text of a note between people, who type UTF-8 and lines, and its tag.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vellim::tool {

// Of a line, the library shows no more bytes while the note is apart from the pixels.
constexpr size_t kShownNoteBytes = 40;

// The text as notes have it: Windows-1252, CR LF between lines. Nothing, with the reason in `why`,
// for one that a note can't hold or that shows nothing.
std::optional<std::string> MakeNoteText(std::string_view utf8, std::string& why);

// The lines of such a text, as they stand.
std::vector<std::string_view> SplitNoteLines(std::string_view text);

}  // namespace vellim::tool
