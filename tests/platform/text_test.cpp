// Fonts, measuring and drawing text. The library's own font is known to the pixel; of the others,
// whichever this machine has, what holds for all.
#include "vellim/text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "platform/graphics/font_faces.h"
#include "platform/graphics/outline_face.h"
#include "platform/graphics/text_widths.h"
#include "vellim/platform.h"

namespace {

constexpr int32_t kLeast = std::numeric_limits<int32_t>::min();
constexpr int32_t kMost = std::numeric_limits<int32_t>::max();
constexpr ColorRef kWhite = 0xFFFFFF;
constexpr uint32_t kDepths[] = {1, 4, 8, 24};

LOGFONT Font(std::string_view face, int32_t height, int32_t weight = 0, uint8_t italic = 0) {
    LOGFONT font{};
    font.lfHeight = height;
    font.lfWeight = weight;
    font.lfItalic = italic;
    std::memcpy(font.lfFaceName, face.data(), std::min(face.size(), sizeof font.lfFaceName));
    return font;
}

// A white sheet, and a font on no background.
struct Sheet {
    int32_t width, height;
    BitmapHandle bitmap;
    DeviceContextHandle context = CreateCompatibleDC(0);

    explicit Sheet(const LOGFONT& font, uint32_t bits = 1, int32_t w = 150, int32_t h = 60)
        : width(w), height(h), bitmap(CreateBitmap(w, h, 1, bits, nullptr)) {
        SelectObject(context, bitmap);
        PatBlt(context, 0, 0, w, h, WHITENESS);
        EXPECT_EQ(SetBkMode(context, TRANSPARENT), OPAQUE);
        const FontHandle made = CreateFontIndirectA(&font);
        EXPECT_EQ(SelectObject(context, made), GetStockObject(SYSTEM_FONT));
        EXPECT_EQ(DeleteObject(made), 1) << "it lives on in the context";
    }
    Sheet(const Sheet&) = delete;
    Sheet& operator=(const Sheet&) = delete;
    ~Sheet() {
        DeleteDC(context);
        DeleteObject(bitmap);
    }

