// UTF-8 in the strict sense of RFC 3629 (no overlong forms, no surrogates), and Windows-1252 for
// what isn't: scanner software writes its titles in the code page of its machine.
#include "text.h"

#include <array>
#include <cstdint>
#include <cstdio>

namespace vellim::tool {
namespace {

struct Character {
    uint32_t code = 0;
    size_t bytes = 0;  // 0: not valid UTF-8
};

// The least code that may be written in 1, 2, 3 and 4 bytes.
constexpr std::array<uint32_t, 5> kLeastCode = {0, 0, 0x80, 0x800, 0x10000};

Character ReadCharacter(std::string_view text) {
    const auto first = static_cast<uint8_t>(text[0]);
    if (first < 0x80) return {first, 1};
    const size_t bytes = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC0 || first >= 0xF8 || text.size() < bytes) return {};
    uint32_t code = first & (0x7FU >> bytes);
    for (size_t i = 1; i < bytes; ++i) {
        const auto next = static_cast<uint8_t>(text[i]);
        if ((next & 0xC0U) != 0x80) return {};
        code = code << 6U | (next & 0x3FU);
    }
    const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
    if (code < kLeastCode[bytes] || surrogate || code > 0x10FFFF) return {};
    return {code, bytes};
}

bool IsUtf8(std::string_view text) {
    while (!text.empty()) {
        const Character character = ReadCharacter(text);
        if (character.bytes == 0) return false;
        text.remove_prefix(character.bytes);
    }
    return true;
}

// Bytes 0x80 to 0x9F of Windows-1252. The five that it leaves undefined stay controls.
constexpr std::array<uint16_t, 32> kWindows1252 = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

// `code` is below 0x10000.
void AppendCode(std::string& text, uint32_t code) {
    if (code < 0x80) {
        text += static_cast<char>(code);
        return;
    }
    if (code < 0x800) {
        text += static_cast<char>(0xC0U | code >> 6U);
    } else {
        text += static_cast<char>(0xE0U | code >> 12U);
        text += static_cast<char>(0x80U | (code >> 6U & 0x3FU));
    }
    text += static_cast<char>(0x80U | (code & 0x3FU));
}

bool MovesCursorOrDirection(uint32_t code) {
    const bool control = code < 0x20 || (code >= 0x7F && code <= 0x9F);
    const bool lineBreak = code == 0x2028 || code == 0x2029;
    const bool direction = code == 0x200E || code == 0x200F || (code >= 0x202A && code <= 0x202E) ||
                           (code >= 0x2066 && code <= 0x2069);
    return control || lineBreak || direction;
}

void AppendEscape(std::string& text, uint32_t code) {
    if (code == '\n') {
        text += "\\n";
    } else if (code == '\r') {
        text += "\\r";
    } else if (code == '\t') {
        text += "\\t";
    } else {
        std::array<char, 8> escape{};
        std::snprintf(escape.data(), escape.size(), code < 0x100 ? "\\x%02x" : "\\u%04x", code);
        text += escape.data();
    }
}

}  // namespace

std::string ToUtf8(std::string_view bytes) {
    if (IsUtf8(bytes)) return std::string(bytes);
    std::string text;
    for (const char byte : bytes) {
        const auto code = static_cast<uint8_t>(byte);
        const bool high = code >= 0x80 && code < 0xA0;
        AppendCode(text, high ? kWindows1252[code - 0x80U] : code);
    }
    return text;
}

std::string Printable(std::string_view bytes) {
    const std::string utf8 = ToUtf8(bytes);
    std::string text;
    for (std::string_view rest = utf8; !rest.empty();) {
        const Character character = ReadCharacter(rest);
        if (MovesCursorOrDirection(character.code)) {
            AppendEscape(text, character.code);
        } else {
            text += rest.substr(0, character.bytes);
        }
        rest.remove_prefix(character.bytes);
    }
    return text;
}

std::vector<std::string_view> SplitAtZeros(std::string_view bytes) {
    std::vector<std::string_view> strings;
    while (!bytes.empty() && bytes.back() == '\0')
        bytes.remove_suffix(1);
    while (!bytes.empty()) {
        const size_t end = bytes.find('\0');
        strings.push_back(bytes.substr(0, end));
        bytes.remove_prefix(end == std::string_view::npos ? bytes.size() : end + 1);
    }
    return strings;
}

std::string Shorten(std::string_view utf8, size_t characters) {
    size_t end = 0;
    for (size_t count = 0; end < utf8.size(); ++count) {
        if (count == characters) return std::string(utf8.substr(0, end)) + "...";
        const size_t bytes = ReadCharacter(utf8.substr(end)).bytes;
        end += bytes == 0 ? 1 : bytes;
    }
    return std::string(utf8);
}

}  // namespace vellim::tool
