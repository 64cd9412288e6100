// How an image segment (IOCA) is known by its first bytes: the first one of a file, at its start or
// a little behind it, bare or behind the three bytes that begin picture data; and those that
// follow.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace vellim::tool {

// Whether a segment or a mark may begin with this byte.
bool MayBegin(int byte);

// As many bytes as the functions that follow look at.
constexpr size_t kSegmentHeadBytes = 18;

// Whether `bytes` begin as a segment does that stands where one is due.
bool BeginsSegment(std::string_view bytes);

// Whether they do even if any bytes may stand here: the first fields must be those that the
// library's readers of heads want, so that no text and no image data is taken for a segment.
bool IsSegmentHead(std::string_view bytes);

// Whether `bytes` begin with one of the short marks (D3 EE FB, D3 A9 C7) that the library writes in
// front of picture data and behind it.
bool IsPictureMark(std::string_view bytes);
constexpr size_t kPictureMarkBytes = 3;

// The place of a segment without structured fields.
std::optional<size_t> FindBareSegment(std::string_view head);

// The place of the segment right behind the first D3 EE FB that has one.
std::optional<size_t> FindMarkedSegment(std::string_view head);

}  // namespace vellim::tool
