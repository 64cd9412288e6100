#include "platform/graphics/scaled_fonts.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/graphics/builtin_font.h"
#include "platform/graphics/fonts.h"
#include "platform/graphics/windows_1252.h"

namespace vellim {
namespace {

constexpr int32_t kMostPixels = 4096;  // of an em, a line or a mean letter

int32_t SizeOf(double pixels) {
    return static_cast<int32_t>(std::lround(std::clamp<double>(pixels, 1, kMostPixels)));
}

// Pixels that a unit comes to.
double Scale(int32_t viewportExtent, int32_t windowExtent) {
    return std::abs(static_cast<double>(viewportExtent) / windowExtent);
}

int32_t UnitsOf(int64_t pixels, int32_t windowExtent, int32_t viewportExtent) {
    using Limits = std::numeric_limits<int32_t>;
    const double units = static_cast<double>(pixels) / Scale(viewportExtent, windowExtent);
    return static_cast<int32_t>(std::llround(std::clamp<double>(units, 0, Limits::max())));
}

FontKey KeyOf(const LOGFONT& font, const Mapping& mapping) {
    const double across = Scale(mapping.viewportExtent.x, mapping.windowExtent.x);
    const double down = Scale(mapping.viewportExtent.y, mapping.windowExtent.y);
    const int32_t height = font.lfHeight != 0 ? font.lfHeight : kDefaultLineHeight;
    FontKey key;
    std::ranges::copy(font.lfFaceName, key.name.begin());
    key.weight = font.lfWeight;
    key.isItalic = font.lfItalic != 0;
    key.height = SizeOf(std::abs(static_cast<double>(height)) * down);
    if (height < 0) key.height = -key.height;
    if (font.lfWidth != 0) key.width = SizeOf(std::abs(static_cast<double>(font.lfWidth)) * across);
    key.stretch = across / down;
    return key;
}

bool IsBold(int32_t weight) {
    constexpr int32_t semiBold = 600;
    return weight >= semiBold;
}

std::string_view NameOf(const FontKey& key) {
    return {key.name.data(), strnlen(key.name.data(), key.name.size())};
}

bool IsBuiltInName(std::string_view name) {
    const auto isSameLetter = [](char a, char b) {
        return (a >= 'a' && a <= 'z' ? a - 32 : a) == b;
    };
    return std::ranges::equal(name, std::string_view(kBuiltInFace), isSameLetter);
}

struct Scaling {
    double pixels;
    double units;

