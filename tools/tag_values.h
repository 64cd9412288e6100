// One tag of an image in memory, with its value whole.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "vellim/base.h"

namespace vellim::tool {

using Json = nlohmann::ordered_json;

struct TagValue {
    uint32_t tag = 0;
    uint32_t type = 0;
    uint32_t count = 0;
    std::vector<uint8_t> bytes;  // elements in host order
};

// The tag, or nothing if the image doesn't have it.
std::optional<TagValue> ReadTag(TiffFileHandle file, int32_t image, uint32_t tag);

// The tag numbers in the order in which the image holds them.
std::vector<uint32_t> ReadTagNumbers(TiffFileHandle file, int32_t image);

// The first element of a BYTE, SHORT or LONG tag.
std::optional<uint32_t> ReadNumber(TiffFileHandle file, int32_t image, uint32_t tag);

struct Rational {
    uint32_t numerator = 0;
    uint32_t denominator = 1;
};

// The first element of a RATIONAL tag.
std::optional<Rational> ReadRational(TiffFileHandle file, int32_t image, uint32_t tag);

// The first string of an ASCII tag, as stored; empty if there is none.
std::string ReadText(TiffFileHandle file, int32_t image, uint32_t tag);

// The tag of an image on one line for people: number, name, type, count, value. Long values are
// shortened.
std::string TagLine(TiffFileHandle file, int32_t image, const TagValue& value);

// The first `most` elements, each in words: numbers, "300/1", strings as stored. None for a type
// whose elements the library doesn't hold in full.
std::vector<std::string> ElementsInWords(const TagValue& value, size_t most);

// The same, with elements of those types read from the file of `image`, if that is on a disk.
std::vector<std::string> ElementsInWords(TiffFileHandle file, int32_t image, const TagValue& value,
                                         size_t most);

// The value for programs: an array of numbers, of [numerator, denominator] pairs, or of strings;
// null for a type whose elements the library doesn't hold in full.
Json JsonValue(const TagValue& value);

}  // namespace vellim::tool
