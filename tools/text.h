// Text from files, which may hold anything, made fit for a terminal or for JSON.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace vellim::tool {

// `bytes` as UTF-8: left as it is if valid, otherwise read as Windows-1252.
std::string ToUtf8(std::string_view bytes);

// ToUtf8 with everything escaped that could move a cursor or turn the writing's direction.
std::string Printable(std::string_view bytes);

// The strings of an ASCII value, which are parted by zero bytes; the last one ends at the value's
// end if its terminator is missing. Padding by further zero bytes gives no empty strings.
std::vector<std::string_view> SplitAtZeros(std::string_view bytes);

// At most `characters` characters of valid UTF-8, with "..." for what was left out.
std::string Shorten(std::string_view utf8, size_t characters);

}  // namespace vellim::tool
