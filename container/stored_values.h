// Values as wide as files have them. In memory only SHORT, LONG, RATIONAL and offsets have a width
// of their own, and of any other type a tag buffer holds a byte for each element. Of a tag whose
// elements are wider in a file (TIFF 6.0, section 2; IFD: TIFF Technical Note 1), that is but the
// first part; before such a tag is written again, its whole value is fetched from where it stands.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "container/directory_layout.h"
#include "container/directory_writer.h"
#include "container/image_source.h"

namespace vellim {

inline constexpr uint32_t kSignedShort = 8, kSignedRational = 10;
inline constexpr uint32_t kFloat = 11, kDouble = 12, kIfd = 13;

// Width in bytes of an element in a file.
constexpr uint32_t StoredTypeSize(uint32_t type) {
    switch (type) {
        case kSignedShort:
            return 2;
        case kFloat:
        case kIfd:
            return 4;
        case kSignedRational:
        case kDouble:
            return 8;
        default:
            return TiffTypeSize(type);
    }
}

constexpr bool IsWiderInFiles(uint32_t type) {
    return StoredTypeSize(type) != TiffTypeSize(type);
}

// The values of an image's tags that are wider in files, in host order.
class StoredValues {
  public:
    // Fetches them for the tags of `list`, sorted. A tag that was defined in memory and not stored
    // stays as the buffer has it. Nothing, with the failure code set (1; 6 for a value that can't
    // be read, or values out of proportion to the file), when that fails.
    static std::optional<StoredValues> Read(const ImageSource& source, const TagBuffer& tags,
                                            std::span<const ListedTag> list);

    // Element `index` of the list on its way into a file.
    [[nodiscard]] TagToStore Widen(const TagToStore& tag, size_t index) const;

  private:
    // Of one tag of the list: where its value stands in the file, then in values_.
    struct Place {
        uint32_t InFile;
        uint32_t At;
        uint32_t Bytes;  // 0 for a tag that isn't wider, or isn't stored
    };
    class Reader;

    OwnedBlock places_;  // none when no tag is wider
    OwnedBlock values_;
};

}  // namespace vellim
