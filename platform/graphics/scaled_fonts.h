// Fonts at the size that a context draws them in: their measures in pixels, and their letters.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>

#include "platform/graphics/built_in_face.h"
#include "platform/graphics/device_contexts.h"
#include "platform/graphics/glyph_picture.h"
#include "platform/graphics/outline_face.h"

namespace vellim {

// All that the letters of a font depend on.
struct FontKey {
    std::array<char, LF_FACESIZE> name{};  // zeros behind it
    int32_t weight = 0;
    bool isItalic = false;
    int32_t height = 0;    // in pixels: below 0 of the em, above 0 of a line
    int32_t width = 0;     // in pixels: of the mean letter, or 0
    double stretch = 1.0;  // pixels across that come to one down

    bool operator==(const FontKey&) const = default;
};

// In pixels.
struct FontMeasures {
    int32_t ascent = 0;
    int32_t descent = 0;
    int32_t em = 0;
    int32_t externalLeading = 0;
    int32_t meanWidth = 0;
    int32_t weight = 0;
    bool isFixedPitch = false;
    bool isOfOutlines = false;
    TextLine underline{};
    TextLine strikeOut{};

    [[nodiscard]] int32_t Height() const { return ascent + descent; }
};

// A part of the plane, counted from a pen on the baseline.
struct InkArea {
    int64_t left, top, right, bottom;
};

class ScaledFont {
  public:
    // The library outlives the font.
    ScaledFont(const OutlineLibrary& library, const FontKey& key);

    [[nodiscard]] const FontKey& Key() const { return key_; }
    [[nodiscard]] const FontMeasures& Measures() const { return measures_; }

    // Pixels from this letter to the next; looked for once.
    int32_t Advance(uint8_t byte) {
        const int32_t known = advances_[byte];
        return known != kUnknown ? known : FindAdvance(byte);
    }
    int32_t WidestAdvance();

    // The letter's picture, or null where it has no pixels in `area`. Good until the next one is
    // asked for.
    const GlyphPicture* Picture(uint8_t byte, Shades shades, const InkArea& area);

  private:
    static constexpr int32_t kUnknown = -1;

    // Where a letter comes from: a glyph of a face; without a face it is a box.
    struct Source {
        const OutlineFace* face;
        uint32_t glyph;
    };

    bool FindOutlines();
    bool UseOutlines(std::optional<OutlineFace> face);
    void UseBuiltIn();
    [[nodiscard]] FaceWish Wish() const;
    Source SourceOf(uint8_t byte);
    const OutlineFace* SpareFace();
    int32_t FindAdvance(uint8_t byte);
    GlyphPicture Draw(uint8_t byte, Shades shades);

    const OutlineLibrary& library_;
    FontKey key_;
    FontMeasures measures_;
    int32_t across_ = 0;  // pixels of the em
    int32_t down_ = 0;
    std::optional<OutlineFace> face_;   // none: the library's own font
    std::optional<OutlineFace> spare_;  // for letters that the face doesn't have
    bool hasSoughtSpare_ = false;
    BuiltInStyle builtIn_;

    std::array<int32_t, 256> advances_{};
    std::array<std::array<std::unique_ptr<GlyphPicture>, 256>, kShadesCount> pictures_;
    size_t keptBytes_ = 0;
    GlyphPicture passing_;  // one that is too large to be kept
};

// The context's font as it was asked for.
const LOGFONT& AskedFont(const DeviceContext& context);

// The same at its size: one of those that the thread used last, and for that thread alone. Null
// without memory.
std::shared_ptr<ScaledFont> FontOf(const DeviceContext& context);

// A length of the context's, in units for one in pixels.
int32_t UnitsAcross(const Mapping& mapping, int64_t pixels);
int32_t UnitsDown(const Mapping& mapping, int64_t pixels);

}  // namespace vellim
