// A face of outlines at one size, through FreeType.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "platform/graphics/font_faces.h"
#include "platform/graphics/glyph_picture.h"

struct FT_FaceRec_;
struct FT_LibraryRec_;

namespace vellim {

// FreeType itself. What it opens belongs to the thread that it belongs to, and ends before it.
class OutlineLibrary {
  public:
    OutlineLibrary();
    ~OutlineLibrary();
    OutlineLibrary(const OutlineLibrary&) = delete;
    OutlineLibrary& operator=(const OutlineLibrary&) = delete;

    [[nodiscard]] FT_LibraryRec_* Get() const { return library_; }

  private:
    FT_LibraryRec_* library_ = nullptr;  // null: it couldn't be had
};

// A line across, from its upper edge, counted down from the baseline.
struct TextLine {
    int32_t top = 0;
    int32_t height = 1;
};

// In the units that the face was designed in.
struct FaceMeasures {
    int32_t em = 1000;
    int32_t ascent = 800;
    int32_t descent = 200;
    int32_t externalLeading = 0;
    int32_t meanWidth = 500;  // of the letters A to Z, a to z
    TextLine underline{};
    TextLine strikeOut{};
};

class OutlineFace {
  public:
    // Nothing where the file has no outlines that FreeType can use.
    static std::optional<OutlineFace> Open(const OutlineLibrary& library, const FaceFile& file);

    [[nodiscard]] FaceMeasures Measure() const;
    [[nodiscard]] bool IsFixedPitch() const;
    [[nodiscard]] const FaceFile& File() const { return file_; }

    // Pixels of the em. False where the face can't be had at this size.
    bool SetSize(int32_t across, int32_t down);

    // How much wider than they are designed the letters are made, in pixels.
    [[nodiscard]] int32_t AddedWidth() const { return file_.needsWeight ? boldWidth_ : 0; }

    // Nothing for a character that the face doesn't have.
    [[nodiscard]] std::optional<uint32_t> GlyphOf(uint8_t windows1252) const;

    // Pixels from letter to letter, and a letter's picture, which is empty where it can't be drawn.
    [[nodiscard]] int32_t Advance(uint32_t glyph) const;
    [[nodiscard]] GlyphPicture Draw(uint32_t glyph, Shades shades) const;

  private:
    struct CloseFace {
        void operator()(FT_FaceRec_* face) const;
    };

    [[nodiscard]] bool Load(uint32_t glyph) const;
    [[nodiscard]] int32_t MeanWidth() const;

    std::unique_ptr<FT_FaceRec_, CloseFace> face_;
    FaceFile file_;
    bool isSymbolic_ = false;  // characters by byte, in a place of their own
    int32_t hinting_ = 0;      // how to load glyphs
    int32_t boldWidth_ = 1;
};

}  // namespace vellim
