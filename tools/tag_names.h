// Names of tags, field types, compressions and photometric interpretations.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vellim::tool {

// "ImageWidth"; empty for a tag without a known name.
std::string_view TagName(uint32_t tag);

// "ImageWidth (256)"; "tag 40000".
std::string TagInWords(uint32_t tag);

// The tag that a person means by its number or by its name in any case; 0: none.
uint32_t FindTag(std::string_view numberOrName);

// The same for a field type of TIFF 6.0, section 2: "SHORT" or "3".
uint32_t FindType(std::string_view numberOrName);

// "SHORT"; "type 77" for a type that TIFF 6.0 doesn't have.
std::string TypeName(uint32_t type);

// "Group 4"; "compression 99".
std::string CompressionName(uint32_t compression);

// "white is zero"; "photometric 99".
std::string PhotometricName(uint32_t photometric);

}  // namespace vellim::tool
