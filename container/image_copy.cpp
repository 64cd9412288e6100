// The directory is put together in memory, with all offsets as they will be, and written in one
// piece. For that the size of everything before the data has to be known, and by the way of SHORT
// offsets that turn out too narrow it depends on where the data goes: such a tag becomes one of
// LONGs, and the sizes are computed again. That ends, since a tag widens only once.

#include "container/image_copy.h"

#include <limits>

#include "container/directory_layout.h"
#include "container/directory_writer.h"
#include "container/failure.h"
#include "container/image_data.h"
#include "container/stored_values.h"

namespace vellim {
namespace {

constexpr uint64_t kLastPosition = std::numeric_limits<int32_t>::max();

// What goes into the other file.
struct ImageParts {
    ImageParts(const TagBuffer& tags, std::span<const ListedTag> list, StoredValues wide,
               ImageData data)
        : Tags(tags), List(list), Wide(std::move(wide)), Data(std::move(data)) {}

    const TagBuffer& Tags;
    std::span<const ListedTag> List;
    StoredValues Wide;
    ImageData Data;

    [[nodiscard]] TagToStore TagAt(size_t index) const {
        const TagToStore held = TagToStoreOf(*Tags.RecordAt(List[index].Place));
        return Data.Relocated(Wide.Widen(held, index));
    }
};

// An image's parts, and what they are held in. None, with the failure code set, for an image that
// can't be copied.
struct LoadedParts {
    explicit LoadedParts(const ImageSource& source)
        : Tags(TagBufferOf(source.File, source.Image)),
          ListBlock(Tags ? SortedTagList(Tags, Count) : Fail(TIFF_NO_MEMORY, OwnedBlock())),
          ListLock(ListBlock.Get()) {
        if (!ListLock) return;
        const std::span<const ListedTag> list(ListLock.As<ListedTag>(), Count);
        auto data = ImageData::Find(source, Tags);
        if (!data) return;
        auto wide = StoredValues::Read(source, Tags, list);
        if (!wide) return;
        Parts.emplace(Tags, list, std::move(*wide), std::move(*data));
    }

    uint32_t Count = 0;
    TagBuffer Tags;
    OwnedBlock ListBlock;
    LockedBlock ListLock;
    std::optional<ImageParts> Parts;
};

// Bytes of directory and values.
std::optional<uint64_t> HeadBytes(const ImageParts& parts) {
    uint64_t bytes = DirectoryBytes(static_cast<uint32_t>(parts.List.size()));
    for (size_t i = 0; i < parts.List.size(); i++) {
        const TagToStore tag = parts.TagAt(i);
        if (uint64_t{tag.Count} * TiffTypeSize(tag.Type) > kLongestStoredValue)
            return Fail(TIFF_BAD_TAG, std::nullopt);
        bytes += tag.AreaBytes();
    }
    return bytes;
}

std::optional<uint64_t> SettleHeadBytes(ImageParts& parts, uint32_t at) {
    std::optional<uint64_t> bytes = HeadBytes(parts);
    while (bytes && parts.Data.WidenOffsets(at + *bytes))
        bytes = HeadBytes(parts);
    return bytes;
}

void PutHead(uint8_t* to, const ImageParts& parts, const CopyTarget& target, uint32_t link) {
    const auto count = static_cast<uint32_t>(parts.List.size());
    PutShort(to, static_cast<uint16_t>(count), target.ByteOrder);
    uint8_t* entry = to + kEntryCountBytes;
    uint32_t valueAt = DirectoryBytes(count);
    for (uint32_t i = 0; i < count; i++, entry += kEntryBytes) {
        const TagToStore tag = parts.TagAt(i);
        PutEntry(entry, tag, target.At + valueAt, target.ByteOrder);
        if (!tag.IsInline()) PutValue(to + valueAt, tag, target.ByteOrder);
        valueAt += tag.AreaBytes();
    }
    PutLong(entry, link, target.ByteOrder);
}

bool WriteHead(ImageParts& parts, const CopyTarget& target, uint32_t bytes) {
    const uint32_t dataAt = target.At + bytes;
    parts.Data.Place(dataAt);
    const uint32_t end = dataAt + static_cast<uint32_t>(parts.Data.Bytes());
    const OwnedBlock block(GlobalAlloc(GHND, bytes));
    const LockedBlock head(block.Get());
    if (!head) return Fail(TIFF_NO_MEMORY, false);
    PutHead(head.As<uint8_t>(), parts, target, target.Followed ? end : 0);
    return LongWrite(target.Stream, TIFF_TYPE_BYTE, bytes, head.As<void>(), TIFF_LITTLE_ENDIAN,
                     TIFF_FILL_MSB_FIRST) != 0;
}

}  // namespace

uint64_t CopyAllowance(uint64_t sourceBytes) {
    constexpr uint64_t kUnquestionedBytes = uint64_t{1} << 24U;
    constexpr uint64_t kHonestExcess = 16;
    return kUnquestionedBytes + kHonestExcess * sourceBytes;
}

bool CanBeCopied(const ImageSource& source) {
    const LoadedParts loaded(source);
    return loaded.Parts && HeadBytes(*loaded.Parts);
}

std::optional<CopiedImage> WriteImageCopy(const ImageSource& source, const CopyTarget& target,
                                          uint64_t& allowance) {
    LoadedParts loaded(source);
    if (!loaded.Parts) return std::nullopt;
    ImageParts& parts = *loaded.Parts;
    const auto headBytes = SettleHeadBytes(parts, target.At);
    if (!headBytes) return std::nullopt;
    const uint64_t bytes = *headBytes + parts.Data.Bytes();
    if (target.At + bytes > kLastPosition || bytes > allowance)
        return Fail(TIFF_IO_ERROR, std::nullopt);
    allowance -= bytes;

    const auto written = static_cast<uint32_t>(*headBytes);
    if (!WriteHead(parts, target, written) || !parts.Data.Copy(source.Stream, target.Stream))
        return std::nullopt;
    const auto entries = static_cast<uint32_t>(parts.List.size());
    return CopiedImage{.LinkOffset = target.At + DirectoryBytes(entries) - kLinkBytes,
                       .TagBytes = loaded.Tags.Head().Used,
                       .End = target.At + static_cast<uint32_t>(bytes)};
}

}  // namespace vellim
