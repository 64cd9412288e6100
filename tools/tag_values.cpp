// Tag values in words and in JSON.
//
// The library knows the widths of BYTE, ASCII, SHORT, LONG, RATIONAL and SLONG, and takes every
// other type as bytes. For SSHORT, SRATIONAL, FLOAT, DOUBLE and IFD it therefore holds `count`
// bytes rather than `count` elements: less than the value, so that theirs is read from the file.
#include "tag_values.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>

#include "handles.h"
#include "stored_directory.h"
#include "tag_names.h"
#include "text.h"
#include "vellim/streams.h"
#include "vellim/tags.h"

namespace vellim::tool {
namespace {

constexpr uint32_t kSignedByte = 6;
constexpr uint32_t kUndefined = 7;

// Elements and characters shown to people before "...".
constexpr size_t kPlainElements = 8;
constexpr size_t kPlainCharacters = 160;
// Elements given to programs. Strip tables of tall pages fit; colour profiles don't.
constexpr size_t kJsonElements = 8192;

// Bytes an element, 0 for types that the library doesn't hold in full.
size_t ElementBytes(uint32_t type) {
    switch (type) {
        case TIFF_TYPE_BYTE:
        case TIFF_TYPE_ASCII:
        case kSignedByte:
        case kUndefined:
            return 1;
        case TIFF_TYPE_SHORT:
            return 2;
        case TIFF_TYPE_LONG:
        case TIFF_TYPE_OFFSET:
            return 4;
        case TIFF_TYPE_RATIONAL:
            return 8;
        default:
            return 0;
    }
}

size_t ElementCount(const TagValue& value) {
    const size_t width = ElementBytes(value.type);
    return width == 0 ? 0 : std::min<size_t>(value.count, value.bytes.size() / width);
}

template <typename T>
T Element(const TagValue& value, size_t index, size_t offset = 0) {
    T element{};
    std::memcpy(&element, value.bytes.data() + index * ElementBytes(value.type) + offset,
                sizeof element);
    return element;
}

// A number of any type but RATIONAL.
int64_t Number(const TagValue& value, size_t index) {
    switch (value.type) {
        case kSignedByte:
            return Element<int8_t>(value, index);
        case TIFF_TYPE_SHORT:
            return Element<uint16_t>(value, index);
        case TIFF_TYPE_LONG:
            return Element<uint32_t>(value, index);
        case TIFF_TYPE_OFFSET:
            return Element<int32_t>(value, index);
        default:
            return Element<uint8_t>(value, index);
    }
}

Rational RationalAt(const TagValue& value, size_t index) {
    return {Element<uint32_t>(value, index), Element<uint32_t>(value, index, 4)};
}

std::vector<std::string_view> Strings(const TagValue& value) {
    const auto* text = reinterpret_cast<const char*>(value.bytes.data());
    return SplitAtZeros({text, ElementCount(value)});
}

std::string PlainStrings(const TagValue& value) {
    std::string words;
    for (const std::string_view text : Strings(value)) {
        words += (words.empty() ? "\"" : " \"") + Printable(text) + "\"";
    }
    return words.empty() ? "\"\"" : Shorten(words, kPlainCharacters);
}

}  // namespace

std::optional<TagValue> ReadTag(TiffFileHandle file, int32_t image, uint32_t tag) {
    TagValue value;
    value.tag = tag;
    GlobalHandle handle = 0;
    if (GetTiffImageInfoBuffer(file, image, tag, &handle, &value.type, &value.count) == 0) {
        return {};
    }
    const OwnedBlock block(handle);
    const LockedBlock bytes(handle);
    if (bytes.Bytes() != nullptr) {
        value.bytes.assign(bytes.Bytes(), bytes.Bytes() + GlobalSize(handle));
    }
    return value;
}

std::vector<uint32_t> ReadTagNumbers(TiffFileHandle file, int32_t image) {
    std::vector<uint32_t> numbers;
    const auto list = ReadTag(file, image, TIFF_ALL_TAGS);
    if (!list) return numbers;
    for (size_t i = 0; i < ElementCount(*list); ++i)
        numbers.push_back(Element<uint32_t>(*list, i));
    return numbers;
}

std::optional<uint32_t> ReadNumber(TiffFileHandle file, int32_t image, uint32_t tag) {
    const auto value = ReadTag(file, image, tag);
    if (!value || ElementCount(*value) == 0) return {};
    if (value->type != TIFF_TYPE_BYTE && value->type != TIFF_TYPE_SHORT &&
        value->type != TIFF_TYPE_LONG) {
        return {};
    }
    return static_cast<uint32_t>(Number(*value, 0));
}

std::optional<Rational> ReadRational(TiffFileHandle file, int32_t image, uint32_t tag) {
    const auto value = ReadTag(file, image, tag);
    if (!value || value->type != TIFF_TYPE_RATIONAL || ElementCount(*value) == 0) return {};
    return RationalAt(*value, 0);
}

std::string ReadText(TiffFileHandle file, int32_t image, uint32_t tag) {
    const auto value = ReadTag(file, image, tag);
    if (!value || value->type != TIFF_TYPE_ASCII) return {};
    const auto strings = Strings(*value);
    return strings.empty() ? std::string() : std::string(strings.front());
}

std::vector<std::string> ElementsInWords(const TagValue& value, size_t most) {
    std::vector<std::string> words;
    if (value.type == TIFF_TYPE_ASCII) {
        for (const std::string_view text : Strings(value))
            words.emplace_back(text);
        words.resize(std::min(words.size(), most));
        return words;
    }
    const size_t count = std::min(ElementCount(value), most);
    for (size_t i = 0; i < count; ++i) {
        if (value.type == TIFF_TYPE_RATIONAL) {
            const Rational ratio = RationalAt(value, i);
            words.push_back(std::to_string(ratio.numerator) + "/" +
                            std::to_string(ratio.denominator));
        } else {
            words.push_back(std::to_string(Number(value, i)));
        }
    }
    return words;
}

std::vector<std::string> ElementsInWords(TiffFileHandle file, int32_t image, const TagValue& value,
                                         size_t most) {
    if (ElementBytes(value.type) != 0) return ElementsInWords(value, most);
    auto words = StoredDirectories(file).WideElements(image, value.tag);
    words.resize(std::min(words.size(), most));
    return words;
}

namespace {

// On one line for people: long ones are shortened.
std::string PlainValue(TiffFileHandle file, int32_t image, const TagValue& value) {
    if (value.type == TIFF_TYPE_ASCII) return PlainStrings(value);
    const auto elements = ElementsInWords(file, image, value, kPlainElements + 1);
    if (elements.empty() && value.count > 0) return "(not held in full)";
    std::string words;
    for (size_t i = 0; i < elements.size(); ++i) {
        words += i == 0 ? "" : " ";
        words += i < kPlainElements ? elements[i] : "...";
    }
    return words;
}

}  // namespace

std::string TagLine(TiffFileHandle file, int32_t image, const TagValue& value) {
    constexpr size_t kHeadCharacters = 96;
    const std::string_view name = TagName(value.tag);
    std::array<char, kHeadCharacters> head{};
    std::snprintf(head.data(), head.size(), "  %5u %-28.*s %-9s %7u  ", value.tag,
                  static_cast<int>(name.empty() ? 1 : name.size()),
                  name.empty() ? "-" : name.data(), TypeName(value.type).c_str(), value.count);
    return head.data() + PlainValue(file, image, value);
}

Json JsonValue(const TagValue& value) {
    if (ElementBytes(value.type) == 0) return nullptr;
    Json values = Json::array();
    if (value.type == TIFF_TYPE_ASCII) {
        for (const std::string_view text : Strings(value))
            values.push_back(ToUtf8(text));
        return values;
    }
    const size_t count = std::min(ElementCount(value), kJsonElements);
    for (size_t i = 0; i < count; ++i) {
        if (value.type == TIFF_TYPE_RATIONAL) {
            const Rational ratio = RationalAt(value, i);
            values.push_back(Json::array({ratio.numerator, ratio.denominator}));
        } else {
            values.push_back(Number(value, i));
        }
    }
    return values;
}

}  // namespace vellim::tool
