#include "carried_tags.h"

#include <algorithm>
#include <array>

#include "page_source.h"
#include "tag_rules.h"
#include "vellim/streams.h"

namespace vellim::tool {
namespace {

// Tags that go with a page whatever form its pixels take. Orientation stays, since the pixels
// aren't turned; Software tells what made the page, which conversion doesn't change.
constexpr std::array<uint32_t, 16> kCarriedTags = {
    TIFF_TAG_NEW_SUBFILE_TYPE,
    TIFF_TAG_SUBFILE_TYPE,
    TIFF_TAG_DOCUMENT_NAME,
    TIFF_TAG_IMAGE_DESCRIPTION,
    271,  // Make
    272,  // Model
    TIFF_TAG_ORIENTATION,
    285,   // PageName
    286,   // XPosition
    287,   // YPosition
    297,   // PageNumber
    305,   // Software
    306,   // DateTime
    315,   // Artist
    316,   // HostComputer
    33432  // Copyright
};

// A longer value can be read by nobody through the library.
constexpr size_t kLongestValue = 32767;

constexpr uint32_t kFirstPrivateTag = 32768;  // TIFF 6.0, section 2

constexpr const char* kSubImages = "sub-images aren't carried over";
constexpr const char* kPrivateTags = "private tags aren't carried over";

struct NamedLoss {
    uint32_t tag;
    const char* words;
};
constexpr std::array<NamedLoss, 5> kNamedLosses = {{
    {330, kSubImages},        // SubIFDs
    {700, kXmp},              // XMP
    {34665, kExif},           // ExifIFD
    {34675, kColourProfile},  // ICCProfile
    {34853, kExif}            // GPSIFD
}};

bool IsCarried(uint32_t tag) {
    return std::find(kCarriedTags.begin(), kCarriedTags.end(), tag) != kCarriedTags.end();
}

void CloseText(TagValue& value) {
    if (value.type != TIFF_TYPE_ASCII || value.bytes.empty() || value.bytes.back() == 0) return;
    value.bytes.push_back(0);
    ++value.count;
}

bool IsInOrder(const TagValue& value) {
    const TagRule rule = RuleOf(value.tag);
    if (value.bytes.empty() || value.bytes.size() > kLongestValue) return false;
    return value.type == rule.type && (rule.count == 0 || rule.count == value.count);
}

// Null for a tag that is carried, or that tells of the stored data alone.
const char* LossOf(uint32_t tag) {
    const auto* const named =
        std::find_if(kNamedLosses.begin(), kNamedLosses.end(),
                     [tag](const NamedLoss& loss) { return loss.tag == tag; });
    if (named != kNamedLosses.end()) return named->words;
    const bool lost = tag >= kFirstPrivateTag && !IsCarried(tag);
    return lost && RuleOf(tag).role != TagRole::DescribesData ? kPrivateTags : nullptr;
}

}  // namespace

std::vector<TagValue> ReadCarriedTags(TiffFileHandle file, int32_t image) {
    std::vector<TagValue> carried;
    for (const uint32_t tag : kCarriedTags) {
        auto value = ReadTag(file, image, tag);
        if (!value) continue;
        CloseText(*value);
        if (IsInOrder(*value)) carried.push_back(std::move(*value));
    }
    return carried;
}

std::vector<std::string> TagsGivenUp(TiffFileHandle file, int32_t image) {
    std::vector<std::string> losses;
    for (const uint32_t tag : ReadTagNumbers(file, image)) {
        const char* const loss = LossOf(tag);
        if (loss == nullptr || std::find(losses.begin(), losses.end(), loss) != losses.end()) {
            continue;
        }
        losses.emplace_back(loss);
    }
    return losses;
}

}  // namespace vellim::tool
