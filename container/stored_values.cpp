#include "container/stored_values.h"

#include <algorithm>
#include <cstring>

#include "container/failure.h"

namespace vellim {
namespace {

// What entries claim is held against the file before anything is read, as it is when tags are
// loaded: values are shared now and then, so some excess is honest.
constexpr uint64_t kUnquestionedBytes = 1U << 20U;
constexpr uint64_t kHonestExcess = 16;

bool HasWiderTag(const TagBuffer& tags, std::span<const ListedTag> list) {
    return std::ranges::any_of(list, [&](const ListedTag& listed) {
        return IsWiderInFiles(tags.RecordAt(listed.Place)->Head.Type);
    });
}

// Of a signed RATIONAL each half is a number by itself.
constexpr uint32_t StoredSwapUnit(uint32_t type) {
    return type == kSignedRational ? StoredTypeSize(type) / 2 : StoredTypeSize(type);
}

void ReverseUnits(uint8_t* bytes, uint32_t count, uint32_t unit) {
    for (uint32_t at = 0; at + unit <= count; at += unit)
        std::reverse(bytes + at, bytes + at + unit);
}

uint64_t StoredBytes(const TagRecord& record) {
    return uint64_t{record.Head.Count} * StoredTypeSize(record.Head.Type);
}

}  // namespace

class StoredValues::Reader {
  public:
    Reader(const ImageSource& source, const TagBuffer& tags, std::span<const ListedTag> list,
           Place* places)
        : source_(source),
          tags_(tags),
          list_(list),
          places_(places, list.size()),
          window_(source.Stream) {}

    bool FindPlaces();
    [[nodiscard]] std::optional<uint32_t> LayOut();
    bool ReadInto(uint8_t* values);

  private:
    [[nodiscard]] TagRecord RecordOf(size_t index) const {
        return *tags_.RecordAt(list_[index].Place);
    }
    [[nodiscard]] bool IsAdded(size_t index) const {
        return source_.Added != nullptr && source_.Added->Tag == list_[index].Tag;
    }
    [[nodiscard]] bool IsAgain(size_t index) const {
        return index > 0 && list_[index - 1].Tag == list_[index].Tag;
    }
    void Note(const DirectoryEntry& entry, uint64_t entryOffset);