    void Draw(int32_t x, int32_t y, std::string_view text) const {
        EXPECT_EQ(TextOutA(context, x, y, text.data(), static_cast<int32_t>(text.size())), 1);
    }
    [[nodiscard]] int32_t Width(std::string_view text) const {
        SIZE size{};
        const auto count = static_cast<int32_t>(text.size());
        EXPECT_EQ(GetTextExtentPointA(context, text.data(), count, &size), 1);
        EXPECT_EQ(size.cy, Metrics().tmHeight);
        return size.cx;
    }
    [[nodiscard]] TEXTMETRIC Metrics() const {
        TEXTMETRIC metrics{};
        EXPECT_EQ(GetTextMetricsA(context, &metrics), 1);
        return metrics;
    }
    [[nodiscard]] std::vector<ColorRef> Colors() const {
        BITMAP record{};
        GetObjectA(bitmap, sizeof record, &record);
        const auto stride = static_cast<size_t>(record.bmWidthBytes);
        const auto columns = static_cast<size_t>(width);
        const uint32_t bits = record.bmBitsPixel;
        std::vector<uint8_t> bytes(stride * static_cast<size_t>(height));
        GetBitmapBits(bitmap, static_cast<int32_t>(bytes.size()), bytes.data());
        std::vector<ColorRef> colors;
        for (size_t i = 0; i < columns * static_cast<size_t>(height); i++) {
            const size_t bit = i % columns * bits;
            const uint8_t* at = &bytes[i / columns * stride + bit / 8];
            const uint32_t pixel = bits == 24
                                       ? at[0] | uint32_t{at[1]} << 8U | uint32_t{at[2]} << 16U
                                       : uint32_t{*at} >> (8 - bits - bit % 8) & ((1U << bits) - 1);
            colors.push_back(vellim::ColorOfPixel(bits, pixel));
        }
        return colors;
    }
    [[nodiscard]] std::vector<std::string> Picture() const {
        std::vector<std::string> rows;
        for (const ColorRef color : Colors()) {
            if (rows.empty() || rows.back().size() == static_cast<size_t>(width))
                rows.emplace_back();
            rows.back() += color == kWhite ? '.' : '#';
        }
        return rows;
    }
    // The rows that have ink: the first, and the one behind the last.
    [[nodiscard]] std::pair<int32_t, int32_t> InkRows() const {
        const auto rows = Picture();
        const auto isInked = [](const std::string& row) {
            return std::ranges::count(row, '#') != 0;
        };
        const auto last = std::find_if(rows.rbegin(), rows.rend(), isInked).base();
        return {static_cast<int32_t>(std::ranges::find_if(rows, isInked) - rows.begin()),
                static_cast<int32_t>(last - rows.begin())};
    }
    [[nodiscard]] int64_t Ink() const {
        int64_t ink = 0;
        for (const ColorRef color : Colors())
            ink += 255 - int64_t{color & 0xFFU};
        return ink / 255;
    }
};

constexpr std::string_view kGolden[] = {
    "...........................", "...........................", "...##...............##.....",
    "...##..............##......", "..#..#.....................", "..#..#....###.#...####.....",
    ".#....#..#...##..#....#....", ".#....#..#....#..#....#....", ".######..#....#..######....",
    ".#....#..#....#..#.........", ".#....#..#...##..#....#....", ".#....#...###.#...####.....",
    "..............#............", ".........#....#............", "..........####.............",
    "..........................."};

// In colours, of every depth, and scaled: each pixel of the original a square.
TEST(Text, OwnFontIsDrawnToThePixel) {
    for (const uint32_t depth : kDepths) {
        for (const int32_t scale : {1, 2, -3}) {
            const Sheet sheet(Font("vellim", 16 * scale), depth);
            SetTextColor(sheet.context, 0x0000FF);
            sheet.Draw(5, 4, "Ag\xE9");
            const auto rows = sheet.Picture();
            const auto side = static_cast<size_t>(std::abs(scale));
            for (size_t i = 0; i < rows.size() * rows[0].size(); i++) {
                const size_t x = i % rows[0].size(), y = i / rows[0].size();
                const size_t u = (x - 5) / side, v = (y - 4) / side;
                const bool isIn = x >= 5 && y >= 4 && v < 16 && u < kGolden[0].size();
                ASSERT_EQ(rows[y][x], isIn ? kGolden[v][u] : '.') << depth << ' ' << x << ',' << y;
            }
            EXPECT_EQ(sheet.Width("Ag\xE9\n\x1F"), static_cast<int32_t>(24 * side));
            EXPECT_EQ(depth == 1, std::ranges::count(sheet.Colors(), 0x0000FFU) == 0) << "red";
        }
    }
}

const struct {
    LOGFONT font;
} kFonts[] = {{Font("Arial", -11)},
              {Font("Times New Roman", 40, FW_BOLD)},
              {Font("Courier New", -33)},
              {Font("Verdana", -12, 0, 1)},
              {Font("Tms Rmn", -27, 700, 1)},
              {Font("VELLIM", 21)},
              {Font("", 0)}};

TEST(Text, LineIsAsWideAsItsCharactersOnEverySurface) {
    std::string all;
    for (int32_t byte = 1; byte < 256; byte++)
        all += static_cast<char>(byte);
    for (const auto& [font] : kFonts) {
        const Sheet sheet(font);
        const vellim::TextWidths widths(sheet.context);
        int32_t sum = 0, widest = 0;
        for (const char& c : all) {
            const int32_t width = sheet.Width({&c, 1});
            EXPECT_EQ(width, widths.Of(static_cast<uint8_t>(c)));
            EXPECT_TRUE(width == 0 || static_cast<uint8_t>(c) >= 32);
            sum += width;
            widest = std::max(widest, width);
        }
        for (const uint32_t depth : kDepths)
            EXPECT_EQ(Sheet(font, depth).Width(all), sum);
        EXPECT_EQ(sheet.Metrics().tmMaxCharWidth, widest);
        EXPECT_EQ(sheet.Width(""), 0);
    }
}

// What stands behind a text begins where it ends, and text looks the same wherever it stands.
TEST(Text, IsDrawnAsItIsMeasured) {
    for (const auto& [font] : kFonts) {
        for (const uint32_t depth : {1U, 8U}) {
            const Sheet whole(font, depth), parts(font, depth), steps(font, depth);
            whole.Draw(20, 9, "Hi~\t\x80g");
            const auto moved = whole.Picture();
            parts.Draw(20, 9, "Hi~\t");
            parts.Draw(20 + parts.Width("Hi~"), 9, "\x80g");
            EXPECT_EQ(parts.Picture(), moved);
            const int32_t advances[] = {
                steps.Width("H"), steps.Width("i"), steps.Width("~"), 0, steps.Width("\x80"), -5};
            EXPECT_EQ(ExtTextOutA(steps.context, 20, 9, 0, nullptr, "Hi~\t\x80g", 6, advances), 1);
            EXPECT_EQ(steps.Picture(), moved);
            PatBlt(steps.context, 0, 0, 150, 60, WHITENESS);
            steps.Draw(23, 14, "Hi~\t\x80g");
            BitBlt(steps.context, 0, 0, 147, 55, steps.context, 3, 5, SRCCOPY);
            EXPECT_EQ(steps.Picture(), moved);
        }
    }
}

TEST(Text, StandsOnItsBaselineInsideItsLine) {
    for (const std::string_view face : {"Arial", "Times New Roman", "Courier New", "VELLIM"}) {
        for (const int32_t height : {-11, -12, -13, -16, -21, -33, 16, 24, 40}) {
            const Sheet sheet(Font(face, height), 1, 900, 70);
            const TEXTMETRIC metrics = sheet.Metrics();
            EXPECT_EQ(metrics.tmAscent + metrics.tmDescent, metrics.tmHeight);
            EXPECT_EQ(height > 0 ? metrics.tmHeight : metrics.tmInternalLeading - metrics.tmHeight,
                      height);
            sheet.Draw(10, 9, "HEFTIZ");
            EXPECT_EQ(sheet.InkRows().second, 9 + metrics.tmAscent) << face << height;
            sheet.Draw(10, 9, "abcdefghijklmnopqrstuvwxyz0123456789");
            const auto [top, bottom] = sheet.InkRows();
            EXPECT_GE(top, 9) << face << height;
            EXPECT_GT(bottom, 9 + metrics.tmAscent) << face << height;
            EXPECT_LE(bottom, 9 + metrics.tmHeight) << face << height;
        }
    }
    LOGFONT wide = Font("Arial", -20);
    for (wide.lfWidth = 6; wide.lfWidth < 40; wide.lfWidth += 7)
        EXPECT_NEAR(Sheet(wide).Metrics().tmAveCharWidth, wide.lfWidth, 1);
}

TEST(Text, SurfacesAgreeWhereInkIs) {
    for (const auto& [font] : kFonts) {
        const Sheet bits(font), greys(font, 24);
        for (const Sheet* sheet : {&bits, &greys})
            sheet->Draw(8, 6, "Rag\x80");
        for (const uint32_t depth : {4U, 8U}) {
            const Sheet other(font, depth);
            other.Draw(8, 6, "Rag\x80");
            EXPECT_EQ(other.Picture(), bits.Picture()) << depth;
        }
        const auto ink = bits.Colors(), shades = greys.Colors();
        int32_t astray = 0;
        for (size_t i = 0; i < ink.size(); i++) {
            const uint32_t grey = shades[i] & 0xFFU;
            if (ink[i] == 0 ? grey > 220 : grey < 70) astray++;
        }
        EXPECT_GT(bits.Ink(), 20);
        EXPECT_LE(astray, bits.Ink() / 16);
        EXPECT_NEAR(static_cast<double>(greys.Ink()), static_cast<double>(bits.Ink()),
                    static_cast<double>(bits.Ink()) * 0.3);
    }
}

// Against a model pixel by pixel, with a font whose pixels are full ones.
TEST(Text, FillsAndClipsAsItIsTold) {
    std::mt19937 dice(7);
    const auto roll = [&](int32_t least, int32_t most) {
        return std::uniform_int_distribution<int32_t>(least, most)(dice);
    };
    for (int32_t round = 0; round < 150; round++) {
        const LOGFONT font = Font("VELLIM", 16);
        const int32_t x = roll(-30, 140), y = roll(-15, 55);
        const auto mode = roll(1, 2);
        const auto options = static_cast<uint32_t>(2 * roll(0, 3));
        const RECT rect = {roll(-20, 80), roll(-20, 30), roll(0, 160), roll(0, 70)};
        const RECT taken = {roll(-20, 80), roll(-20, 30), roll(0, 160), roll(0, 70)};
        const Sheet mask(font), sheet(font, kDepths[roll(1, 3)]);
        mask.Draw(x, y, "%Q");
        SetBkMode(sheet.context, mode);
        SetTextColor(sheet.context, 0x0000FF);
        SetBkColor(sheet.context, 0x00FF00);
        ExcludeClipRect(sheet.context, taken.left, taken.top, taken.right, taken.bottom);
        EXPECT_EQ(ExtTextOutA(sheet.context, x, y, options, &rect, "%Q", 2, nullptr), 1);
        const auto holds = [](RECT r, int32_t u, int32_t v) {
            if (r.left > r.right) std::swap(r.left, r.right);
            if (r.top > r.bottom) std::swap(r.top, r.bottom);
            return u >= r.left && u < r.right && v >= r.top && v < r.bottom;
        };
        const auto ink = mask.Colors(), colors = sheet.Colors();
        for (int32_t i = 0; i < 150 * 60; i++) {
            const int32_t u = i % 150, v = i / 150;
            const auto at = static_cast<size_t>(i);
            const bool isIn = holds(rect, u, v);
            const bool isShown = (options & ETO_CLIPPED) == 0 || isIn;
            ColorRef expected = (options & ETO_OPAQUE) != 0 && isIn ? 0x00FF00 : kWhite;
            if (isShown && mode == OPAQUE && holds({x, y, x + 16, y + 16}, u, v))
                expected = 0x00FF00;
            if (isShown && ink[at] == 0) expected = 0x0000FF;
            ASSERT_EQ(colors[at], holds(taken, u, v) ? kWhite : expected) << round << ' ' << i;
        }
    }
}

TEST(Text, IsSizedAndPlacedByTheMapping) {
    for (const std::string_view face : {"VELLIM", "Arial"}) {
        LOGFONT font = Font(face, 14);
        const Sheet mapped(font);
        const int32_t width = mapped.Width("Mapped");
        SetMapMode(mapped.context, MM_ANISOTROPIC);
        SetWindowExtEx(mapped.context, 100, -100, nullptr);
        SetViewportExtEx(mapped.context, 200, 200, nullptr);
        SetViewportOrgEx(mapped.context, 1, 30, nullptr);
        const RECT half = {0, 99, 30, -99};
        ExtTextOutA(mapped.context, 4, 6, ETO_CLIPPED, &half, "Mapped", 6, nullptr);
        font.lfHeight = 28;
        const Sheet plain(font);
        const RECT pixels = {1, -99, 61, 99};
        ExtTextOutA(plain.context, 9, 18, ETO_CLIPPED, &pixels, "Mapped", 6, nullptr);
        EXPECT_EQ(mapped.Picture(), plain.Picture()) << face;
        EXPECT_EQ(mapped.Metrics().tmHeight, 14);
        EXPECT_EQ(mapped.Width("Mapped"), (plain.Width("Mapped") + 1) / 2);
        SetViewportExtEx(mapped.context, 300, 100, nullptr);
        EXPECT_NEAR(mapped.Width("Mapped"), width, face == "VELLIM" ? 0 : width / 4);
        mapped.Draw(0, 0, "Mapped");
    }
}

TEST(Text, BoldIsHeavierItalicLeansAndLinesRunAcross) {
    for (const std::string_view face : {"Arial", "Courier", "VELLIM"}) {
        const Sheet plain(Font(face, 24)), bold(Font(face, 24, 700)), italic(Font(face, 24, 0, 1));
        for (const Sheet* sheet : {&plain, &bold, &italic})
            sheet->Draw(4, 4, "I");
        EXPECT_GT(bold.Ink() * 5, plain.Ink() * 6) << face;
        EXPECT_EQ(bold.Metrics().tmWeight - plain.Metrics().tmWeight, 300);
        EXPECT_EQ(italic.Metrics().tmItalic, 1);
        const auto leant = italic.Picture();
        const auto [top, bottom] = italic.InkRows();
        EXPECT_GT(leant[static_cast<size_t>(top)].rfind('#'),
                  leant[static_cast<size_t>(bottom) - 1].rfind('#') + 1);
        LOGFONT lined = Font(face, 24);
        lined.lfUnderline = lined.lfStrikeOut = 1;
        const Sheet lines(lined);
        lines.Draw(4, 4, "Illi");
        const std::string across(static_cast<size_t>(lines.Width("Illi")), '#');
        const auto rows = lines.Picture();
        const auto baseline = rows.begin() + 4 + lines.Metrics().tmAscent;
        const auto isLine = [&](const std::string& row) {
            return row.substr(4).starts_with(across);
        };
        EXPECT_GE(std::count_if(rows.begin() + 4, baseline, isLine), 1) << face;
        EXPECT_GE(std::count_if(baseline, baseline + lines.Metrics().tmDescent, isLine), 1);
    }
}

TEST(Text, WeightAndSlantAreMadeWhereAFaceHasNone) {
    const vellim::OutlineLibrary library;
    auto file = vellim::FaceInstead({.name = "Arial"});
    if (!file) GTEST_SKIP() << "no fonts here";
    auto plain = vellim::OutlineFace::Open(library, *file);
    file->needsWeight = file->needsSlant = true;
    auto made = vellim::OutlineFace::Open(library, *file);
    ASSERT_TRUE(plain && made && plain->SetSize(48, 48) && made->SetSize(48, 48));
    const uint32_t glyph = plain->GlyphOf('I').value_or(0);
    EXPECT_EQ(made->Advance(glyph), plain->Advance(glyph) + 2);
    const auto before = plain->Draw(glyph, vellim::Shades::Two);
    const auto after = made->Draw(glyph, vellim::Shades::Two);
    EXPECT_EQ(std::pair(after.top, after.height), std::pair(before.top, before.height));
    EXPECT_NEAR(after.width - before.width, 2 + before.height * 0.2, 2);
    file->path = __FILE__;
    EXPECT_FALSE(vellim::OutlineFace::Open(library, *file)) << "no font";
}

TEST(Text, AnyNameGivesAFont) {
    const auto drawn = [](std::string_view name, std::string_view text) {
        const Sheet sheet(Font(name, -20));
        sheet.Draw(3, 3, text);
        EXPECT_GT(sheet.Ink(), 10) << name;
        return sheet.Picture();
    };
    EXPECT_EQ(drawn("Arial", "Name"), drawn("ARIAL", "Name"));
    EXPECT_EQ(drawn("Tms Rmn", "Name"), drawn("times new roman", "Name"));
    for (const std::string_view name :
         {"Nobody's Sans", "\x01\xFF\xFE%s:bold", "12345678901234567890123456789012"})
        drawn(name, "Name");
    const Sheet fixed(Font("Nobody's Mono", -20));
    EXPECT_EQ(fixed.Width("WWW"), fixed.Width("iii"));
    EXPECT_EQ(drawn("Arial", "\x81"), drawn("Arial", "\x9D")) << "a box";
}

TEST(Text, AbsurdArgumentsAreRefusedOrClipped) {
    const Sheet sheet(Font("Arial", 16));
    const DeviceContextHandle dc = sheet.context;
    SIZE size{1, 1};
    const RECT all = {kLeast, kLeast, kMost, kMost};
    EXPECT_EQ(GetTextExtentPointA(dc, nullptr, 1, &size) + GetTextExtentPointA(dc, "a", -1, &size) +
                  GetTextExtentPointA(dc, "a", 1, nullptr) + GetTextExtentPointA(0, "a", 1, &size) +
                  GetTextMetricsA(dc, nullptr) + TextOutA(dc, 0, 0, nullptr, 1) +
                  TextOutA(dc, 0, 0, "a", -1) + TextOutA(sheet.bitmap, 0, 0, "a", 1) +
                  ExtTextOutA(dc, 0, 0, ETO_CLIPPED, nullptr, "a", 1, nullptr) +
                  ExtTextOutA(dc, 0, 0, 0, &all, "a", 0x80000000, nullptr) + SetBkMode(dc, 3),
              0);
    EXPECT_EQ(size.cx + size.cy, 0);
    EXPECT_EQ(CreateFontIndirectA(nullptr) + GetStockObject(0) + GetStockObject(kMost), 0U);
    EXPECT_EQ(DeleteObject(GetStockObject(SYSTEM_FONT)), 0);
    EXPECT_EQ(ExtTextOutA(dc, 0, 0, ETO_OPAQUE, &all, nullptr, 0, nullptr), 1);
    EXPECT_EQ(TextOutA(GetDC(0), 0, 0, "a", 1), 1) << "no pixels, no failure";
    const int32_t steps[] = {kMost, kMost, kLeast, kLeast, kLeast, 7};
    for (const int32_t place : {kLeast, -70000, 70000, kMost}) {
        SetBkMode(dc, OPAQUE);
        sheet.Draw(place, place, "far off");
        EXPECT_EQ(ExtTextOutA(dc, place, 0, ETO_CLIPPED, &all, "stride", 6, steps), 1);
        LOGFONT font = Font("Times", place, place, 1);
        font.lfUnderline = 1;
        for (font.lfWidth = 0; font.lfWidth < 2; font.lfWidth++) {
            const Sheet huge(font, place > 0 ? 24 : 1);
            huge.Draw(-1000, -2000, "W");
            EXPECT_LE(huge.Metrics().tmHeight, 4 * 4096);
            SetMapMode(huge.context, MM_ANISOTROPIC);
            SetViewportExtEx(huge.context, place, 1, nullptr);
            huge.Draw(0, 0, "x");
            SetWindowExtEx(huge.context, -1, place, nullptr);
            huge.Draw(0, 0, "x");
        }
    }
}

TEST(Text, ThreadsDrawTheSame) {
    const auto draw = [](std::vector<std::string>& picture) {
        for (const auto& [font] : kFonts) {
            const Sheet sheet(font, 24);
            sheet.Draw(2, 2, "Thread \x80");
            for (const std::string& row : sheet.Picture())
                picture.push_back(row);
        }
    };
    std::array<std::vector<std::string>, 4> pictures;
    std::vector<std::thread> threads;
    threads.reserve(pictures.size());
    for (auto& picture : pictures)
        threads.emplace_back(draw, std::ref(picture));
    for (std::thread& thread : threads)
        thread.join();
    for (const auto& picture : pictures)
        EXPECT_EQ(picture, pictures[0]);
}

TEST(TextDeathTest, OwnFontServesWhereThereIsNone) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");  // in a process that has seen no fonts
    const auto drawWithout = [](const char* settings) {
        setenv("FONTCONFIG_FILE", settings, 1);
        const Sheet found(Font("Arial", 16)), own(Font("VELLIM", 16));
        found.Draw(1, 1, "none");
        own.Draw(1, 1, "none");
        std::exit(found.Ink() > 0 && found.Picture() == own.Picture() ? 0 : 1);
    };
    EXPECT_EXIT(drawWithout("/dev/null"), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(drawWithout("/nowhere/fonts.conf"), testing::ExitedWithCode(0), "");
}

TEST(Graphics, BrushesFillAndRecordsMakeBitmaps) {
    const uint8_t rows[] = {0xA0, 0, 9, 9, 0x40, 0, 9, 9};
    BITMAP record = {0, 3, 2, 4, 1, 1, const_cast<uint8_t*>(rows)};  // NOLINT(*-const-cast)
    const BitmapHandle made = CreateBitmapIndirect(&record);
    std::array<uint8_t, 4> bits{};
    EXPECT_EQ(GetBitmapBits(made, 4, bits.data()), 4);
    EXPECT_EQ(bits, (std::array<uint8_t, 4>{0xA0, 0, 0x40, 0}));
    record.bmWidthBytes = 1;
    EXPECT_EQ(CreateBitmapIndirect(&record) + CreateBitmapIndirect(nullptr), 0U);
    EXPECT_EQ(DeleteObject(made), 1);

    const Sheet sheet(Font("", 0), 24, 9, 9);
    const BrushHandle brush = CreateSolidBrush(0x112233);
    const RECT some = {2, 3, 5, 7}, none = {5, 7, 2, 3};
    EXPECT_EQ(FillRect(sheet.context, &none, brush) + FillRect(sheet.context, &some, brush), 2);
    EXPECT_EQ(std::ranges::count(sheet.Colors(), 0x112233U), 12);
    EXPECT_EQ(FillRect(sheet.context, nullptr, brush) + FillRect(0, &some, brush) +
                  FillRect(sheet.context, &some, sheet.bitmap),
              0);
    DeleteObject(brush);
}

}  // namespace
