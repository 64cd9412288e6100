// Where the first image segment stands at the head of a file: at its start or a little behind it,
// bare or behind the three bytes that begin picture data.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace vellim::tool {

// Of a segment without structured fields. Anywhere but at the start, its first fields must be those
// that the library's readers of heads want, so that no text is taken for one.
std::optional<size_t> FindBareSegment(std::string_view head);

// Of the segment right behind D3 EE FB, as the library writes picture data without 0x5A.
std::optional<size_t> FindMarkedSegment(std::string_view head);

// Whether a head is that of structured fields.
bool IsStructured(std::string_view head);

}  // namespace vellim::tool