    const ImageSource& source_;
    const TagBuffer& tags_;
    std::span<const ListedTag> list_;
    std::span<Place> places_;
    StreamWindow window_;
    uint16_t byteOrder_ = 0;
};

// Finds the value of a stored entry, if the entry is the one that a listed tag came from. Where a
// tag stands twice, that is the first.
void StoredValues::Reader::Note(const DirectoryEntry& entry, uint64_t entryOffset) {
    const auto listed = std::ranges::lower_bound(list_, uint32_t{entry.Tag}, {}, &ListedTag::Tag);
    if (listed == list_.end() || listed->Tag != entry.Tag) return;
    const auto index = static_cast<size_t>(listed - list_.begin());
    Place& place = places_[index];
    const TagRecord record = RecordOf(index);
    if (place.Bytes != 0 || record.Head.Type != entry.Type || record.Head.Count != entry.Count)
        return;
    if (entry.IsInline() &&
        std::memcmp(record.Value, entry.ValueField.data(), entry.ValueBytes) != 0)
        return;

    place.Bytes = static_cast<uint32_t>(StoredBytes(record));
    // What counts as inline by its bytes in memory may stand elsewhere by its width in the file.
    if (place.Bytes <= kInlineValueBytes) {
        place.InFile = static_cast<uint32_t>(entryOffset) + kValueFieldOffset;
        return;
    }
    place.InFile = entry.ValueOffset();
    if (entry.IsInline() && byteOrder_ == TIFF_BIG_ENDIAN)
        place.InFile = __builtin_bswap32(place.InFile);
}

bool StoredValues::Reader::FindPlaces() {
    const TiffFileAccess file(source_.File);
    if (!file) return Fail(TIFF_IO_ERROR, false);
    byteOrder_ = file->ByteOrder;
    const uint32_t directory = file->Images[source_.Image].DirectoryOffset;
    if (directory == 0) return true;  // never stored
    const auto entryCount = ReadShort(window_, directory, byteOrder_);
    if (!entryCount) return Fail(TIFF_IO_ERROR, false);
    for (uint32_t i = 0; i < *entryCount; i++) {
        const uint64_t offset = EntryOffset(directory, i);
        const auto entry = ReadDirectoryEntry(window_, offset, byteOrder_);
        if (!entry) return false;
        if (IsWiderInFiles(entry->Type)) Note(*entry, offset);
    }
    return true;
}

// Gives every value its place in one block and the bytes of all of them.
std::optional<uint32_t> StoredValues::Reader::LayOut() {
    uint64_t bytes = 0;
    for (size_t i = 0; i < list_.size(); i++) {
        Place& place = places_[i];
        if (IsAgain(i)) {
            place = places_[i - 1];
            continue;
        }
        const TagRecord record = RecordOf(i);
        if (IsAdded(i) && IsWiderInFiles(record.Head.Type))
            place.Bytes = static_cast<uint32_t>(StoredBytes(record));
        place.At = static_cast<uint32_t>(bytes);
        bytes += place.Bytes;
    }
    if (bytes > kUnquestionedBytes && bytes > source_.StreamBytes * kHonestExcess)
        return Fail(TIFF_IO_ERROR, std::nullopt);
    if (bytes > UINT32_MAX) return Fail(TIFF_NO_MEMORY, std::nullopt);
    return static_cast<uint32_t>(bytes);
}

bool StoredValues::Reader::ReadInto(uint8_t* values) {
    for (size_t i = 0; i < list_.size(); i++) {
        Place& place = places_[i];
        uint8_t* value = values + place.At;
        if (place.Bytes == 0) continue;
        if (IsAgain(i)) {
            place = places_[i - 1];
            continue;
        }
        if (IsAdded(i)) {
            std::memcpy(value, source_.Added->Value, place.Bytes);
            continue;
        }
        if (!window_.Copy(place.InFile, value, place.Bytes)) return Fail(TIFF_IO_ERROR, false);
        const TagRecord record = RecordOf(i);
        const bool compared = record.ValueBytes <= kInlineValueBytes;
        if (!compared && std::memcmp(record.Value, value, record.ValueBytes) != 0) {
            place.Bytes = 0;  // the tag was defined anew in memory
            continue;
        }
        if (byteOrder_ == TIFF_BIG_ENDIAN)
            ReverseUnits(value, place.Bytes, StoredSwapUnit(record.Head.Type));
    }
    return true;
}

std::optional<StoredValues> StoredValues::Read(const ImageSource& source, const TagBuffer& tags,
                                               std::span<const ListedTag> list) {
    StoredValues values;
    if (!HasWiderTag(tags, list)) return values;
    values.places_.Reset(GlobalAlloc(GHND, static_cast<uint32_t>(list.size() * sizeof(Place))));
    const LockedBlock places(values.places_.Get());
    if (!places) return Fail(TIFF_NO_MEMORY, std::nullopt);
    Reader reader(source, tags, list, places.As<Place>());
    if (!reader.FindPlaces()) return std::nullopt;
    const std::optional<uint32_t> bytes = reader.LayOut();
    if (!bytes) return std::nullopt;
    values.values_.Reset(GlobalAlloc(GHND, *bytes));
    const LockedBlock block(values.values_.Get());
    if (!block) return Fail(TIFF_NO_MEMORY, std::nullopt);
    if (!reader.ReadInto(block.As<uint8_t>())) return std::nullopt;
    return values;
}

TagToStore StoredValues::Widen(const TagToStore& tag, size_t index) const {
    if (!places_) return tag;
    const LockedBlock places(places_.Get()), values(values_.Get());
    const Place& place = places.As<Place>()[index];
    if (place.Bytes == 0) return tag;
    TagToStore wide = tag;
    wide.Value = values.As<uint8_t>() + place.At;
    wide.ValueBytes = place.Bytes;
    wide.SwapUnit = StoredSwapUnit(tag.Type);
    return wide;
}

}  // namespace vellim
