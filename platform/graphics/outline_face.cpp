// Letters are hinted for two shades, whatever they are drawn in, so that they stand in the same
// places on every surface. What a font file says is bounded before it is used.
#include "platform/graphics/outline_face.h"

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_ADVANCES_H
#include FT_OUTLINE_H
#include FT_TRUETYPE_TABLES_H

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

#include "platform/graphics/windows_1252.h"

namespace vellim {
namespace {

constexpr int32_t kPixel = 64;  // FreeType's parts of a pixel
constexpr int32_t kMostAdvance = 1 << 16;
constexpr int64_t kMostPixels = int64_t{1} << 26;  // of a picture

int32_t InPixels(FT_Pos place) {
    constexpr FT_Pos most = FT_Pos{1} << 30;
    return static_cast<int32_t>((std::clamp(place, -most, most) + kPixel / 2) >> 6);
}

// The program of a TrueType face knows best; other kinds of hints are for heights alone, and leave
// stems of uneven widths.
int32_t HintingOf(FT_Face face) {
    const FT_UInt32 program = FT_MAKE_TAG('f', 'p', 'g', 'm');
    FT_ULong bytes = 0;
    const bool hasProgram = FT_Load_Sfnt_Table(face, program, 0, nullptr, &bytes) == 0;
    const int32_t load = FT_LOAD_TARGET_MONO | FT_LOAD_NO_BITMAP;
    return hasProgram ? load : load | FT_LOAD_FORCE_AUTOHINT;
}

struct Extent {
    int32_t ascent;
    int32_t descent;  // below 0: above the baseline
};

// What no text can be set with isn't believed.
bool MakesSense(const Extent& extent, int32_t em) {
    const int32_t height = extent.ascent + extent.descent;
    return extent.ascent > 0 && extent.descent >= 0 && height >= em / 2 && height <= 4 * em;
}

Extent DesignedExtent(FT_Face face) {
    return {face->ascender, -face->descender};
}

const TT_OS2* WindowsTable(FT_Face face) {
    constexpr FT_UShort none = 0xFFFF;
    const auto* table = static_cast<const TT_OS2*>(FT_Get_Sfnt_Table(face, FT_SFNT_OS2));
    return table != nullptr && table->version != none ? table : nullptr;
}

// From line to line, as the designer wants it.
int32_t LineStep(FT_Face face) {
    const auto* lines = static_cast<const TT_HoriHeader*>(FT_Get_Sfnt_Table(face, FT_SFNT_HHEA));
    return lines != nullptr ? lines->Ascender - lines->Descender + lines->Line_Gap : face->height;
}

void MeasureExtents(FT_Face face, FaceMeasures& measures) {
    const Extent designed = DesignedExtent(face);
    const TT_OS2* windows = WindowsTable(face);
    const Extent ours =
        windows != nullptr ? Extent{windows->usWinAscent, windows->usWinDescent} : designed;
    const Extent used = MakesSense(ours, measures.em) ? ours : designed;
    if (!MakesSense(used, measures.em)) {
        measures.ascent = measures.em * 4 / 5;
        measures.descent = measures.em - measures.ascent;
        return;
    }
    measures.ascent = used.ascent;
    measures.descent = used.descent;
    const int32_t gap = LineStep(face) - (used.ascent + used.descent);
    measures.externalLeading = std::clamp(gap, 0, measures.em);
}

TextLine LineOf(int32_t middle, int32_t thickness) {
    return {-middle - thickness / 2, thickness};
}

void MeasureLines(FT_Face face, FaceMeasures& measures) {
    const int32_t em = measures.em;
    const auto thicknessOf = [em](int32_t designed) {
        return designed > 0 && designed < em / 4 ? designed : em / 20;
    };
    const bool isBelow = face->underline_position < 0 && face->underline_position > -em / 2;
    measures.underline = LineOf(isBelow ? face->underline_position : -em / 10,
                                thicknessOf(face->underline_thickness));
    const TT_OS2* windows = WindowsTable(face);
    const bool isAbove = windows != nullptr && windows->yStrikeoutPosition > em / 10 &&
                         windows->yStrikeoutPosition < em;
    measures.strikeOut = LineOf(isAbove ? windows->yStrikeoutPosition : em / 4,
                                thicknessOf(windows != nullptr ? windows->yStrikeoutSize : 0));
}

// Null for a letter without outlines.
FT_GlyphSlot SlotWithOutline(FT_Face face) {
    return face->glyph->format == FT_GLYPH_FORMAT_OUTLINE ? face->glyph : nullptr;
}

bool IsOfBearableSize(FT_Outline& outline) {
    FT_BBox box{};
    FT_Outline_Get_CBox(&outline, &box);
    constexpr FT_Pos farthest = FT_Pos{1} << 22;
    if (std::min(box.xMin, box.yMin) < -farthest || std::max(box.xMax, box.yMax) > farthest)
        return false;
    const int64_t width = InPixels(box.xMax - box.xMin) + 2;
    const int64_t height = InPixels(box.yMax - box.yMin) + 2;
    return width * height <= kMostPixels;
}

GlyphPicture PictureOf(FT_GlyphSlot slot, Shades shades) {
    const FT_Bitmap& drawn = slot->bitmap;
    if (drawn.width == 0 || drawn.rows == 0 || drawn.buffer == nullptr) return {};
    GlyphPicture picture =
        BlankPicture(static_cast<int32_t>(drawn.width), static_cast<int32_t>(drawn.rows), shades);
    picture.left = slot->bitmap_left;
    picture.top = -slot->bitmap_top;
    const uint8_t* from = drawn.buffer;  // FreeType draws downwards
    for (int32_t y = 0; y < picture.height; y++, from += drawn.pitch)
        std::memcpy(picture.Row(y), from, picture.stride);
    return picture;
}

}  // namespace

OutlineLibrary::OutlineLibrary() {
    if (FT_Init_FreeType(&library_) != 0) library_ = nullptr;
}

OutlineLibrary::~OutlineLibrary() {
    if (library_ != nullptr) FT_Done_FreeType(library_);
}

void OutlineFace::CloseFace::operator()(FT_FaceRec_* face) const {
    FT_Done_Face(face);
}

std::optional<OutlineFace> OutlineFace::Open(const OutlineLibrary& library, const FaceFile& file) {
    FT_Face face = nullptr;
    if (library.Get() == nullptr || file.path.empty()) return std::nullopt;
    if (FT_New_Face(library.Get(), file.path.c_str(), file.index, &face) != 0) return std::nullopt;
    OutlineFace opened;
    opened.face_.reset(face);
    opened.file_ = file;
    if (!FT_IS_SCALABLE(face) || face->units_per_EM == 0) return std::nullopt;
    if (FT_Select_Charmap(face, FT_ENCODING_UNICODE) != 0) {
        opened.isSymbolic_ = FT_Select_Charmap(face, FT_ENCODING_MS_SYMBOL) == 0;
        if (!opened.isSymbolic_ && face->num_charmaps == 0) return std::nullopt;
        if (!opened.isSymbolic_) FT_Set_Charmap(face, face->charmaps[0]);
    }
    opened.hinting_ = HintingOf(face);
    return opened;
}

FaceMeasures OutlineFace::Measure() const {
    FaceMeasures measures;
    measures.em = face_->units_per_EM;
    measures.meanWidth = MeanWidth();
    MeasureExtents(face_.get(), measures);
    MeasureLines(face_.get(), measures);
    return measures;
}

int32_t OutlineFace::MeanWidth() const {
    int64_t sum = 0;
    int32_t count = 0;
    for (uint8_t letter = 'A'; letter <= 'z'; letter++) {
        FT_Fixed advance = 0;
        const std::optional<uint32_t> glyph = GlyphOf(letter);
        if ((letter > 'Z' && letter < 'a') || !glyph) continue;
        if (FT_Get_Advance(face_.get(), *glyph, FT_LOAD_NO_SCALE, &advance) != 0) continue;
        sum += std::clamp<FT_Fixed>(advance, 0, kMostAdvance);
        count++;
    }
    return sum > 0 ? std::max(static_cast<int32_t>(sum / count), 1) : face_->units_per_EM / 2;
}

bool OutlineFace::IsFixedPitch() const {
    return FT_IS_FIXED_WIDTH(face_.get()) != 0;
}

bool OutlineFace::SetSize(int32_t across, int32_t down) {
    constexpr int32_t boldParts = 24;  // of the em
    boldWidth_ = std::max((across + boldParts / 2) / boldParts, 1);
    return FT_Set_Pixel_Sizes(face_.get(), static_cast<FT_UInt>(across),
                              static_cast<FT_UInt>(down)) == 0;
}

std::optional<uint32_t> OutlineFace::GlyphOf(uint8_t windows1252) const {
    constexpr uint32_t symbols = 0xF000;
    constexpr uint32_t space = 0x20, hardSpace = 0xA0, hyphen = 0x2D, softHyphen = 0xAD;
    const uint32_t code = CodePointOf(windows1252);
    if (code == 0) return std::nullopt;
    FT_UInt glyph = FT_Get_Char_Index(face_.get(), isSymbolic_ ? symbols | windows1252 : code);
    if (glyph == 0 && code == hardSpace) glyph = FT_Get_Char_Index(face_.get(), space);
    if (glyph == 0 && code == softHyphen) glyph = FT_Get_Char_Index(face_.get(), hyphen);
    return glyph != 0 ? std::optional(glyph) : std::nullopt;
}

bool OutlineFace::Load(uint32_t glyph) const {
    return FT_Load_Glyph(face_.get(), glyph, hinting_) == 0;
}

int32_t OutlineFace::Advance(uint32_t glyph) const {
    if (!Load(glyph)) return 0;
    return std::clamp(InPixels(face_->glyph->advance.x) + AddedWidth(), 0, kMostAdvance);
}

// Weight is whole pixels to the right, so that stems stay sharp and heights as they are.
GlyphPicture OutlineFace::Draw(uint32_t glyph, Shades shades) const {
    const FT_Matrix slant = {0x10000, 0x3333, 0, 0x10000};  // a fifth
    if (!Load(glyph)) return {};
    FT_GlyphSlot slot = SlotWithOutline(face_.get());
    if (slot == nullptr) return {};
    const bool hasInk = slot->outline.n_points > 0;
    if (hasInk && file_.needsWeight)
        FT_Outline_EmboldenXY(&slot->outline, FT_Pos{boldWidth_} * kPixel, 0);
    if (hasInk && file_.needsSlant) FT_Outline_Transform(&slot->outline, &slant);
    if (!hasInk || !IsOfBearableSize(slot->outline)) return {};
    const FT_Render_Mode mode = shades == Shades::Two ? FT_RENDER_MODE_MONO : FT_RENDER_MODE_NORMAL;
    if (FT_Render_Glyph(slot, mode) != 0) return {};
    return PictureOf(slot, shades);
}

}  // namespace vellim
