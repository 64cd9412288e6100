// Windows: what bars, new pixels and the background do to drawing; and the clipboard's rules.
#include "vellim/windows.h"

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <limits>
#include <thread>

#include "platform/graphics/device_contexts.h"
#include "platform/windows/windows.h"
#include "vellim/platform.h"

namespace {

constexpr int32_t kLeast = std::numeric_limits<int32_t>::min();
constexpr int32_t kMost = std::numeric_limits<int32_t>::max();
constexpr ColorRef kBlack = 0, kWhite = 0xFFFFFF;

using Edges = std::array<int32_t, 4>;

Edges ClientOf(WindowHandle window) {
    RECT rect{};
    GetClientRect(window, &rect);
    return {rect.left, rect.top, rect.right, rect.bottom};
}

Edges UpdateOf(WindowHandle window) {
    RECT rect{1, 1, 1, 1};
    const int32_t isAny = GetUpdateRect(window, &rect, 0);
    EXPECT_NE(isAny, IsRectEmpty(&rect));
    return {rect.left, rect.top, rect.right, rect.bottom};
}

// A window's pixels, also those that came to lie below a bar since.
struct Shown : WindowPixels {
    explicit Shown(WindowHandle window) : WindowPixels() { GetWindowPixels(window, this); }
    [[nodiscard]] ColorRef At(uint32_t x, uint32_t y) const {
        const uint8_t* at = Bits + size_t{y} * RowBytes + x * BitsPerPixel / 8;
        if (BitsPerPixel == 24) return at[2] | uint32_t{at[1]} << 8U | uint32_t{at[0]} << 16U;
        return vellim::ColorOfPixel(BitsPerPixel,
                                    BitsPerPixel == 8 ? *at : *at >> (7 - x % 8) & 1U);
    }
};

// Nothing may be left over.
class Windows : public testing::Test {
  protected:
    static std::array<uint32_t, 3> Live() {
        DeleteDC(CreateCompatibleDC(0));  // makes the system's own objects
        return {vellim::LiveWindows(), vellim::LiveContexts(), vellim::LiveObjects()};
    }
    void TearDown() override { EXPECT_EQ(Live(), before_); }

