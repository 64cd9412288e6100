// Letters with accents stand in Unicode as pairs, a capital and its small letter, and in runs of
// such pairs with one base letter; all else is told range by range.
#include "fax_text.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>

#include "text.h"
#include "utf8.h"

namespace vellim::tool {
namespace {

struct LetterRun {
    uint32_t first;
    uint32_t pairs;
    std::string_view capital;
    std::string_view small;
};

// Latin Extended-A, -B and Additional.
constexpr auto kLetterRuns = std::to_array<LetterRun>({
    {0x100, 3, "A", "a"},  {0x106, 4, "C", "c"},  {0x10E, 2, "D", "d"},   {0x112, 5, "E", "e"},
    {0x11C, 4, "G", "g"},  {0x124, 2, "H", "h"},  {0x128, 5, "I", "i"},   {0x132, 1, "IJ", "ij"},
    {0x134, 1, "J", "j"},  {0x136, 1, "K", "k"},  {0x139, 5, "L", "l"},   {0x143, 3, "N", "n"},
    {0x14A, 1, "N", "n"},  {0x14C, 3, "O", "o"},  {0x152, 1, "OE", "oe"}, {0x154, 3, "R", "r"},
    {0x15A, 4, "S", "s"},  {0x162, 3, "T", "t"},  {0x168, 6, "U", "u"},   {0x174, 1, "W", "w"},
    {0x176, 1, "Y", "y"},  {0x179, 3, "Z", "z"},  {0x1CD, 1, "A", "a"},   {0x1CF, 1, "I", "i"},
    {0x1D1, 1, "O", "o"},  {0x1D3, 5, "U", "u"},  {0x1E6, 1, "G", "g"},   {0x1E8, 1, "K", "k"},
    {0x1EA, 2, "O", "o"},  {0x1F8, 1, "N", "n"},  {0x200, 2, "A", "a"},   {0x204, 2, "E", "e"},
    {0x208, 2, "I", "i"},  {0x20C, 2, "O", "o"},  {0x210, 2, "R", "r"},   {0x214, 2, "U", "u"},
    {0x218, 1, "S", "s"},  {0x21A, 1, "T", "t"},  {0x21E, 1, "H", "h"},   {0x226, 1, "A", "a"},
    {0x228, 1, "E", "e"},  {0x22A, 4, "O", "o"},  {0x232, 1, "Y", "y"},   {0x1E00, 1, "A", "a"},
    {0x1E02, 3, "B", "b"}, {0x1E08, 1, "C", "c"}, {0x1E0A, 5, "D", "d"},  {0x1E14, 5, "E", "e"},
    {0x1E1E, 1, "F", "f"}, {0x1E20, 1, "G", "g"}, {0x1E22, 5, "H", "h"},  {0x1E2C, 2, "I", "i"},
    {0x1E30, 3, "K", "k"}, {0x1E36, 4, "L", "l"}, {0x1E3E, 3, "M", "m"},  {0x1E44, 4, "N", "n"},
    {0x1E4C, 4, "O", "o"}, {0x1E54, 2, "P", "p"}, {0x1E58, 4, "R", "r"},  {0x1E60, 5, "S", "s"},
    {0x1E6A, 4, "T", "t"}, {0x1E72, 5, "U", "u"}, {0x1E7C, 2, "V", "v"},  {0x1E80, 5, "W", "w"},
    {0x1E8A, 2, "X", "x"}, {0x1E8E, 1, "Y", "y"}, {0x1E90, 3, "Z", "z"},  {0x1EA0, 12, "A", "a"},
    {0x1EB8, 8, "E", "e"}, {0x1EC8, 2, "I", "i"}, {0x1ECA, 1, "I", "i"},  {0x1ECC, 12, "O", "o"},
    {0x1EE4, 7, "U", "u"}, {0x1EF2, 4, "Y", "y"},
});

// 0xA0 to 0xFF; null for a sign that nothing stands for. Raised digits and fractions are set off,
// so that no number in front of them becomes another; the space goes where there is none.
constexpr uint32_t kFirstLatin1 = 0xA0;
constexpr auto kLatin1 = std::to_array<const char*>(
    {" ",     "!",  "c",   "GBP", nullptr, "JPY",  "|",    "Sec.", "\"", "(c)", "a",  "<<",
     nullptr, "",   "(R)", "-",   "deg",   "+/-",  "^2",   "^3",   "'",  "u",   "P",  ".",
     ",",     "^1", "o",   ">>",  " 1/4",  " 1/2", " 3/4", "?",    "A",  "A",   "A",  "A",
     "A",     "A",  "AE",  "C",   "E",     "E",    "E",    "E",    "I",  "I",   "I",  "I",
     "D",     "N",  "O",   "O",   "O",     "O",    "O",    "x",    "O",  "U",   "U",  "U",
     "U",     "Y",  "Th",  "ss",  "a",     "a",    "a",    "a",    "a",  "a",   "ae", "c",
     "e",     "e",  "e",   "e",   "i",     "i",    "i",    "i",    "d",  "n",   "o",  "o",
     "o",     "o",  "o",   "/",   "o",     "u",    "u",    "u",    "u",  "y",   "th", "y"});

struct Signs {
    uint32_t first;
    uint32_t last;
    std::string_view text;
};

constexpr auto kSigns = std::to_array<Signs>({
    {0x138, 0x138, "k"},      {0x149, 0x149, "'n"},     {0x178, 0x178, "Y"},
    {0x17F, 0x17F, "s"},      {0x192, 0x192, "f"},      {0x2B9, 0x2B9, "'"},
    {0x2BB, 0x2BD, "'"},      {0x2C6, 0x2C6, "^"},      {0x2DC, 0x2DC, "~"},
    {0x300, 0x36F, ""},  // accents behind their letter
    {0x1E9E, 0x1E9E, "SS"},   {0x2000, 0x200A, " "},    {0x200B, 0x200F, ""},
    {0x2010, 0x2013, "-"},    {0x2014, 0x2015, "--"},   {0x2018, 0x201B, "'"},
    {0x201C, 0x201F, "\""},   {0x2020, 0x2020, "+"},    {0x2021, 0x2021, "++"},
    {0x2022, 0x2022, "*"},    {0x2023, 0x2023, ">"},    {0x2024, 0x2024, "."},
    {0x2025, 0x2025, ".."},   {0x2026, 0x2026, "..."},  {0x2027, 0x2027, "."},
    {0x2028, 0x2029, "\n"},   {0x202A, 0x202E, ""},     {0x202F, 0x202F, " "},
    {0x2030, 0x2030, "o/oo"}, {0x2032, 0x2032, "'"},    {0x2033, 0x2033, "\""},
    {0x2039, 0x2039, "<"},    {0x203A, 0x203A, ">"},    {0x203C, 0x203C, "!!"},
    {0x2043, 0x2043, "-"},    {0x2044, 0x2044, "/"},    {0x205F, 0x205F, " "},
    {0x2060, 0x206F, ""},     {0x2070, 0x2070, "^0"},   {0x2074, 0x2074, "^4"},
    {0x2075, 0x2075, "^5"},   {0x2076, 0x2076, "^6"},   {0x2077, 0x2077, "^7"},
    {0x2078, 0x2078, "^8"},   {0x2079, 0x2079, "^9"},   {0x2080, 0x2080, "0"},
    {0x2081, 0x2081, "1"},    {0x2082, 0x2082, "2"},    {0x2083, 0x2083, "3"},
    {0x2084, 0x2084, "4"},    {0x2085, 0x2085, "5"},    {0x2086, 0x2086, "6"},
    {0x2087, 0x2087, "7"},    {0x2088, 0x2088, "8"},    {0x2089, 0x2089, "9"},
    {0x20AC, 0x20AC, "EUR"},  {0x2103, 0x2103, "degC"}, {0x2109, 0x2109, "degF"},
    {0x2116, 0x2116, "No."},  {0x2122, 0x2122, "(TM)"}, {0x2126, 0x2126, "Ohm"},
    {0x212B, 0x212B, "A"},    {0x2153, 0x2153, " 1/3"}, {0x2154, 0x2154, " 2/3"},
    {0x215B, 0x215B, " 1/8"}, {0x215C, 0x215C, " 3/8"}, {0x215D, 0x215D, " 5/8"},
    {0x215E, 0x215E, " 7/8"}, {0x2190, 0x2190, "<-"},   {0x2191, 0x2191, "^"},
    {0x2192, 0x2192, "->"},   {0x2193, 0x2193, "v"},    {0x2194, 0x2194, "<->"},
    {0x21D2, 0x21D2, "=>"},   {0x2212, 0x2212, "-"},    {0x2215, 0x2215, "/"},
    {0x2217, 0x2217, "*"},    {0x2219, 0x2219, "."},    {0x223C, 0x223C, "~"},
    {0x2248, 0x2248, "~"},    {0x2260, 0x2260, "!="},   {0x2264, 0x2264, "<="},
    {0x2265, 0x2265, ">="},   {0x2500, 0x2501, "-"},    {0x2502, 0x2503, "|"},  // frames
    {0x2504, 0x2505, "-"},    {0x2506, 0x2507, "|"},    {0x2508, 0x2509, "-"},
    {0x250A, 0x250B, "|"},    {0x250C, 0x254B, "+"},    {0x254C, 0x254D, "-"},
    {0x254E, 0x254F, "|"},    {0x2550, 0x2550, "="},    {0x2551, 0x2551, "|"},
    {0x2552, 0x256C, "+"},    {0x256D, 0x2570, "+"},    {0x2588, 0x2593, "#"},
    {0x25A0, 0x25A1, "*"},    {0x25AA, 0x25AB, "*"},    {0x25B6, 0x25B6, ">"},
    {0x25BA, 0x25BA, ">"},    {0x25CB, 0x25CB, "o"},    {0x25CF, 0x25CF, "*"},
    {0x25E6, 0x25E6, "o"},    {0x2605, 0x2606, "*"},    {0x2610, 0x2610, "[ ]"},
    {0x2611, 0x2612, "[x]"},  {0x3000, 0x3000, " "},    {0xFB00, 0xFB00, "ff"},
    {0xFB01, 0xFB01, "fi"},   {0xFB02, 0xFB02, "fl"},   {0xFB03, 0xFB03, "ffi"},
    {0xFB04, 0xFB04, "ffl"},  {0xFB05, 0xFB06, "st"},   {0xFE00, 0xFE0F, ""},
    {0xFEFF, 0xFEFF, ""},
});

constexpr uint32_t kFirstDrawn = 32;
constexpr uint32_t kLastDrawn = 126;
constexpr uint32_t kLastControl = 0x9F;
constexpr uint32_t kVerticalTab = 0x0B;
constexpr uint32_t kNextLine = 0x85;

// The range that holds `code`, of ranges in their order.
template <size_t count>
const Signs* FindSigns(const std::array<Signs, count>& signs, uint32_t code) {
    const auto* const found =
        std::lower_bound(signs.begin(), signs.end(), code,
                         [](const Signs& range, uint32_t wanted) { return range.last < wanted; });
    return found != signs.end() && found->first <= code ? found : nullptr;
}

std::optional<std::string_view> PlainLetter(uint32_t code) {
    for (const LetterRun& run : kLetterRuns) {
        if (code < run.first || code >= run.first + 2 * run.pairs) continue;
        return (code - run.first) % 2 == 0 ? run.capital : run.small;
    }
    return {};
}

// What stands for a character behind ASCII; nothing if nothing does.
std::optional<std::string_view> Plain(uint32_t code) {
    if (code == kNextLine) return "\n";
    if (code <= kLastControl) return "";
    if (code < kFirstLatin1 + kLatin1.size()) {
        const char* const text = kLatin1[code - kFirstLatin1];
        if (text == nullptr) return {};
        return text;
    }
    if (const Signs* const signs = FindSigns(kSigns, code)) return signs->text;
    return PlainLetter(code);
}

bool IsDigit(char letter) {
    return letter >= '0' && letter <= '9';
}

void AppendPlain(FaxText& prepared, uint32_t code) {
    constexpr uint32_t kFirstWide = 0xFF01;  // ASCII in the width of ideographs
    constexpr uint32_t kLastWide = 0xFF5E;
    if (code >= kFirstWide && code <= kLastWide) code -= kFirstWide - kFirstDrawn - 1;
    if (code >= kFirstDrawn && code <= kLastDrawn) {
        prepared.text += static_cast<char>(code);
        return;
    }
    auto plain = Plain(code);
    const bool behindDigit = !prepared.text.empty() && IsDigit(prepared.text.back());
    if (plain && plain->size() > 1 && plain->front() == ' ' && !behindDigit) {
        plain->remove_prefix(1);
    }
    prepared.replaced += plain ? 0U : 1U;
    prepared.text += plain.value_or("?");
}

}  // namespace

FaxText PrepareFaxText(std::string_view bytes) {
    const std::string utf8 = ToUtf8(bytes);
    FaxText prepared;
    prepared.isUtf8 = utf8 == bytes;
    prepared.text.reserve(utf8.size());
    std::string_view rest = utf8;
    while (!rest.empty()) {
        const uint32_t code = TakeCharacter(rest);
        if (code == '\t' || code == '\n' || code == '\f') {
            prepared.text += static_cast<char>(code);
        } else if (code == '\r' || code == kVerticalTab) {
            if (code == '\r' && rest.starts_with('\n')) continue;
            prepared.text += '\n';
        } else {
            AppendPlain(prepared, code);
        }
    }
    return prepared;
}

}  // namespace vellim::tool
