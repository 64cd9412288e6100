// Each element is parsed in full or refused: no digits left over, no number cut to its type.
//
// TIFF 6.0 wants 7-bit ASCII in texts. What is typed in another script is stored as it comes, which
// is UTF-8 on today's systems, and read back as such by `info` and by most programs.
#include "tag_input.h"

#include <charconv>
#include <cstring>
#include <limits>
#include <numeric>
#include <string_view>

#include "tag_names.h"
#include "tag_rules.h"
#include "vellim/streams.h"

namespace vellim::tool {
namespace {

constexpr int kDecimal = 10;
constexpr int kHexadecimal = 16;

template <typename T>
void Append(std::vector<uint8_t>& bytes, T element) {
    const size_t end = bytes.size();
    bytes.resize(end + sizeof element);
    std::memcpy(bytes.data() + end, &element, sizeof element);
}

template <typename T>
std::optional<T> ParseInteger(std::string_view text) {
    const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
    if (hexadecimal) text.remove_prefix(2);
    T number = 0;
    const char* end = text.data() + text.size();
    const auto [rest, error] =
        std::from_chars(text.data(), end, number, hexadecimal ? kHexadecimal : kDecimal);
    if (error != std::errc() || rest != end || (hexadecimal && number < 0)) return {};
    return number;
}

template <typename T>
bool AppendInteger(std::string_view text, std::vector<uint8_t>& bytes) {
    const auto number = ParseInteger<T>(text);
    if (number) Append(bytes, *number);
    return number.has_value();
}

template <typename T>
bool AppendReal(std::string_view text, std::vector<uint8_t>& bytes) {
    T number = 0;
    const char* end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || rest != end) return false;
    Append(bytes, number);
    return true;
}

template <typename T>
struct Ratio {
    T numerator = 0;
    T denominator = 1;
};

// "2.54" as 127/50. Digits for which a numerator or a denominator has no room are left out.
template <typename T>
std::optional<Ratio<T>> ParseDecimal(std::string_view text) {
    constexpr int64_t most = std::numeric_limits<T>::max();
    const bool negative = std::is_signed_v<T> && text.starts_with('-');
    if (negative) text.remove_prefix(1);
    int64_t numerator = 0;
    int64_t denominator = 1;
    bool behindPoint = false;
    bool full = false;
    if (text.empty() || text == ".") return {};
    for (const char digit : text) {
        if (digit == '.' && !behindPoint) {
            behindPoint = true;
            continue;
        }
        if (digit < '0' || digit > '9') return {};
        const int64_t longer = numerator * kDecimal + (digit - '0');
        full = full || longer > most || (behindPoint && denominator * kDecimal > most);
        if (full && !behindPoint) return {};
        if (full) continue;
        numerator = longer;
        if (behindPoint) denominator *= kDecimal;
    }
    const int64_t divisor = std::gcd(numerator, denominator);
    if (negative) numerator = -numerator;
    return Ratio<T>{static_cast<T>(numerator / divisor), static_cast<T>(denominator / divisor)};
}

template <typename T>
std::optional<Ratio<T>> ParseRatio(std::string_view text) {
    const size_t slash = text.find('/');
    if (slash == std::string_view::npos) return ParseDecimal<T>(text);
    const auto numerator = ParseInteger<T>(text.substr(0, slash));
    const auto denominator = ParseInteger<T>(text.substr(slash + 1));
    if (!numerator || !denominator || *denominator == 0) return {};
    return Ratio<T>{*numerator, *denominator};
}

template <typename T>
bool AppendRatio(std::string_view text, std::vector<uint8_t>& bytes) {
    const auto ratio = ParseRatio<T>(text);
    if (!ratio) return false;
    Append(bytes, ratio->numerator);
    Append(bytes, ratio->denominator);
    return true;
}

bool AppendText(std::string_view text, std::vector<uint8_t>& bytes) {
    bytes.insert(bytes.end(), text.begin(), text.end());
    bytes.push_back(0);
    return true;
}

using Append1 = bool (*)(std::string_view text, std::vector<uint8_t>& bytes);

// How an element of a type is parsed; null for a type that TIFF 6.0 doesn't have.
Append1 ParserOf(uint32_t type) {
    switch (type) {
        case TIFF_TYPE_BYTE:
        case kFieldUndefined:
            return AppendInteger<uint8_t>;
        case TIFF_TYPE_ASCII:
            return AppendText;
        case TIFF_TYPE_SHORT:
            return AppendInteger<uint16_t>;
        case TIFF_TYPE_LONG:
        case kFieldDirectory:
            return AppendInteger<uint32_t>;
        case TIFF_TYPE_RATIONAL:
            return AppendRatio<uint32_t>;
        case kFieldSignedByte:
            return AppendInteger<int8_t>;
        case kFieldSignedShort:
            return AppendInteger<int16_t>;
        case kFieldSignedLong:
            return AppendInteger<int32_t>;
        case kFieldSignedRational:
            return AppendRatio<int32_t>;
        case kFieldFloat:
            return AppendReal<float>;
        case kFieldDouble:
            return AppendReal<double>;
        default:
            return nullptr;
    }
}

}  // namespace

std::optional<TagValue> ParseTagValue(uint32_t tag, uint32_t type,
                                      const std::vector<std::string>& words, std::string& why) {
    TagValue value;
    value.tag = tag;
    value.type = type;
    const Append1 append = ParserOf(type);
    if (append == nullptr) {
        why = "values of " + TypeName(type) + " can't be told";
        return {};
    }
    for (const std::string& word : words) {
        if (!append(word, value.bytes)) {
            why = "\"" + word + "\" is no value of the type " + TypeName(type);
            return {};
        }
    }
    const bool text = type == TIFF_TYPE_ASCII;
    value.count = static_cast<uint32_t>(text ? value.bytes.size() : words.size());
    if (value.bytes.size() <= kMostValueBytes) return value;
    why = "a value takes at most " + std::to_string(kMostValueBytes) + " bytes";
    return {};
}

}  // namespace vellim::tool
