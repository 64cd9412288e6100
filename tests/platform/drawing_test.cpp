// Device contexts and drawing: copies of all kinds against a plain model that goes pixel by pixel.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <map>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/graphics/surface.h"
#include "vellim/graphics.h"
#include "vellim/platform.h"

namespace {

constexpr int32_t kLeast = std::numeric_limits<int32_t>::min();
constexpr int32_t kMost = std::numeric_limits<int32_t>::max();
constexpr ColorRef kWhite = 0xFFFFFF;

using Pixels = std::vector<uint32_t>;

// A context in memory with a bitmap of its own.
struct Canvas {
    int32_t width, height;
    uint32_t bits;
    BitmapHandle bitmap;
    DeviceContextHandle context = CreateCompatibleDC(0);

    Canvas(int32_t w, int32_t h, uint32_t depth)
        : width(w), height(h), bits(depth), bitmap(CreateBitmap(w, h, 1, depth, nullptr)) {
        SelectObject(context, bitmap);
    }
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;
    ~Canvas() {
        DeleteDC(context);
        DeleteObject(bitmap);
    }

    [[nodiscard]] size_t Stride() const {
        return (static_cast<size_t>(width) * bits + 15) / 16 * 2;
    }
    [[nodiscard]] size_t Bytes() const { return Stride() * static_cast<size_t>(height); }
    void Fill(const std::function<uint32_t()>& byte) const {
        std::vector<uint8_t> bytes(Bytes());
        for (uint8_t& b : bytes)
            b = static_cast<uint8_t>(byte());
        SetBitmapBits(bitmap, static_cast<uint32_t>(bytes.size()), bytes.data());
    }
    [[nodiscard]] Pixels Read() const {
        std::vector<uint8_t> bytes(Bytes());
        GetBitmapBits(bitmap, static_cast<int32_t>(bytes.size()), bytes.data());
        Pixels pixels;
        for (int32_t i = 0; i < width * height; i++) {
            const size_t bit = static_cast<size_t>(i % width) * bits;
            const uint8_t* at = &bytes[static_cast<size_t>(i / width) * Stride() + bit / 8];
            pixels.push_back(bits == 24
                                 ? at[0] | uint32_t{at[1]} << 8U | uint32_t{at[2]} << 16U
                                 : uint32_t{at[0]} >> (8 - bits - bit % 8) & ((1U << bits) - 1));
        }
        return pixels;
    }
    void SetMapping(POINT windowOrigin, POINT windowExtent, POINT origin, POINT extent) const {
        SetMapMode(context, MM_ANISOTROPIC);
        SetWindowOrgEx(context, windowOrigin.x, windowOrigin.y, nullptr);
        SetWindowExtEx(context, windowExtent.x, windowExtent.y, nullptr);
        SetViewportOrgEx(context, origin.x, origin.y, nullptr);
        SetViewportExtEx(context, extent.x, extent.y, nullptr);
    }
};

// One axis of a copy, told pixel by pixel.
struct Line {
    int64_t to, toEnd, from, fromEnd;

    [[nodiscard]] bool Holds(int64_t place) const {
        return place >= std::min(to, toEnd) && place < std::max(to, toEnd);
    }
    [[nodiscard]] bool Falls(int64_t source, int64_t place) const {
        const auto count = static_cast<uint64_t>(std::abs(toEnd - to));
        const auto fromCount = static_cast<uint64_t>(std::abs(fromEnd - from));
        const bool turned = (to > toEnd) != (from > fromEnd);
        const int64_t offset =
            turned ? std::max(to, toEnd) - 1 - place : place - std::min(to, toEnd);
        const auto i = static_cast<uint64_t>(offset);
        const int64_t j = source - std::min(from, fromEnd);
        const auto begin = static_cast<int64_t>(i * fromCount / count);
        return fromCount != 0 &&
               (j == begin || (j > begin && j < static_cast<int64_t>((i + 1) * fromCount / count)));
    }
};

struct Model {
    const Canvas &to, &from;
    std::vector<POINT> toCorners, fromCorners;  // mapped to pixels
    int32_t mode;
    uint32_t operation;
    ColorRef text, back, brush;
    std::vector<RECT> excluded;

