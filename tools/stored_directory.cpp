#include "stored_directory.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>

#include "tag_rules.h"
#include "vellim/files.h"
#include "vellim/platform.h"
#include "vellim/streams.h"

namespace vellim::tool {
namespace {

// Header and entry, in bytes.
constexpr uint32_t kFirstLink = 4;
constexpr uint32_t kCountBytes = 2;
constexpr uint32_t kEntryBytes = 12;
constexpr uint32_t kTypeInEntry = 2;
constexpr uint32_t kCountInEntry = 4;
constexpr uint32_t kValueInEntry = 8;
constexpr uint32_t kInlineBytes = 4;
constexpr uint32_t kMostElements = 32767;  // the library takes in no more of these

// What the elements of a type are made of: numbers of `unitBytes`, `units` of them.
struct ElementForm {
    uint32_t unitBytes = 0;
    uint32_t units = 0;
};

ElementForm FormOf(uint32_t type) {
    switch (type) {
        case kFieldSignedShort:
            return {2, 1};
        case kFieldFloat:
        case kFieldDirectory:
            return {4, 1};
        case kFieldSignedRational:
            return {4, 2};
        case kFieldDouble:
            return {8, 1};
        default:
            return {};
    }
}

template <typename T>
std::string InWords(const uint8_t* bytes) {
    constexpr size_t kLongestNumber = 32;
    T number{};
    std::memcpy(&number, bytes, sizeof number);
    std::array<char, kLongestNumber> digits{};
    const auto written = std::to_chars(digits.data(), digits.data() + digits.size(), number);
    return {digits.data(), written.ptr};
}

std::string ElementInWords(uint32_t type, const uint8_t* bytes) {
    switch (type) {
        case kFieldSignedShort:
            return InWords<int16_t>(bytes);
        case kFieldSignedRational:
            return InWords<int32_t>(bytes) + "/" + InWords<int32_t>(bytes + sizeof(int32_t));
        case kFieldFloat:
            return InWords<float>(bytes);
        case kFieldDouble:
            return InWords<double>(bytes);
        default:
            return InWords<uint32_t>(bytes);
    }
}

}  // namespace

StoredDirectories::StoredDirectories(TiffFileHandle file) {
    TiffFileInfo info = {};
    const bool onDisk = GetTiffFileInfo(file, &info) != 0 && info.PathName[0] != '\0';
    bigEndian_ = info.ByteOrder == TIFF_BIG_ENDIAN;
    if (onDisk) stream_ = OpenFile(info.PathName, nullptr, OF_READ);
}

StoredDirectories::~StoredDirectories() {
    if (stream_ > 0) _lclose(stream_);
}

bool StoredDirectories::ReadAt(uint64_t place, uint8_t* bytes, uint32_t count) const {
    return stream_ > 0 && place <= INT32_MAX &&
           _llseek(stream_, static_cast<int32_t>(place), 0) >= 0 &&
           _lread(stream_, bytes, count) == static_cast<int32_t>(count);
}

uint32_t StoredDirectories::ShortAt(uint64_t place) const {
    std::array<uint8_t, 2> bytes{};
    if (!ReadAt(place, bytes.data(), bytes.size())) return 0;
    if (!bigEndian_) std::reverse(bytes.begin(), bytes.end());
    return uint32_t{bytes[0]} << 8U | bytes[1];
}

uint32_t StoredDirectories::LongAt(uint64_t place) const {
    const uint32_t first = ShortAt(place);
    const uint32_t second = ShortAt(place + 2);
    return bigEndian_ ? first << 16U | second : second << 16U | first;
}

uint32_t StoredDirectories::First() const {
    return LongAt(kFirstLink);
}

uint32_t StoredDirectories::Next(uint32_t directory) const {
    return LongAt(uint64_t{directory} + kCountBytes + uint64_t{ShortAt(directory)} * kEntryBytes);
}

std::vector<std::string> StoredDirectories::WideElements(int32_t image, uint32_t tag) const {
    uint32_t directory = First();
    for (int32_t before = 0; before < image && directory != 0; ++before)
        directory = Next(directory);
    const uint32_t entries = directory == 0 ? 0 : ShortAt(directory);
    for (uint32_t i = 0; i < entries; ++i) {
        const uint64_t entry = uint64_t{directory} + kCountBytes + uint64_t{i} * kEntryBytes;
        if (ShortAt(entry) == tag) return ElementsOf(entry);
    }
    return {};
}

std::vector<std::string> StoredDirectories::ElementsOf(uint64_t entry) const {
    const uint32_t type = ShortAt(entry + kTypeInEntry);
    const uint32_t count = LongAt(entry + kCountInEntry);
    const ElementForm form = FormOf(type);
    if (form.units == 0 || count > kMostElements) return {};
    const uint32_t width = form.unitBytes * form.units;
    const uint64_t place = entry + kValueInEntry;
    std::vector<uint8_t> bytes(size_t{count} * width);
    if (!ReadAt(bytes.size() <= kInlineBytes ? place : LongAt(place), bytes.data(),
                static_cast<uint32_t>(bytes.size()))) {
        return {};
    }
    std::vector<std::string> words;
    for (uint8_t* element = bytes.data(); words.size() < count; element += width) {
        for (uint8_t* unit = element; bigEndian_ && unit < element + width; unit += form.unitBytes)
            std::reverse(unit, unit + form.unitBytes);
        words.push_back(ElementInWords(type, element));
    }
    return words;
}

}  // namespace vellim::tool