  private:
    std::array<uint32_t, 3> before_ = Live();
};

TEST_F(Windows, BarsTakeTheirSizeFromTheClientArea) {
    constexpr int32_t side = 32767;
    const struct {
        int32_t width, barSize, bar, clientWidth, clientHeight;
    } cases[] = {{9, 2, -1, 9, 7},      {9, 2, SB_HORZ, 9, 5}, {side, 1, SB_VERT, side - 1, 7},
                 {9, 2, SB_BOTH, 7, 5}, {9, 0, SB_BOTH, 9, 7}, {9, side, SB_BOTH, 0, 0}};
    for (const auto& c : cases) {
        const WindowHandle window = CreateMemoryWindow(c.width, 7, c.barSize);
        EXPECT_EQ(ShowScrollBar(window, c.bar, 1), int{c.bar >= 0});
        EXPECT_EQ(ClientOf(window), (Edges{0, 0, c.clientWidth, c.clientHeight}));
        EXPECT_EQ(UpdateOf(window), ClientOf(window));
        EXPECT_EQ(IsScrollBarShown(window, SB_HORZ), c.bar == SB_HORZ || c.bar == SB_BOTH);
        EXPECT_EQ(IsScrollBarShown(window, SB_VERT), c.bar == SB_VERT || c.bar == SB_BOTH);
        const Shown pixels(window);
        EXPECT_EQ((Edges{0, 0, pixels.Width, pixels.Height}), ClientOf(window));
        EXPECT_EQ(DestroyWindow(window), 1);
    }
    EXPECT_EQ(CreateMemoryWindow(0, 1, 0) | CreateMemoryWindow(1, -1, 0) |
                  CreateMemoryWindow(side + 1, 1, 0) | CreateMemoryWindow(1, 1, -1) |
                  CreateMemoryWindow(1, 1, kMost) | CreateMemoryWindow(side, side, 0),
              0U);
}

TEST_F(Windows, DrawingKeepsToTheClientAreaOfTheMoment) {
    for (const int32_t depth : {1, 8, 24}) {
        const DisplaySettings settings = {96, 96, depth};
        SetDisplay(&settings);
        const WindowHandle window = CreateMemoryWindow(19, 10, 4);
        SetDisplay(nullptr);
        const DeviceContextHandle context = GetDC(window), memory = CreateCompatibleDC(context);
        const BitmapHandle bitmap = CreateCompatibleBitmap(context, 19, 10);
        BITMAP record{};
        GetObjectA(bitmap, sizeof record, &record);
        EXPECT_EQ(record.bmBitsPixel, depth) << "the window's, whatever the display is";
        // Black by a copy, then by a fill, where a bar stands that wasn't there for GetDC.
        const Shown pixels(window);
        SelectObject(memory, bitmap);
        EXPECT_EQ(ValidateRect(window, nullptr) + ShowScrollBar(window, SB_HORZ, 1), 2);
        EXPECT_EQ(BitBlt(context, 0, 0, 19, 10, memory, 0, 0, SRCCOPY), 1);
        EXPECT_TRUE(pixels.At(18, 5) == kBlack && pixels.At(18, 6) == kWhite);
        ShowScrollBar(window, SB_HORZ, 0);
        EXPECT_EQ(UpdateOf(window), (Edges{0, 6, 19, 10})) << "what came to light";
        ShowScrollBar(window, SB_VERT, 1);
        EXPECT_EQ(ExcludeClipRect(context, 15, 0, 19, 9), SIMPLEREGION);
        EXPECT_EQ(UpdateOf(window), (Edges{0, 6, 15, 10}));
        EXPECT_EQ(PatBlt(context, 0, 0, 99, 99, BLACKNESS), 1);
        EXPECT_TRUE(pixels.At(14, 9) == kBlack && pixels.At(15, 9) == kWhite);

        // The class's brush paints what comes to light as long as there is one.
        const BrushHandle brush = CreateSolidBrush(kBlack);
        const uint32_t white = SetClassLongA(window, GCL_HBRBACKGROUND, brush);
        EXPECT_EQ(SetClassLongA(window, GCL_HBRBACKGROUND, bitmap), 0U);
        ShowScrollBar(window, SB_BOTH, 0);
        EXPECT_EQ(pixels.At(15, 9), kBlack);
        ShowScrollBar(window, SB_BOTH, 1);
        DeleteObject(brush);
        EXPECT_EQ(GetClassLongA(window, GCL_HBRBACKGROUND), white);
        ShowScrollBar(window, SB_BOTH, 0);
        EXPECT_TRUE(pixels.At(15, 0) == kWhite && pixels.At(0, 6) == kWhite);
        EXPECT_EQ(pixels.At(14, 5), kBlack) << "what was to be seen stays";
        EXPECT_EQ(ReleaseDC(0, context) + ReleaseDC(window, memory), 0);
        EXPECT_EQ(ReleaseDC(window, context) + DeleteDC(memory) + DeleteObject(bitmap), 3);
        DestroyWindow(window);
    }
}

TEST_F(Windows, ContextsOutliveTheirPixels) {
    const WindowHandle window = CreateMemoryWindow(8, 8, 2);
    const DeviceContextHandle old = GetDC(window);
    EXPECT_EQ(ShowScrollBar(window, SB_HORZ, 1) + ValidateRect(window, nullptr), 2);
    EXPECT_EQ(ResizeWindow(window, 32767, 32767) + ResizeWindow(window, 0, 5), 0);
    const DisplaySettings other = {96, 96, 8};
    SetDisplay(&other);
    EXPECT_EQ(ResizeWindow(window, 16, 5), 1);
    SetDisplay(nullptr);
    EXPECT_EQ(UpdateOf(window), (Edges{0, 0, 16, 3})) << "bars stay shown";
    ShowScrollBar(window, SB_BOTH, 0);
    EXPECT_EQ(PatBlt(old, 0, 0, 8, 9, BLACKNESS), 1);
    const DeviceContextHandle fresh = GetDC(window);
    EXPECT_EQ(BitBlt(fresh, 8, -3, 8, 8, old, 0, 0, SRCCOPY), 1);
    const Shown pixels(window);
    EXPECT_EQ(pixels.BitsPerPixel, 24U);
    EXPECT_TRUE(pixels.At(7, 2) == kWhite && pixels.At(8, 2) == kBlack);
    EXPECT_EQ(pixels.At(15, 3), kWhite) << "the old area ends where it ended";
    EXPECT_TRUE(DestroyWindow(window) && BitBlt(fresh, 0, 0, 8, 8, old, 0, 0, SRCAND));
    EXPECT_EQ(GetDC(window), 0U);
    EXPECT_EQ(ReleaseDC(window, old) + ReleaseDC(window, fresh), 2);
}

TEST_F(Windows, PositionsKeepToTheirRange) {
    const WindowHandle window = CreateMemoryWindow(1, 1, 0);
    EXPECT_EQ(SetScrollPos(window, SB_HORZ, 101, 0), 0);
    EXPECT_EQ(GetScrollPos(window, SB_HORZ), 100);
    EXPECT_EQ(SetScrollRange(window, SB_HORZ, 40, 50, 0), 1);
    EXPECT_EQ(SetScrollPos(window, SB_HORZ, kLeast, 0), 50);
    EXPECT_EQ(GetScrollPos(window, SB_HORZ), 40);
    EXPECT_EQ(SetScrollRange(window, SB_HORZ, 9, -9, 0) + SetScrollPos(window, 2, 1, 0), 0);
    EXPECT_EQ(SetScrollRange(window, SB_HORZ, kLeast, -7, 0), 1);
    EXPECT_EQ(GetScrollPos(window, SB_HORZ), -7);
    int32_t from = 1, to = 1;
    EXPECT_TRUE(GetScrollRange(window, SB_HORZ, &from, &to) == 1 && from == kLeast && to == -7);
    EXPECT_TRUE(GetScrollRange(window, SB_VERT, &from, &to) == 1 && from == 0 && to == 100);
    EXPECT_TRUE(!GetScrollRange(window, 0, &from, nullptr) && DestroyWindow(window));
}

TEST_F(Windows, OneRectangleIsToBePainted) {
    const WindowHandle window = CreateMemoryWindow(20, 20, 0);
    const struct {
        bool isAdded;
        RECT rect;
        Edges after;
    } steps[] = {{false, {5, 0, 9, 20}, {0, 0, 20, 20}},  // would leave two
                 {false, {-9, -9, 99, 4}, {0, 4, 20, 20}},
                 {false, {0, 15, 20, 20}, {0, 4, 20, 15}},
                 {false, {0, 4, 5, 15}, {5, 4, 20, 15}},
                 {false, {18, 0, kMost, 20}, {5, 4, 18, 15}},
                 {true, {kLeast, 10, 1, 16}, {0, 4, 18, 16}},
                 {false, {0, 0, 20, 20}, {}},
                 {true, {9, 9, 8, 10}, {}},
                 {true, {19, 19, kMost, kMost}, {19, 19, 20, 20}}};
    for (const auto& [isAdded, rect, after] : steps) {
        EXPECT_EQ(isAdded ? InvalidateRect(window, &rect, 1) : ValidateRect(window, &rect), 1);
        EXPECT_EQ(UpdateOf(window), after) << rect.left << ' ' << rect.top;
    }
    EXPECT_TRUE(InvalidateRect(window, nullptr, 0) && GetUpdateRect(window, nullptr, 0));
    EXPECT_EQ(UpdateOf(window), ClientOf(window));
    EXPECT_TRUE(ValidateRect(window, nullptr) && DestroyWindow(window));
}

TEST_F(Windows, APaintTakesWhatIsInvalidAndMayDrawBeyondIt) {
    const WindowHandle window = CreateMemoryWindow(20, 20, 4);
    ShowScrollBar(window, SB_VERT, 1);
    ValidateRect(window, nullptr);
    const RECT part = {3, 4, 99, 9};
    InvalidateRect(window, &part, 0);
    for (const Edges& expected : {Edges{3, 4, 16, 9}, ClientOf(window)}) {
        PAINTSTRUCT paint{};
        const DeviceContextHandle context = BeginPaint(window, &paint);
        EXPECT_TRUE(context != 0 && paint.hdc == context);
        const auto [left, top, right, bottom] = paint.rcPaint;
        EXPECT_EQ((Edges{left, top, right, bottom}), expected);
        EXPECT_EQ(paint.fErase, int{expected[0] == 3}) << "nothing is invalid again";
        EXPECT_EQ(UpdateOf(window), Edges{});
        EXPECT_EQ(PatBlt(context, 0, 0, 20, 20, BLACKNESS), 1);
        EXPECT_EQ(EndPaint(0, &paint) + EndPaint(window, nullptr), 0);
        EXPECT_EQ(EndPaint(window, &paint), 1);
        EXPECT_EQ(EndPaint(window, &paint), 0);
    }
    EXPECT_EQ(Shown(window).At(0, 19), kBlack);
    EXPECT_EQ(InvalidateRect(window, nullptr, 1), 1);
    EXPECT_EQ(BeginPaint(window, nullptr), 0U);
    EXPECT_EQ(UpdateOf(window), ClientOf(window)) << "a paint that failed";
    EXPECT_EQ(DestroyWindow(window), 1);
    PAINTSTRUCT none{};
    EXPECT_EQ(BeginPaint(window, &none), 0U);
}

TEST_F(Windows, StrangersAreRefused) {
    const WindowHandle stale = CreateMemoryWindow(4, 4, 0), window = CreateMemoryWindow(4, 4, 0);
    SetActiveWindow(stale);
    EXPECT_EQ(DestroyWindow(stale), 1);
    const DeviceContextHandle context = GetDC(0);
    for (const uint32_t w : {stale, context, 0xFFFFFFFFU}) {
        int32_t a = 0, b = 0;
        EXPECT_EQ(Shown(w).Width + ClientOf(w)[2] + UpdateOf(w)[2] + DestroyWindow(w) +
                      ResizeWindow(w, 1, 1) + InvalidateRect(w, nullptr, 0) +
                      ValidateRect(w, nullptr) + SetScrollRange(w, 0, 0, 1, 0) +
                      GetScrollRange(w, 0, &a, &b) + ShowScrollBar(w, SB_BOTH, 1) +
                      IsScrollBarShown(w, 0) + OpenClipboard(w),
                  0);
        EXPECT_EQ(GetClassLongA(w, GCL_HBRBACKGROUND) | SetActiveWindow(w) | GetActiveWindow() |
                      SetClassLongA(w, GCL_HBRBACKGROUND, vellim::WhiteBrush()) | GetDC(w),
                  0U);
    }
    EXPECT_EQ(GetWindowPixels(window, nullptr) + GetClientRect(window, nullptr), 0);
    EXPECT_EQ(GetClassLongA(window, 0) | SetActiveWindow(window), 0U);
    std::thread([] { EXPECT_EQ(GetActiveWindow(), 0U) << "each thread's own"; }).join();
    EXPECT_EQ(SetActiveWindow(stale), 0U);
    EXPECT_EQ(SetActiveWindow(0), window);
    EXPECT_EQ(DestroyWindow(window) + ReleaseDC(0, context), 2);
}

TEST_F(Windows, TheClipboardIsOpenForOneAndOwnsItsBitmap) {
    const WindowHandle window = CreateMemoryWindow(4, 4, 0);
    const BitmapHandle one = CreateBitmap(1, 1, 1, 1, nullptr),
                       two = CreateBitmap(2, 1, 1, 1, nullptr);
    const auto elsewhere = [](const std::function<bool()>& call) {
        std::thread([&] { EXPECT_TRUE(call()); }).join();
    };
    const auto isClosedHere = [=] {
        return (SetClipboardData(CF_BITMAP, one) | GetClipboardData(CF_BITMAP)) == 0 &&
               CloseClipboard() + EmptyClipboard() == 0;
    };
    EXPECT_TRUE(isClosedHere());
    EXPECT_TRUE(OpenClipboard(window) && OpenClipboard(window) && !OpenClipboard(0));
    elsewhere([&] { return OpenClipboard(window) == 0 && isClosedHere(); });
    for (int again = 0; again < 2; again++)
        EXPECT_EQ(SetClipboardData(CF_BITMAP, one), one);
    for (const GraphicsHandle bad :
         {GraphicsHandle{0}, vellim::WhiteBrush(), vellim::DefaultBitmap()})
        EXPECT_EQ(SetClipboardData(CF_BITMAP, bad) + SetClipboardData(1, two), 0U);
    EXPECT_EQ(GetClipboardData(CF_BITMAP) + GetClipboardData(1), one);
    EXPECT_EQ(SetClipboardData(CF_BITMAP, two), two);
    EXPECT_EQ(DeleteObject(one), 0) << "the clipboard's to delete";
    EXPECT_EQ(CloseClipboard(), 1);
    EXPECT_TRUE(isClosedHere());
    elsewhere([] { return IsClipboardFormatAvailable(CF_BITMAP) == 1; });

    // A window or a thread that ends closes it.
    EXPECT_TRUE(OpenClipboard(window) && DestroyWindow(window));
    EXPECT_TRUE(isClosedHere());
    elsewhere([&] { return OpenClipboard(0) && GetClipboardData(CF_BITMAP) == two; });
    EXPECT_TRUE(OpenClipboard(0) && EmptyClipboard() && !DeleteObject(two));
    EXPECT_TRUE(!IsClipboardFormatAvailable(CF_BITMAP) && CloseClipboard());
}

}  // namespace