    [[nodiscard]] int32_t Of(int32_t length) const {
        return static_cast<int32_t>(std::lround(length * pixels / units));
    }
};

TextLine Scaled(const TextLine& line, const Scaling& scaling) {
    return {scaling.Of(line.top), std::max(scaling.Of(line.height), 1)};
}

// Lines stay in the cell.
TextLine Within(const TextLine& line, const FontMeasures& measures) {
    const int32_t height = std::min(line.height, measures.Height());
    return {std::clamp(line.top, -measures.ascent, measures.descent - height), height};
}

GlyphPicture PlaceOf(const GlyphPicture& picture) {
    GlyphPicture place;
    place.left = picture.left;
    place.top = picture.top;
    place.width = picture.width;
    place.height = picture.height;
    return place;
}

bool Meets(const GlyphPicture& picture, const InkArea& area) {
    return picture.left < area.right && int64_t{picture.left} + picture.width > area.left &&
           picture.top < area.bottom && int64_t{picture.top} + picture.height > area.top;
}

}  // namespace

ScaledFont::ScaledFont(const OutlineLibrary& library, const FontKey& key)
    : library_(library), key_(key) {
    advances_.fill(kUnknown);
    std::fill_n(advances_.begin(), kFirstCharacter, 0);
    if (!FindOutlines()) UseBuiltIn();
}

bool ScaledFont::FindOutlines() {
    const FaceWish wish = Wish();
    if (IsBuiltInName(wish.name)) return false;
    for (const std::string& family : FamiliesFor(wish.name)) {
        const std::optional<FaceFile> file = FaceOfFamily(family, wish);
        if (file && UseOutlines(OutlineFace::Open(library_, *file))) return true;
    }
    // Any other face serves as long as it has letters.
    const std::optional<FaceFile> file = FaceInstead(wish);
    std::optional<OutlineFace> face = file ? OutlineFace::Open(library_, *file) : std::nullopt;
    return face && face->GlyphOf('x') && UseOutlines(std::move(face));
}

FaceWish ScaledFont::Wish() const {
    return {.name = NameOf(key_), .weight = key_.weight, .isItalic = key_.isItalic};
}

// A line of a given height is kept to the pixel; its parts are as the face divides them.
bool ScaledFont::UseOutlines(std::optional<OutlineFace> face) {
    if (!face) return false;
    const FaceMeasures units = face->Measure();
    const int32_t lineUnits = units.ascent + units.descent;
    const bool isOfLine = key_.height > 0;
    const Scaling byHeight = {static_cast<double>(std::abs(key_.height)),
                              static_cast<double>(isOfLine ? lineUnits : units.em)};
    down_ = SizeOf(byHeight.Of(units.em));
    across_ = SizeOf(down_ * key_.stretch);
    face->SetSize(across_, down_);
    if (key_.width != 0)
        across_ = SizeOf(static_cast<double>(std::max(key_.width - face->AddedWidth(), 1)) *
                         units.em / units.meanWidth);
    if (!face->SetSize(across_, down_)) return false;

    const Scaling scaling = {static_cast<double>(down_), static_cast<double>(units.em)};
    measures_.ascent = byHeight.Of(units.ascent);
    measures_.descent = isOfLine ? key_.height - measures_.ascent : byHeight.Of(units.descent);
    if (measures_.Height() < 1) measures_.ascent = 1;
    measures_.em = down_;
    measures_.externalLeading = scaling.Of(units.externalLeading);
    measures_.meanWidth = Scaling{static_cast<double>(across_), scaling.units}.Of(units.meanWidth) +
                          face->AddedWidth();
    measures_.weight = face->File().weight;
    measures_.isFixedPitch = face->IsFixedPitch();
    measures_.isOfOutlines = true;
    measures_.underline = Within(Scaled(units.underline, scaling), measures_);
    measures_.strikeOut = Within(Scaled(units.strikeOut, scaling), measures_);
    face_ = std::move(face);
    return true;
}

// Its em is its line.
void ScaledFont::UseBuiltIn() {
    constexpr TextLine underline = {2, 1}, strikeOut = {-4, 1};
    const int32_t height = std::abs(key_.height);
    const Scaling scaling = {static_cast<double>(height), kBuiltInHeight};
    builtIn_ = {.cellWidth = key_.width,
                .cellHeight = height,
                .isBold = IsBold(key_.weight),
                .isSlanted = key_.isItalic};
    if (key_.width == 0)
        builtIn_.cellWidth = SizeOf(key_.stretch * height * kBuiltInWidth / kBuiltInHeight);
    measures_.ascent = AscentOfBuiltIn(height);
    measures_.descent = height - measures_.ascent;
    measures_.em = height;
    measures_.meanWidth = builtIn_.cellWidth;
    measures_.weight = builtIn_.isBold ? FW_BOLD : FW_NORMAL;
    measures_.isFixedPitch = true;
    measures_.underline = Within(Scaled(underline, scaling), measures_);
    measures_.strikeOut = Within(Scaled(strikeOut, scaling), measures_);
}

// Without memory there is none.
const OutlineFace* ScaledFont::SpareFace() try {
    if (!std::exchange(hasSoughtSpare_, true)) {
        if (const std::optional<FaceFile> file = FaceWithMostCharacters(Wish()))
            spare_ = OutlineFace::Open(library_, *file);
        if (spare_ && !spare_->SetSize(across_, down_)) spare_.reset();
    }
    return spare_ ? &*spare_ : nullptr;
} catch (const std::bad_alloc&) {
    return nullptr;
}

ScaledFont::Source ScaledFont::SourceOf(uint8_t byte) {
    if (const std::optional<uint32_t> glyph = face_->GlyphOf(byte)) return {&*face_, *glyph};
    const OutlineFace* spare = CodePointOf(byte) != 0 ? SpareFace() : nullptr;
    const std::optional<uint32_t> glyph = spare != nullptr ? spare->GlyphOf(byte) : std::nullopt;
    return glyph ? Source{spare, *glyph} : Source{nullptr, 0};
}

int32_t ScaledFont::FindAdvance(uint8_t byte) {
    int32_t advance = builtIn_.cellWidth;
    if (face_) {
        const Source source = SourceOf(byte);
        advance = source.face != nullptr ? source.face->Advance(source.glyph) : measures_.meanWidth;
    }
    return advances_[byte] = advance;
}

int32_t ScaledFont::WidestAdvance() {
    int32_t widest = 0;
    for (uint32_t byte = kFirstCharacter; byte < advances_.size(); byte++)
        widest = std::max(widest, Advance(static_cast<uint8_t>(byte)));
    return widest;
}

GlyphPicture ScaledFont::Draw(uint8_t byte, Shades shades) {
    constexpr int32_t boxParts = 4;  // of the ascent, of which the box has three
    if (!face_) return DrawBuiltIn(byte, builtIn_, shades);
    const Source source = SourceOf(byte);
    if (source.face != nullptr) return source.face->Draw(source.glyph, shades);
    const int32_t height = std::max(measures_.ascent - measures_.ascent / boxParts, 1);
    return BoxPicture(std::max(measures_.meanWidth, 1), height, shades);
}

// Of a large picture the place alone is kept, so that it is drawn only where it shows.
const GlyphPicture* ScaledFont::Picture(uint8_t byte, Shades shades, const InkArea& area) {
    constexpr size_t mostKept = size_t{2} << 20U;
    if (byte < kFirstCharacter) return nullptr;
    std::unique_ptr<GlyphPicture>& kept = pictures_[static_cast<size_t>(shades)][byte];
    bool isPassing = false;
    if (kept == nullptr) {
        GlyphPicture drawn = Draw(byte, shades);
        kept = std::make_unique<GlyphPicture>(PlaceOf(drawn));
        isPassing = drawn.rows.size() > mostKept - keptBytes_;
        if (!isPassing) keptBytes_ += drawn.rows.size();
        (isPassing ? passing_ : *kept) = std::move(drawn);
    }
    if (!Meets(*kept, area)) return nullptr;
    if (!kept->rows.empty()) return kept.get();
    if (!isPassing) passing_ = Draw(byte, shades);
    return &passing_;
}

namespace {

struct UsedFonts {
    OutlineLibrary library;                          // ends last
    std::vector<std::shared_ptr<ScaledFont>> fonts;  // that of the call before comes first
};

std::shared_ptr<ScaledFont> FindFont(UsedFonts& used, const FontKey& key) {
    constexpr size_t mostFonts = 12;
    auto& fonts = used.fonts;
    auto found = std::ranges::find(fonts, key, [](const auto& font) { return font->Key(); });
    if (found == fonts.end()) {
        auto made = std::make_shared<ScaledFont>(used.library, key);
        if (fonts.size() == mostFonts) fonts.pop_back();
        fonts.push_back(std::move(made));
        found = fonts.end() - 1;
    }
    std::rotate(fonts.begin(), found, found + 1);
    return fonts.front();
}

}  // namespace

const LOGFONT& AskedFont(const DeviceContext& context) {
    return context.font != nullptr ? *context.font : kDefaultFont;
}

std::shared_ptr<ScaledFont> FontOf(const DeviceContext& context) {
    thread_local UsedFonts used;
    try {
        return FindFont(used, KeyOf(AskedFont(context), context.mapping));
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

int32_t UnitsAcross(const Mapping& mapping, int64_t pixels) {
    return UnitsOf(pixels, mapping.windowExtent.x, mapping.viewportExtent.x);
}

int32_t UnitsDown(const Mapping& mapping, int64_t pixels) {
    return UnitsOf(pixels, mapping.windowExtent.y, mapping.viewportExtent.y);
}

}  // namespace vellim