    [[nodiscard]] uint32_t Changed(uint32_t pixel) const {
        if (from.bits == to.bits) return pixel;
        if (from.bits == 1) return vellim::NearestPixel(to.bits, pixel != 0 ? back : text);
        const ColorRef color = vellim::ColorOfPixel(from.bits, pixel);
        if (to.bits > 1) return vellim::NearestPixel(to.bits, color);
        const uint32_t marked = vellim::NearestPixel(from.bits, back);
        return color == vellim::ColorOfPixel(from.bits, marked) ? 1 : 0;
    }

    [[nodiscard]] uint32_t Drawn(uint32_t before, uint32_t source) const {
        const uint32_t all = (1U << to.bits) - 1;
        switch (operation) {
            case SRCCOPY:
                return source;
            case NOTSRCCOPY:
                return ~source & all;
            case SRCPAINT:
                return before | source;
            case SRCAND:
                return before & source;
            default:
                return before ^ source;
        }
    }

    // What stands at a place after the copy.
    [[nodiscard]] uint32_t At(int32_t x, int32_t y, uint32_t before, const Pixels& source) const {
        const Line across = {toCorners[0].x, toCorners[1].x, fromCorners[0].x, fromCorners[1].x};
        const Line down = {toCorners[0].y, toCorners[1].y, fromCorners[0].y, fromCorners[1].y};
        if (!across.Holds(x) || !down.Holds(y)) return before;
        for (const RECT& r : excluded)
            if (x >= r.left && x < r.right && y >= r.top && y < r.bottom) return before;
        if (operation == PATCOPY) return vellim::NearestPixel(to.bits, brush);
        if (operation == BLACKNESS) return vellim::NearestPixel(to.bits, 0);
        if (operation == WHITENESS) return vellim::NearestPixel(to.bits, kWhite);
        uint32_t joined = 0;
        bool any = false;
        for (int32_t v = 0; v < from.height; v++) {
            for (int32_t u = 0; down.Falls(v, y) && u < from.width; u++) {
                if (!across.Falls(u, x)) continue;
                const auto row = static_cast<size_t>(v);
                const uint32_t pixel =
                    source[row * static_cast<size_t>(from.width) + static_cast<size_t>(u)];
                if (!any || mode == COLORONCOLOR)
                    joined = pixel;
                else
                    joined = mode == BLACKONWHITE ? joined & pixel : joined | pixel;
                any = true;
            }
        }
        return any ? Drawn(before, Changed(joined)) : before;
    }
};

class Dice {
  public:
    explicit Dice(uint32_t seed) : engine_(seed) {}
    int32_t Between(int32_t least, int32_t most) {
        return std::uniform_int_distribution<int32_t>(least, most)(engine_);
    }
    template <typename T>
    T Of(std::initializer_list<T> values) {
        return values.begin()[Between(0, static_cast<int32_t>(values.size()) - 1)];
    }
    // Now and then one that overflows what is careless with it.
    int32_t Place(int32_t reach) {
        if (Between(0, 100) == 0) return Of({kLeast, kLeast + 1, kMost, kMost - 1, 0});
        return Between(-reach, reach);
    }
    int32_t Extent() {
        const int32_t extent = Between(0, 3) == 0 ? Of({kLeast, kMost, 70000}) : Place(4);
        return extent == 0 ? 1 : extent;
    }
    void Map(const Canvas& canvas) {
        if (Between(0, 1) == 0) return;
        const int32_t x = Extent(), y = Extent();
        const bool isEven = Between(0, 1) == 0;  // huge extents that come to one to one
        canvas.SetMapping({Place(9), Place(9)}, {x, y}, {Place(9), Place(9)},
                          {isEven ? x : Extent(), isEven ? y : Extent()});
    }

