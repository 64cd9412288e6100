// Windows-1252: what the bytes of text stand for.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace vellim {

inline constexpr uint8_t kFirstCharacter = 32;  // bytes below are drawn as nothing
inline constexpr uint8_t kDefaultCharacter = 127;

// The bytes from 0x80 to 0x9F; 0 where the code page has none.
inline constexpr std::array<uint16_t, 32> kWindows1252High = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,  // 80
    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0,      0x017D, 0,       // 88
    0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,  // 90
    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178,  // 98
};

// The character's Unicode number; 0 for a byte that is none.
constexpr uint32_t CodePointOf(uint8_t byte) {
    constexpr uint8_t high = 0x80;
    if (byte < kFirstCharacter || byte == kDefaultCharacter) return 0;
    if (byte < high || byte >= high + kWindows1252High.size()) return byte;
    return kWindows1252High[byte - high];
}

inline std::string Utf8Of(std::string_view windows1252) {
    constexpr uint32_t oneByte = 0x80, twoBytes = 0x800, sixBits = 0x3F;
    std::string text;
    for (const char c : windows1252) {
        const uint32_t code = CodePointOf(static_cast<uint8_t>(c));
        const auto last = static_cast<char>(0x80U | (code & sixBits));
        if (code == 0) continue;
        if (code < oneByte) {
            text += static_cast<char>(code);
            continue;
        }
        if (code < twoBytes) {
            text += static_cast<char>(0xC0U | code >> 6U);
        } else {
            text += static_cast<char>(0xE0U | code >> 12U);
            text += static_cast<char>(0x80U | (code >> 6U & sixBits));
        }
        text += last;
    }
    return text;
}

}  // namespace vellim
