#include "segment_start.h"

#include <algorithm>
#include <array>

#include "image_bytes.h"
#include "ioca_codes.h"
#include "structured_fields.h"

namespace vellim::tool {
namespace {

constexpr uint8_t kLongestName = 4;
constexpr uint8_t kLongestId = 8;
constexpr size_t kFieldHeadBytes = 2;  // a code and a length
constexpr size_t kFarthestBare = 512;

static_assert(kSegmentHeadBytes == 3 * kFieldHeadBytes + kLongestName + kLongestId);

// A mark is the identifier of a structured field that has nothing else of one.
constexpr std::array<char, kPictureMarkBytes> MarkOf(FieldId id) {
    return {static_cast<char>(id >> 16U), static_cast<char>(id >> 8U), static_cast<char>(id)};
}

constexpr auto kBeginMark = MarkOf(kPictureData);
constexpr auto kEndMark = MarkOf(kEndPicture);

template <size_t size>
constexpr std::string_view ViewOf(const std::array<char, size>& bytes) {
    return {bytes.data(), bytes.size()};
}

uint8_t ByteAt(std::string_view bytes, size_t at) {
    return at < bytes.size() ? static_cast<uint8_t>(bytes[at]) : uint8_t{0};
}

// Where the field behind Begin Segment stands, if that is what `bytes` begin with.
std::optional<size_t> BehindName(std::string_view bytes) {
    const uint8_t name = ByteAt(bytes, 1);
    if (ByteAt(bytes, 0) != kBeginSegment || name > kLongestName) return {};
    return kFieldHeadBytes + name;
}

bool BeginsContent(std::string_view bytes) {
    const auto content = BehindName(bytes);
    return content && ByteAt(bytes, *content) == kBeginContent;
}

}  // namespace

bool MayBegin(int byte) {
    return byte == int{kBeginSegment} || byte == static_cast<uint8_t>(kBeginMark[0]);
}

bool BeginsSegment(std::string_view bytes) {
    const auto behind = BehindName(bytes);
    return behind && (BeginsContent(bytes) || ByteAt(bytes, *behind) == kEndSegment);
}

bool IsSegmentHead(std::string_view bytes) {
    if (!BeginsContent(bytes)) return false;
    const size_t id = *BehindName(bytes) + kFieldHeadBytes;
    const uint8_t idBytes = ByteAt(bytes, id - 1);
    return idBytes > 0 && idBytes <= kLongestId && ByteAt(bytes, id + idBytes) == kImageSize &&
           ByteAt(bytes, id + idBytes + 1) >= kStatedSizeBytes;
}

bool IsPictureMark(std::string_view bytes) {
    const std::string_view mark = bytes.substr(0, kPictureMarkBytes);
    return mark == ViewOf(kBeginMark) || mark == ViewOf(kEndMark);
}

std::optional<size_t> FindBareSegment(std::string_view head) {
    if (BeginsContent(head)) return 0;
    for (size_t at = 1; at < std::min(head.size(), kFarthestBare); ++at) {
        if (IsSegmentHead(head.substr(at))) return at;
    }
    return {};
}

std::optional<size_t> FindMarkedSegment(std::string_view head) {
    constexpr std::string_view kMark = ViewOf(kBeginMark);
    size_t at = head.find(kMark);
    for (; at != std::string_view::npos; at = head.find(kMark, at + 1)) {
        const std::string_view segment = head.substr(at + kMark.size());
        if (at == 0 ? BeginsContent(segment) : IsSegmentHead(segment)) return at + kMark.size();
    }
    return {};
}

}  // namespace vellim::tool
