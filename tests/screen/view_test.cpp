// Where a picture stands in its window, and where each of its lines goes.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <utility>

#include "screen/line_ranges.h"
#include "screen/view_layout.h"

namespace vellim {
namespace {

template <size_t count>
using Numbers = std::array<int32_t, count>;

// A window whose bars take 20 pixels of it each.
struct Window {
    int32_t width, height, across, down;
    static RECT Area(uintptr_t self) {
        const auto& window = *reinterpret_cast<Window*>(self);
        return {0, 0, window.width - 20 * window.down, window.height - 20 * window.across};
    }
    static RECT SetBars(uintptr_t self, Bars bars, bool shown) {
        auto& window = *reinterpret_cast<Window*>(self);
        if (bars != Bars::kVertical) window.across = shown;
        if (bars != Bars::kHorizontal) window.down = shown;
        return Area(self);
    }
    ViewWindow Calls() { return {reinterpret_cast<uintptr_t>(this), Area, SetBars}; }
};

// A fax page of 200 dots an inch on a screen of 96, scrolled to the middle and to the foot: the
// bars shown, the zoomed size, VisibleRect and SourceRect.
TEST(View, RectanglesFollowFlagsAndWindow) {
    const ZoomRatios half{1, 2, 1, 2}, none{2, 0, 0, 2}, back{-1, 1, 1, 1};
    const Window page{820, 620, 1, 1}, narrow{835, 600, 0, 0}, exact{1728, 2200, 0, 0};
    struct Case {
        uint32_t flags;
        int32_t perMetre;
        ZoomRatios ratios;
        Window window;
        Numbers<12> view;
    };
    for (Case c : std::initializer_list<Case>{
             {4, 7874, none, page, {1, 1, 829, 1056, 15, 456, 815, 1056, 31, 950, 1698, 2200}},
             {6, 7874, half, page, {0, 0, 415, 528, 0, 0, 415, 528, 0, 0, 1729, 2200}},
             {0, 1, half, page, {1, 1, 1728, 2200, 464, 1600, 1264, 2200, 464, 1600, 1264, 2200}},
             {4, 0, none, page, {1, 1, 1728, 2200, 464, 1600, 1264, 2200, 464, 1600, 1264, 2200}},
             {5, 7874, none, page, {1, 1, 1056, 829, 128, 229, 928, 829, 267, 477, 1933, 1727}},
             {0, 1, none, exact, {0, 0, 1728, 2200, 0, 0, 1728, 2200, 0, 0, 1728, 2200}},
             // The vertical bar makes it too narrow; the horizontal one isn't asked again.
             {4, 7874, none, narrow, {0, 1, 829, 1056, 7, 456, 822, 1056, 15, 950, 1713, 2200}},
             {4, 7874, back, page, {0, 1, -828, 1056, 0, 436, -828, 1056, 0, 908, 1725, 2200}},
             {12, 7874, half, page, {0, 0, 820, 620, 0, 0, 820, 620, 0, 0, 1728, 2200}},
             {11, 7874, half, page, {0, 0, 820, 620, 0, 0, 820, 620, 0, 0, 2200, 1728}}}) {
        const BarState across{100, 200, 150}, down{0, 100, 100};
        const float dpi = DotsPerInch(c.perMetre);
        const ViewLayout view = LayOutView(
            {c.flags, 1728, 2200, 96, 96, dpi, dpi, &c.ratios, across, down}, c.window.Calls());
        const RECT &seen = view.VisibleRect, &from = view.SourceRect;
        EXPECT_EQ((Numbers<12>{view.HorizontalBarShown, view.VerticalBarShown, view.ViewportX,
                               view.ViewportY, seen.left, seen.top, seen.right, seen.bottom,
                               from.left, from.top, from.right, from.bottom}),
                  c.view);
        const auto size = [](const RECT& r) {
            return std::pair(r.right - r.left, r.bottom - r.top);
        };
        EXPECT_EQ(size(view.ZoomedRect), std::pair(view.ViewportX, view.ViewportY));
        EXPECT_EQ(size(view.PaintRect), size(c.flags < 8 ? seen : view.ImageRect));
        EXPECT_EQ(size(view.DestRect), size(from));
    }
}

// Nothing overflows; and whatever the scroll bars say, a larger picture fills the window.
TEST(View, HostileFiguresGiveAView) {
    const Numbers<5> figures{INT32_MIN, -1, 0, 1, INT32_MAX};
    for (uint32_t i = 0; i < 5 * 5 * 5 * 5 * 4; i++) {
        const int32_t a = figures.at(i % 5), b = figures.at(i / 5 % 5), c = figures.at(i / 25 % 5);
        const int32_t d = figures.at(i / 125 % 5);
        const uint32_t flags = i / 625 * 5;
        const ZoomRatios ratios{a, b, c, d};
        Window window{std::max(a, -5), std::max(d, -5), 0, 0};
        const ViewLayout view = LayOutView(
            {flags, b, c, 0, 96, DotsPerInch(d), DotsPerInch(a), &ratios, {c, d, a}, {b, d, a}},
            window.Calls());
        const RECT& seen = view.VisibleRect;
        EXPECT_GE(std::min(seen.left, view.SourceRect.left), 0);
        EXPECT_EQ(seen.right - seen.left, std::min(view.ZoomedRect.right, view.ClientRect.right));
        for (const uint32_t line : {0U, ~0U, 1U << 31})
            CopyOfLine(flags, view.ImageRect, seen, {a, b, c, d}, {d, c, b, a}, line);
    }
}

// From the first to the last line taken; x and y of both, size and source of their copies.
TEST(Lines, GoWhereTheViewShowsThem) {
    struct Case {
        uint32_t turns;
        RECT source;
        uint32_t first, last;
        Numbers<8> copy;
    };
    for (const Case& c : std::initializer_list<Case>{
             {0, {30, 100, 800, 300}, 100, 300, {0, 0, 0, 200, 770, 1, 30, 0}},
             {1, {0, 20, 800, 300}, 1400, 2200, {799, 5, -1, 5, 1, 280, 0, 20}},
             {1, {50, 20, 800, 300}, 1400, 2150, {749, 5, -1, 5, 1, 280, 0, 20}},
             {2, {10, 20, 50, 70}, 30, 80, {0, 49, 0, -1, 40, 1, 10, 0}},
             {3, {100, 20, 900, 300}, 100, 900, {0, 5, 800, 5, 1, 280, 0, 20}}}) {
        const auto copy = [&c](uint32_t line) {
            const RECT dest{0, 0, c.source.right - c.source.left, 0};
            return CopyOfLine(c.turns, {0, 0, 2200, 100}, c.source, dest, {0, 5, 0, 0}, line);
        };
        const auto first = copy(c.first), last = copy(c.last);
        ASSERT_TRUE(first && last);
        EXPECT_EQ((Numbers<8>{first->X, first->Y, last->X, last->Y, last->Width, last->Height,
                              last->SourceX, last->SourceY}),
                  c.copy);
        EXPECT_FALSE(copy(c.first - 1) || copy(c.last + 1));
    }
}

TEST(Lines, ColorsFollowPhotometricAndInversion) {
    EXPECT_EQ((std::array{LineOperation(1, 1, 7), LineOperation(1, 0, 7), LineOperation(1, {}, 0),
                          LineOperation(1, 0, VIEW_INVERTED), LineOperation(8, 0, VIEW_INVERTED)}),
              (std::array<uint32_t, 5>{SRCCOPY, NOTSRCCOPY, SRCCOPY, SRCCOPY, NOTSRCCOPY}));
}

}  // namespace
}  // namespace vellim
