#include "windows_1252.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "text.h"
#include "utf8.h"

namespace vellim::tool {
namespace {

// Bytes from here to below the second differ from the characters' codes.
constexpr uint32_t kFirstOwnByte = 0x80;
constexpr uint32_t kFirstLatinByte = 0xA0;
constexpr uint32_t kBytes = 0x100;

using OwnCodes = std::array<uint32_t, kFirstLatinByte - kFirstOwnByte>;

// A single high byte is never UTF-8, so that ToUtf8 reads it as Windows-1252.
std::string Utf8OfByte(char byte) {
    return ToUtf8(std::string_view(&byte, 1));
}

OwnCodes MakeOwnCodes() {
    OwnCodes codes{};
    for (uint32_t i = 0; i < codes.size(); ++i) {
        const std::string utf8 = Utf8OfByte(static_cast<char>(kFirstOwnByte + i));
        std::string_view rest = utf8;
        codes[i] = TakeCharacter(rest);
    }
    return codes;
}

// The byte of a character; nothing where there is none.
std::optional<char> ByteOf(uint32_t code) {
    static const OwnCodes kOwnCodes = MakeOwnCodes();
    if (code < kFirstOwnByte || (code >= kFirstLatinByte && code < kBytes)) {
        return static_cast<char>(code);
    }
    const auto* const found = std::find(kOwnCodes.begin(), kOwnCodes.end(), code);
    if (found == kOwnCodes.end()) return {};
    return static_cast<char>(kFirstOwnByte + static_cast<uint32_t>(found - kOwnCodes.begin()));
}

}  // namespace

std::optional<std::string> ToWindows1252(std::string_view utf8, size_t& lost) {
    lost = 0;
    if (ToUtf8(utf8) != utf8) return {};
    std::string bytes;
    while (!utf8.empty()) {
        const auto byte = ByteOf(TakeCharacter(utf8));
        lost += byte ? 0U : 1U;
        bytes += byte.value_or('?');
    }
    return bytes;
}

std::string FromWindows1252(std::string_view bytes) {
    std::string utf8;
    for (const char byte : bytes)
        utf8 += Utf8OfByte(byte);
    return utf8;
}

}  // namespace vellim::tool
