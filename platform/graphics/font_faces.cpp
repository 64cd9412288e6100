// Faces are listed with fontconfig and chosen here: its own choice would take any family for the
// one that was asked for. The list is read once for the process.
#include "platform/graphics/font_faces.h"

#include <fontconfig/fontconfig.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <tuple>
#include <utility>

#include "platform/graphics/font_families.h"
#include "platform/graphics/windows_1252.h"

namespace vellim {
namespace {

struct FreePattern {
    void operator()(FcPattern* pattern) const { FcPatternDestroy(pattern); }
};
struct FreeObjectSet {
    void operator()(FcObjectSet* set) const { FcObjectSetDestroy(set); }
};
struct FreeFontSet {
    void operator()(FcFontSet* set) const { FcFontSetDestroy(set); }
};
struct FreeCharSet {
    void operator()(FcCharSet* set) const { FcCharSetDestroy(set); }
};
using Pattern = std::unique_ptr<FcPattern, FreePattern>;
using ObjectSet = std::unique_ptr<FcObjectSet, FreeObjectSet>;
using FontSet = std::unique_ptr<FcFontSet, FreeFontSet>;
using CharSet = std::unique_ptr<FcCharSet, FreeCharSet>;

// Settings that can't be read leave no fonts.
FcConfig* ReadConfig() {
    FcConfig* made = FcConfigCreate();
    if (made == nullptr) return nullptr;
    if (FcConfigParseAndLoad(made, nullptr, FcFalse) == FcTrue &&
        FcConfigBuildFonts(made) == FcTrue)
        return made;
    FcConfigDestroy(made);
    return nullptr;
}

// What fontconfig knows, read when it is first asked for and let go of at the end of the process;
// threads that draw even then find no more fonts.
constinit std::mutex configMutex;
constinit FcConfig* config = nullptr;
constinit bool isConfigRead = false;

struct ConfigEnd {
    ConfigEnd() = default;
    ~ConfigEnd() {
        const std::scoped_lock lock(configMutex);
        if (config != nullptr) FcConfigDestroy(std::exchange(config, nullptr));
    }
    ConfigEnd(const ConfigEnd&) = delete;
    ConfigEnd& operator=(const ConfigEnd&) = delete;
};

// With the mutex held. Null where there are no fonts to be had.
FcConfig* Config() {
    static const ConfigEnd end;
    if (!std::exchange(isConfigRead, true)) config = ReadConfig();
    return config;
}

char Small(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::string InSmallLetters(std::string_view name) {
    std::string small(name);
    std::ranges::transform(small, small.begin(), Small);
    return small;
}

bool IsSameName(std::string_view a, std::string_view b) {
    return std::ranges::equal(a, b, {}, Small, Small);
}

void AddFamilies(const FamilyNames& names, std::vector<std::string>& families) {
    for (const std::string_view name : names)
        if (!name.empty()) families.emplace_back(name);
}

const FcChar8* Text(const std::string& text) {
    return reinterpret_cast<const FcChar8*>(text.c_str());
}

Pattern PatternOf(const std::string& family) {
    Pattern pattern(FcPatternCreate());
    if (pattern == nullptr) return nullptr;
    if (!family.empty()) FcPatternAddString(pattern.get(), FC_FAMILY, Text(family));
    FcPatternAddBool(pattern.get(), FC_SCALABLE, FcTrue);
    return pattern;
}

int32_t NumberIn(const FcPattern* font, const char* object, int32_t otherwise) {
    int number = 0;
    const bool isThere = FcPatternGetInteger(font, object, 0, &number) == FcResultMatch;
    return isThere ? number : otherwise;
}

// Of a face, in fontconfig's measures.
struct Style {
    bool isVariable;
    bool isItalic;
    int32_t weight;
    int32_t width;
    bool isSfnt;
};

Style StyleOf(const FcPattern* font) {
    FcBool isVariable = FcFalse;
    FcChar8* format = nullptr;
    FcPatternGetBool(font, FC_VARIABLE, 0, &isVariable);
    FcPatternGetString(font, FC_FONTFORMAT, 0, &format);
    const std::string_view name = format != nullptr ? reinterpret_cast<const char*>(format) : "";
    return {.isVariable = isVariable != FcFalse,
            .isItalic = NumberIn(font, FC_SLANT, FC_SLANT_ROMAN) != FC_SLANT_ROMAN,
            .weight = NumberIn(font, FC_WEIGHT, FC_WEIGHT_NORMAL),
            .width = NumberIn(font, FC_WIDTH, FC_WIDTH_NORMAL),
            .isSfnt = name == "TrueType" || name == "CFF"};
}

int32_t WantedWeight(const FaceWish& wish) {
    constexpr int32_t most = 1000;
    const int32_t weight = wish.weight > 0 ? std::min(wish.weight, most) : 400;
    return FcWeightFromOpenType(weight);
}

// Smaller is better. An italic face can't be set upright, while any can be slanted, and made bold.
auto Distance(const Style& style, const FaceWish& wish) {
    return std::tuple(style.isItalic != wish.isItalic, std::abs(style.width - FC_WIDTH_NORMAL),
                      std::abs(style.weight - WantedWeight(wish)), style.isVariable, !style.isSfnt);
}

FaceFile FileOf(const FcPattern* font, const FaceWish& wish) {
    const Style style = StyleOf(font);
    FcChar8* path = nullptr;
    FaceFile file;
    if (FcPatternGetString(font, FC_FILE, 0, &path) == FcResultMatch)
        file.path = reinterpret_cast<const char*>(path);
    file.index = NumberIn(font, FC_INDEX, 0);
    file.needsSlant = wish.isItalic && !style.isItalic;
    file.needsWeight = WantedWeight(wish) >= FC_WEIGHT_DEMIBOLD && style.weight <= FC_WEIGHT_MEDIUM;
    file.weight = FcWeightToOpenType(file.needsWeight ? WantedWeight(wish) : style.weight);
    return file;
}

const FcPattern* Nearest(const FcFontSet& fonts, const FaceWish& wish) {
    const FcPattern* best = nullptr;
    for (int i = 0; i < fonts.nfont; i++) {
        const FcPattern* font = fonts.fonts[i];
        if (best == nullptr || Distance(StyleOf(font), wish) < Distance(StyleOf(best), wish))
            best = font;
    }
    return best;
}

const FamilyKind& KindOf(std::string_view name) {
    const std::string small = InSmallLetters(name);
    return *std::ranges::find_if(kFamilyKinds, [&](const FamilyKind& kind) {
        return small.find(kind.part) != std::string::npos;
    });
}

// Behind the family that is asked for those of its kind: the settings' own, and in case they have
// none those that we know.
void AddFamiliesOfKind(const FamilyKind& kind, FcPattern* pattern) {
    FcPatternAddString(pattern, FC_FAMILY, Text(kind.generic));
    for (const std::string_view family : *kind.families)
        if (!family.empty()) FcPatternAddString(pattern, FC_FAMILY, Text(std::string(family)));
}

// The family that the settings choose, of fonts with these characters; empty where there is none.
std::string MatchedFamily(const FaceWish& wish, const FcCharSet* characters) {
    const std::scoped_lock lock(configMutex);
    const Pattern pattern = PatternOf(Utf8Of(wish.name));
    if (Config() == nullptr || pattern == nullptr) return {};
    AddFamiliesOfKind(KindOf(wish.name), pattern.get());
    if (characters != nullptr) FcPatternAddCharSet(pattern.get(), FC_CHARSET, characters);
    FcConfigSubstitute(Config(), pattern.get(), FcMatchPattern);
    FcDefaultSubstitute(pattern.get());
    FcResult result = FcResultNoMatch;
    const Pattern match(FcFontMatch(Config(), pattern.get(), &result));
    FcChar8* family = nullptr;
    if (match == nullptr || FcPatternGetString(match.get(), FC_FAMILY, 0, &family) != FcResultMatch)
        return {};
    return reinterpret_cast<const char*>(family);
}

std::optional<FaceFile> FaceOfMatch(const FaceWish& wish, const FcCharSet* characters) {
    const std::string family = MatchedFamily(wish, characters);
    return family.empty() ? std::nullopt : FaceOfFamily(family, wish);
}

}  // namespace

std::vector<std::string> FamiliesFor(std::string_view name) {
    std::vector<std::string> families;
    if (!name.empty()) families.push_back(Utf8Of(name));
    for (const auto& [asked, first, general] : kFamilySubstitutes) {
        const auto isAsked = [&](std::string_view known) { return IsSameName(known, name); };
        if (std::ranges::none_of(asked, isAsked)) continue;
        AddFamilies(first, families);
        AddFamilies(general, families);
        break;
    }
    return families;
}

std::optional<FaceFile> FaceOfFamily(const std::string& family, const FaceWish& wish) {
    const std::scoped_lock lock(configMutex);
    const Pattern pattern = PatternOf(family);
    const ObjectSet objects(FcObjectSetCreate());
    if (Config() == nullptr || pattern == nullptr || objects == nullptr || family.empty())
        return std::nullopt;
    for (const char* object :
         {FC_FILE, FC_INDEX, FC_WEIGHT, FC_SLANT, FC_WIDTH, FC_VARIABLE, FC_FONTFORMAT})
        FcObjectSetAdd(objects.get(), object);
    const FontSet fonts(FcFontList(Config(), pattern.get(), objects.get()));
    if (fonts == nullptr || fonts->nfont == 0) return std::nullopt;
    return FileOf(Nearest(*fonts, wish), wish);
}

std::optional<FaceFile> FaceInstead(const FaceWish& wish) {
    return FaceOfMatch(wish, nullptr);
}

std::optional<FaceFile> FaceWithMostCharacters(const FaceWish& wish) {
    const CharSet characters(FcCharSetCreate());
    if (characters == nullptr) return std::nullopt;
    for (uint32_t byte = kFirstCharacter; byte < 256; byte++)
        if (const uint32_t code = CodePointOf(static_cast<uint8_t>(byte)); code != 0)
            FcCharSetAddChar(characters.get(), code);
    return FaceOfMatch(wish, characters.get());
}

}  // namespace vellim