  private:
    std::mt19937 engine_;
};

std::vector<POINT> Corners(const Canvas& canvas, POINT at, POINT size) {
    const auto end = [](int32_t place, int32_t by) {
        return static_cast<int32_t>(std::clamp<int64_t>(int64_t{place} + by, kLeast, kMost));
    };
    std::vector<POINT> corners = {at, {end(at.x, size.x), end(at.y, size.y)}};
    EXPECT_EQ(LPtoDP(canvas.context, corners.data(), 2), 1);
    return corners;
}

TEST(Drawing, CopiesAsThePlainModelDoes) {
    size_t drawn = 0;
    for (uint32_t seed = 0; seed < 6000; seed++) {
        Dice dice(seed);
        const auto byte = [&] { return static_cast<uint32_t>(dice.Between(0, 255)); };
        const auto depth = [&] { return dice.Of({1U, 4U, 8U, 24U}); };
        const Canvas to(dice.Between(1, 90), dice.Between(1, 12), depth());
        const int32_t otherWidth = dice.Between(0, 5) == 0 ? 1 : dice.Between(1, 200);
        const Canvas other(otherWidth, dice.Between(1, 12), depth());
        const Canvas& from = dice.Between(0, 3) == 0 ? to : other;
        to.Fill(byte);
        other.Fill(byte);
        dice.Map(to);
        dice.Map(other);
        const auto color = [&] { return dice.Of({ColorRef{0}, kWhite, byte() << 8U | byte()}); };
        Model model = {to, from, {}, {}, dice.Between(1, 3), 0, color(), color(), color(), {}};
        model.operation = dice.Of<uint32_t>({SRCCOPY, NOTSRCCOPY, SRCPAINT, SRCAND, SRCINVERT,
                                             SRCCOPY, PATCOPY, BLACKNESS, WHITENESS});
        const BrushHandle brush = CreateSolidBrush(model.brush);
        SelectObject(to.context, brush);
        SetStretchBltMode(to.context, model.mode);
        SetTextColor(to.context, model.text);
        for (const Canvas* canvas : {&to, &from})
            SetBkColor(canvas->context, model.back);
        for (int32_t i = dice.Between(-2, 3); i > 0; i--) {
            const POINT at = {dice.Place(60), dice.Place(9)},
                        size = {dice.Place(40), dice.Place(9)};
            const auto c = Corners(to, at, {size.x, size.y});
            const int64_t right = int64_t{at.x} + size.x, bottom = int64_t{at.y} + size.y;
            if (right != static_cast<int32_t>(right) || bottom != static_cast<int32_t>(bottom))
                continue;
            model.excluded.push_back({std::min(c[0].x, c[1].x), std::min(c[0].y, c[1].y),
                                      std::max(c[0].x, c[1].x), std::max(c[0].y, c[1].y)});
            EXPECT_NE(ExcludeClipRect(to.context, at.x, at.y, static_cast<int32_t>(right),
                                      static_cast<int32_t>(bottom)),
                      CLIP_ERROR);
        }
        const POINT at = {dice.Place(20), dice.Place(5)}, fromAt = {dice.Place(20), dice.Place(5)};
        const POINT size = {dice.Place(100), dice.Place(12)};
        const bool isStretched = dice.Between(0, 1) == 0;
        const POINT fromSize =
            isStretched ? POINT{dice.Place(200), dice.Place(15)} : POINT{size.x, size.y};
        model.toCorners = Corners(to, at, size);
        model.fromCorners = Corners(from, fromAt, fromSize);

        const Pixels before = to.Read(), source = from.Read();
        ASSERT_EQ(isStretched
                      ? StretchBlt(to.context, at.x, at.y, size.x, size.y, from.context, fromAt.x,
                                   fromAt.y, fromSize.x, fromSize.y, model.operation)
                      : BitBlt(to.context, at.x, at.y, size.x, size.y, from.context, fromAt.x,
                               fromAt.y, model.operation),
                  1);
        const Pixels after = to.Read();
        for (size_t i = 0; i < after.size(); i++) {
            const auto x = static_cast<int32_t>(i) % to.width;
            const auto y = static_cast<int32_t>(i) / to.width;
            ASSERT_EQ(after[i], model.At(x, y, before[i], source))
                << "seed " << seed << " at " << x << ',' << y;
            drawn += static_cast<size_t>(after[i] != before[i]);
        }
        DeleteObject(brush);
    }
    EXPECT_GT(drawn, 40000U) << "most copies miss";
}

// What a context keeps for the next copy of its kind never shows.
TEST(Drawing, ManyCopiesOnOneContextAreEachAsOnAFreshOne) {
    for (const uint32_t depth : {1U, 8U, 24U}) {
        Dice dice(depth);
        const Canvas worn(60, 6, depth);
        std::array<PALETTEENTRY, 256> colors{};
        for (int32_t i = 0; i < 3000; i++) {
            const Canvas from(dice.Of({1, 40, 100}), 2, dice.Of({1U, 1U, 8U, 24U}));
            const bool isBlank = dice.Between(0, 1) == 0;
            from.Fill([&] { return isBlank ? 0 : static_cast<uint32_t>(dice.Between(0, 255)); });
            if (dice.Between(0, 99) == 0) {
                colors.fill({static_cast<uint8_t>(i), 0, 9, 0});
                SetDisplayPalette(dice.Between(0, 1) == 0 ? colors.data() : nullptr);
            }
            const Canvas fresh(60, 6, depth);
            BitBlt(fresh.context, 0, 0, 60, 6, worn.context, 0, 0, SRCCOPY);
            const int32_t y = dice.Between(0, 5), height = dice.Between(0, 2);
            const int32_t width = dice.Of({20, 40, 100}), mode = dice.Between(1, 3);
            const auto color = dice.Of<ColorRef>({0, 0, 0xFF}), back = dice.Of({kWhite, 0x1234U});
            const auto operation = dice.Of<uint32_t>({SRCCOPY, NOTSRCCOPY, SRCINVERT});
            for (const Canvas* canvas : {&worn, &fresh}) {
                SetStretchBltMode(canvas->context, mode);
                SetTextColor(canvas->context, color);
                SetBkColor(canvas->context, back);
                StretchBlt(canvas->context, 5, y, width, height, from.context, 0, 0, from.width, 2,
                           operation);
            }
            ASSERT_EQ(worn.Read(), fresh.Read()) << depth << ' ' << i;
        }
        SetDisplayPalette(nullptr);
    }
}

TEST(Drawing, JoinsAndRepeatsAsWorkedOutByHand) {
    const struct {
        int32_t mode, width;
        std::string_view row;
    } cases[] = {{BLACKONWHITE, 4, "1000"},  {WHITEONBLACK, 4, "1111"},
                 {COLORONCOLOR, 4, "1010"},  {BLACKONWHITE, 12, "111010001110"},
                 {COLORONCOLOR, -4, "0101"}, {BLACKONWHITE, 0, ""}};
    const Canvas from(10, 1, 1);
    const uint8_t pixels[] = {0b11010011, 0b10000000};  // to 4: 11 010 01 110
    SetBitmapBits(from.bitmap, 2, pixels);
    for (const auto& c : cases) {
        const Canvas to(12, 1, 1);
        SetStretchBltMode(to.context, c.mode);
        EXPECT_EQ(StretchBlt(to.context, c.width < 0 ? -c.width : 0, 0, c.width, 1, from.context, 0,
                             0, 10, 1, SRCCOPY),
                  1);
        std::string row;
        for (const uint32_t pixel : to.Read())
            row += pixel != 0 ? '1' : '0';
        row.resize(c.row.size());
        EXPECT_EQ(row, c.row) << c.mode << ' ' << c.width;
    }
}

// Columns drawn one by one toggle each pixel once, whatever the scale.
TEST(Drawing, NeighboursMeetWithoutGapOrOverlap) {
    for (const int32_t extent : {1, 7, 100, 333, -333, 1000}) {
        const Canvas from(1, 1, 1), to(std::abs(extent), 1, 1);
        PatBlt(from.context, 0, 0, 1, 1, WHITENESS);
        to.SetMapping({-50, 0}, {271, 1}, {extent < 0 ? -extent : 0, 0}, {extent, 1});
        for (int32_t x = -50; x < 221; x++)
            EXPECT_EQ(BitBlt(to.context, x, 0, 1, 1, from.context, 0, 0, SRCINVERT), 1);
        EXPECT_EQ(to.Read(), Pixels(to.Read().size(), 1)) << extent;
    }
}

// Two rows of two pixels each, the lower first: red and green, blue and a grey.
TEST(Drawing, DibsOf16And32BitsAreDrawn) {
    const uint8_t of16[] = {0x00, 0x7C, 0xE0, 0x03, 0x1F, 0x00, 0x42, 0x08};
    const uint8_t of32[] = {0, 0, 255, 9, 0, 255, 0, 9, 255, 0, 0, 9, 16, 16, 16, 9};
    for (const auto& [bits, pixels] : {std::pair<uint16_t, const uint8_t*>{16, of16}, {32, of32}}) {
        const BITMAPINFO info{{40, 2, 2, 1, bits, 0, 0, 0, 0, 0, 0}, {}};
        const Canvas to(2, 2, 24);
        EXPECT_EQ(StretchDIBits(to.context, 0, 0, 2, 2, 0, 0, 2, 2, pixels, &info, DIB_RGB_COLORS,
                                SRCCOPY),
                  2);
        EXPECT_EQ(to.Read(), (Pixels{0x0000FF, 0x101010, 0xFF0000, 0x00FF00})) << bits;
        EXPECT_EQ(SetDIBits(to.context, to.bitmap, 0, 2, pixels, &info, DIB_RGB_COLORS), 0);
    }
}

TEST(Drawing, PartOfADibIsThatOfItsBitmap) {
    struct Info : BITMAPINFO {
        RGBQUAD more[15];
    } info{};
    info.bmiHeader = {40, 9, 6, 1, 4, 0, 0, 0, 0, 0, 0};
    std::vector<uint8_t> bits(48);  // six rows
    for (uint32_t seed = 0; seed < 400; seed++) {
        Dice dice(seed);
        for (RGBQUAD& entry : info.more)
            entry.rgbRed = entry.rgbBlue = static_cast<uint8_t>(dice.Between(0, 255));
        for (uint8_t& byte : bits)
            byte = static_cast<uint8_t>(dice.Between(0, 255));
        const uint32_t depth = dice.Of({1U, 4U, 8U, 24U});
        const Canvas direct(12, 8, depth), copied(12, 8, depth), whole(9, 6, depth);
        EXPECT_EQ(SetDIBits(direct.context, whole.bitmap, 0, 6, bits.data(), &info, DIB_RGB_COLORS),
                  6);
        const int32_t x = dice.Place(9), y = dice.Place(6), width = dice.Place(12),
                      height = dice.Place(8);
        const int32_t from = dice.Between(-3, 9), fromY = dice.Between(-3, 6),
                      fromWidth = dice.Between(-9, 9), fromHeight = dice.Between(-6, 6);
        EXPECT_EQ(StretchDIBits(direct.context, x, y, width, height, from, fromY, fromWidth,
                                fromHeight, bits.data(), &info, DIB_RGB_COLORS, SRCPAINT),
                  6);
        StretchBlt(copied.context, x, y, width, height, whole.context, from, 6 - fromY - fromHeight,
                   fromWidth, fromHeight, SRCPAINT);
        EXPECT_EQ(direct.Read(), copied.Read()) << seed;
        for (const int32_t hostile : {kLeast, kMost})
            EXPECT_EQ(StretchDIBits(direct.context, x, y, width, hostile, hostile, hostile, hostile,
                                    hostile, bits.data(), &info, 0, SRCCOPY),
                      6);
    }
    EXPECT_EQ(StretchDIBits(GetDC(0), 0, 0, 9, 6, 0, 0, 9, 6, bits.data(), &info, 2, SRCCOPY), 0);
}

TEST(DeviceContext, MapsPointsToTheNearest) {
    const struct {
        POINT windowOrigin, windowExtent, origin, extent, units, pixel;
    } cases[] = {{{0, 0}, {1728, 2200}, {0, 0}, {829, 1056}, {1000, 100}, {480, 48}},
                 {{0, 0}, {2, -2}, {0, 0}, {1, 1}, {1, 1}, {1, 0}},  // a half goes up
                 {{3, 3}, {2, -1}, {10, -7}, {4, 5}, {-1, 6}, {2, -22}},
                 {{0, 0}, {1, 1}, {1, -1}, {kMost, kMost}, {2, kLeast}, {kMost, kLeast}},
                 {{kLeast, 0}, {kLeast, 1}, {5, 0}, {kLeast, kLeast}, {kMost, 1}, {kMost, kLeast}},
                 {{kMost, kMost}, {-1, 1}, {0, 0}, {kMost, kMost}, {0, 0}, {kMost, kLeast}}};
    const Canvas canvas(1, 1, 1);
    for (const auto& c : cases) {
        canvas.SetMapping(c.windowOrigin, c.windowExtent, c.origin, c.extent);
        POINT point = c.units;
        EXPECT_EQ(LPtoDP(canvas.context, &point, 1), 1);
        EXPECT_EQ((std::pair{point.x, point.y}), (std::pair{c.pixel.x, c.pixel.y}));
        canvas.SetMapping(c.origin, c.extent, c.windowOrigin, c.windowExtent);
        point = c.units;
        EXPECT_EQ(DPtoLP(canvas.context, &point, 1), 1);
        EXPECT_EQ((std::pair{point.x, point.y}), (std::pair{c.pixel.x, c.pixel.y}));
    }
    POINT before{};
    EXPECT_EQ(SetViewportExtEx(canvas.context, 0, 1, &before), 0);
    EXPECT_EQ(SetMapMode(canvas.context, MM_TEXT), MM_ANISOTROPIC);
    EXPECT_EQ(SetWindowExtEx(canvas.context, 5, 5, &before), 0);
    EXPECT_EQ(SetMapMode(canvas.context, 2), 0);
}

TEST(DeviceContext, TellsWhatIsLeftOfItsRegion) {
    const Canvas canvas(10, 10, 1);
    const struct {
        RECT taken;
        int32_t left;
    } cases[] = {{{20, 20, 30, 30}, SIMPLEREGION}, {{4, 10, 0, 0}, SIMPLEREGION},
                 {{5, 2, 7, 4}, COMPLEXREGION},    {{0, 0, 7, 10}, SIMPLEREGION},
                 {{7, 0, 10, 9}, SIMPLEREGION},    {{kLeast, 9, kMost, kMost}, NULLREGION}};
    for (const auto& [taken, left] : cases)
        EXPECT_EQ(ExcludeClipRect(canvas.context, taken.left, taken.top, taken.right, taken.bottom),
                  left);
}

TEST(DeviceContext, KeepsWhatIsSelectedAndRefusesStrangers) {
    Canvas canvas(1, 1, 24);
    const DeviceContextHandle display = GetDC(0), memory = CreateCompatibleDC(display);
    const BrushHandle brush = CreateSolidBrush(0x112233);
    const GraphicsHandle first = SelectObject(memory, canvas.bitmap);
    EXPECT_NE(SelectObject(memory, brush), 0U);
    EXPECT_EQ(DeleteObject(canvas.bitmap) + DeleteObject(brush), 2);
    EXPECT_EQ(PatBlt(memory, 0, 0, 1, 1, PATCOPY), 1) << "both live on";
    EXPECT_EQ(BitBlt(display, 0, 0, 9, 9, memory, 0, 0, SRCCOPY), 1) << "no pixels, no failure";
    EXPECT_EQ(SelectObject(display, first), 0U);
    EXPECT_EQ(SelectObject(memory, first), canvas.bitmap);
    EXPECT_EQ(SelectObject(memory, brush), 0U) << "stale";
    EXPECT_EQ(BitBlt(memory, 0, 0, 1, 1, memory, 0, 0, 0x00BB0226), 0) << "no such operation";
    EXPECT_EQ(PatBlt(memory, 0, 0, 1, 1, SRCCOPY) + BitBlt(memory, 0, 0, 1, 1, 0, 0, 0, SRCCOPY),
              0);
    EXPECT_EQ(ReleaseDC(0, memory) + DeleteDC(display), 0);
    EXPECT_EQ(DeleteDC(memory) + ReleaseDC(0, display), 2);
    EXPECT_EQ(DeleteDC(memory), 0);
    EXPECT_EQ(SetTextColor(memory, 0), 0xFFFFFFFF);
}

TEST(Rectangles, IntersectAndMove) {
    RECT rect{}, both{};
    const RECT other = {5, 5, kMost, 6};
    SetRect(&rect, 0, 0, 10, kMost);
    EXPECT_EQ(IntersectRect(&both, &rect, &other), 1);
    EXPECT_EQ((std::vector{both.left, both.top, both.right, both.bottom}),
              (std::vector{5, 5, 10, 6}));
    EXPECT_EQ(OffsetRect(&rect, kMost, 1), 1);
    EXPECT_EQ((std::vector{rect.left, rect.top, rect.right, rect.bottom}),
              (std::vector{kMost, 1, kMost, kMost}));
    EXPECT_EQ(IntersectRect(&both, &rect, &other) + IsRectEmpty(&rect) + both.bottom, 1);
}

}  // namespace
