#include "segment_start.h"

#include <algorithm>

#include "raster_formats.h"
#include "structured_fields.h"

namespace vellim::tool {
namespace {

using namespace std::string_view_literals;

constexpr uint8_t kBeginSegment = 0x70;
constexpr uint8_t kLongestName = 4;
constexpr uint8_t kBeginContent = 0x91;
constexpr uint8_t kImageSize = 0x94;
constexpr uint8_t kImageSizeBytes = 9;
constexpr size_t kFarthestBare = 512;
constexpr std::string_view kPictureMark = "\xD3\xEE\xFB"sv;
constexpr uint8_t kFieldType = 0x80;  // set in the second byte of every identifier

uint8_t ByteAt(std::string_view head, size_t at) {
    return at < head.size() ? static_cast<uint8_t>(head[at]) : uint8_t{0};
}

// Where the data of Begin Image Content stands, if a segment begins at `at`.
std::optional<size_t> BehindBegin(std::string_view head, size_t at) {
    const uint8_t name = ByteAt(head, at + 1);
    if (ByteAt(head, at) != kBeginSegment || name > kLongestName) return {};
    const size_t content = at + 2 + name;
    if (ByteAt(head, content) != kBeginContent) return {};
    return content + 2;
}

bool IsHead(std::string_view head, size_t at) {
    const auto data = BehindBegin(head, at);
    if (!data) return false;
    const uint8_t idBytes = ByteAt(head, *data - 1);
    return idBytes > 0 && ByteAt(head, *data + idBytes) == kImageSize &&
           ByteAt(head, *data + idBytes + 1) >= kImageSizeBytes;
}

}  // namespace

std::optional<size_t> FindBareSegment(std::string_view head) {
    if (BehindBegin(head, 0)) return 0;
    for (size_t at = 1; at < std::min(head.size(), kFarthestBare); ++at) {
        if (IsHead(head, at)) return at;
    }
    return {};
}

std::optional<size_t> FindMarkedSegment(std::string_view head) {
    size_t at = head.find(kPictureMark);
    for (; at != std::string_view::npos; at = head.find(kPictureMark, at + 1)) {
        const size_t segment = at + kPictureMark.size();
        if (at == 0 ? BehindBegin(head, segment).has_value() : IsHead(head, segment))
            return segment;
    }
    return {};
}

bool IsStructured(std::string_view head) {
    return ByteAt(head, 0) == kFieldMark && ByteAt(head, 3) == kFieldClass &&
           (ByteAt(head, 4) & kFieldType) != 0;
}

}  // namespace vellim::tool
