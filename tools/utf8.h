// Valid UTF-8 taken apart, character by character.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace vellim::tool {

// Takes the first character off `text`, which is valid UTF-8 and not empty, and gives its code.
inline uint32_t TakeCharacter(std::string_view& text) {
    constexpr uint32_t kContinuationBits = 6;
    constexpr uint32_t kContinuationMask = 0x3F;
    const auto first = static_cast<uint8_t>(text.front());
    const size_t bytes = first < 0x80 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    uint32_t code = bytes == 1 ? first : first & (0x7FU >> bytes);
    for (size_t i = 1; i < bytes; ++i)
        code = code << kContinuationBits | (static_cast<uint8_t>(text[i]) & kContinuationMask);
    text.remove_prefix(bytes);
    return code;
}

}  // namespace vellim::tool
