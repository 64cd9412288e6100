// DIBs and their notes painted into windows.
#include <gtest/gtest.h>

#include "notes/dib_view.h"
#include "notes_support.h"
#include "support/painted_view.h"
#include "support/shown_colors.h"
#include "vellim/text.h"

namespace vellim::test {
namespace {

using namespace std::string_literals;
using Pixels = std::vector<uint32_t>;

Box EdgesOf(const RECT& rect) {
    return {rect.left, rect.top, rect.right, rect.bottom};
}

// Without a density a pixel of the image is one of the window.
OwnedBlock MakePlainDib(int32_t width, int32_t height, uint16_t bits) {
    OwnedBlock dib = MakeDib(width, height, bits);
    auto* header = LockedBlock(dib.Get()).As<BITMAPINFOHEADER>();
    header->biXPelsPerMeter = header->biYPelsPerMeter = 0;
    return dib;
}

// As ColorRefs, on a display of 24 bits.
Pixels ShownIn(const TestWindow& window) {
    Pixels pixels = window.Pixels();
    for (uint32_t& pixel : pixels)
        pixel = pixel >> 16U | (pixel & 0xFF00U) | (pixel & 0xFFU) << 16U;
    return pixels;
}

struct NotePainting : testing::Test {
    std::vector<uint32_t> live = LiveWithFont();
    std::optional<TestWindow> to;

    void SetUp() override { to.emplace(80, 60, 5); }
    void TearDown() override {
        to.reset();
        SetDisplay(nullptr);
        EXPECT_EQ(Live(), live) << "something was kept";
    }
    // Over pixels of another paint.
    Pixels Paint(GlobalHandle dib, const ScrollRecord* scroll, const ZoomRatios* zoom,
                 uint32_t flags, const NoteRecord* note) {
        const uint32_t contexts = LiveContexts();
        InvalidateRect(to->window, nullptr, 0);
        PaintDIBWithNote(to->window, dib, scroll, zoom, flags, note);
        EXPECT_EQ(LiveContexts(), contexts) << "the paint wasn't ended";
        EXPECT_EQ(GetUpdateRect(to->window, nullptr, 0), 0);
        return ShownIn(*to);
    }
    static Pixels Blank() { return ShownIn(TestWindow(80, 60, 5)); }
};

TEST_F(NotePainting, ViewIsAsWorkedOutByHand) {
    const WindowHandle window = CreateMemoryWindow(800, 600, 0);
    const DeviceContextHandle context = GetDC(window);
    BITMAPINFOHEADER header{};
    header.biWidth = 1728, header.biHeight = 2200;
    header.biXPelsPerMeter = header.biYPelsPerMeter = 7874;
    ShowScrollBar(window, SB_BOTH, 1);
    const ScrollRecord scroll = {9, 9, 864, 1100};
    const DibView view = ScrollDib(window, context, header, &scroll, nullptr);
    EXPECT_EQ(EdgesOf(view.Source), (Box{31, 475, 1698, 1725}));
    EXPECT_EQ(EdgesOf(view.Place), (Box{0, 0, 800, 600}));
    EXPECT_TRUE(view.WorkWidth == 1728 && view.WorkHeight == 2200);
    // The view of the scaled image begins at 15, 228.
    EXPECT_EQ(EdgesOf(PlaceInView(view, {10, 238, 35, 5000})), (Box{0, 10, 20, 600}));
    const RECT outside = PlaceInView(view, {0, 0, 15, 5000});
    EXPECT_EQ(IsRectEmpty(&outside), 1);

    const DibView fit = FitDib(window, context, header);
    EXPECT_TRUE(fit.WorkWidth == 471 && fit.WorkHeight == 600);
    EXPECT_EQ(EdgesOf(fit.Source), (Box{0, 0, 1728, 2200}));
    EXPECT_EQ(EdgesOf(fit.Place), (Box{0, 0, 800, 600}));
    EXPECT_EQ(IsScrollBarShown(window, SB_HORZ) + IsScrollBarShown(window, SB_VERT), 0);

    // A density of 1 counts, and one of 0 is the display's; ratios that leave an axis alone.
    header.biXPelsPerMeter = 1, header.biYPelsPerMeter = 0;
    const ZoomRatios zoom = {1, 1000, 0, 3};
    const DibView odd = ScrollDib(window, context, header, nullptr, &zoom);
    EXPECT_NEAR(odd.ScaleX, 96 * 39.37 / 1000, 1e-5);
    EXPECT_EQ(odd.ScaleY, 1);
    EXPECT_EQ(odd.Source.top, 0);
    EXPECT_EQ(odd.Source.bottom, 600);
    for (const int32_t beyond : {100'000'000, -100'000'000}) {
        const ScrollRecord far = {0, 0, 0, beyond};
        const DibView edge = ScrollDib(window, context, header, &far, &zoom);
        EXPECT_EQ(edge.Source.top, beyond > 0 ? 1600 : 0);
    }
    ReleaseDC(window, context);
    DestroyWindow(window);
}

TEST_F(NotePainting, PictureLiesOnTheBackground) {
    for (const uint16_t bits : std::initializer_list<uint16_t>{1, 4, 8, 24}) {
        const OwnedBlock dib = MakePlainDib(33, 20, bits), large = MakePlainDib(160, 120, bits);
        const Colors small = ColorsOf(dib.Get()), whole = ColorsOf(large.Get());
        Pixels expected = Blank(), inverted = expected, half = expected;
        for (size_t at = 0; at < small.size(); at++) {
            const size_t place = (19 - at / 33) * 80 + at % 33;
            expected[place] = small[at], inverted[place] = ~small[at] & 0xFFFFFF;
        }
        for (size_t at = 0; at < half.size(); at++)
            half[at] = whole[(119 - at / 80 * 2) * 160 + at % 80 * 2];
        EXPECT_EQ(Paint(dib.Get(), nullptr, nullptr, 0, nullptr), expected) << bits;
        EXPECT_EQ(Paint(dib.Get(), nullptr, nullptr, 32 | 8, nullptr), inverted) << bits;
        EXPECT_EQ(Paint(large.Get(), nullptr, nullptr, 0, nullptr).size(), size_t{75} * 55);
        EXPECT_EQ(Paint(large.Get(), nullptr, nullptr, 8, nullptr), half) << bits;
    }
}

// A picture whose colours tell where they stand.
OwnedBlock MakeMap(int32_t width, int32_t height) {
    OwnedBlock dib = MakePlainDib(width, height, 24);
    const LockedBlock block(dib.Get());
    const int32_t stride = (width * 3 + 3) / 4 * 4;
    uint8_t* row = block.As<uint8_t>() + 40;
    for (int32_t y = height - 1; y >= 0; y--, row += stride)
        for (int32_t x = 0; x < width; x++) {
            uint8_t* pixel = row + ptrdiff_t{x} * 3;
            pixel[0] = 200, pixel[1] = static_cast<uint8_t>(y), pixel[2] = static_cast<uint8_t>(x);
        }
    return dib;
}

// What is scaled twice may be a pixel off, and behind the last one there is nothing.
TEST_F(NotePainting, PartIsWhereItIsScrolledTo) {
    const OwnedBlock large = MakeMap(150, 120), small = MakeMap(33, 20);
    const ScrollRecord scroll = {0, 0, 150, 60};  // 75 of 75 hidden; 65 / 120 of 60, rounded
    const ZoomRatios twice = {2, 1, 2, 1};
    const struct {
        const ScrollRecord* scroll;
        const ZoomRatios* zoom;
        GlobalHandle dib;
        uint32_t flags;
        size_t window, width, height;  // of the client area, and of it what is covered
        double left, top, step;
    } cases[] = {{&scroll, nullptr, large.Get(), 64, 75, 75, 55, 75, 33, 1},
                 {&scroll, &twice, large.Get(), 0, 75, 75, 55, 225.0 / 2, 93 / 2.0, 0.5},
                 {&scroll, &twice, small.Get(), 0, 80, 66, 40, 0, 0, 0.5},
                 {nullptr, nullptr, small.Get(), 8, 80, 33, 20, 0, 0, 1}};
    for (const auto& c : cases) {
        const Pixels shown = Paint(c.dib, c.scroll, c.zoom, c.flags, nullptr);
        const ColorRef background = Blank()[0];
        for (size_t at = 0; at < shown.size(); at++) {
            const size_t x = at % c.window, y = at / c.window;
            const bool isEdge = x + 2 >= c.width || y + 2 >= c.height;
            if (x >= c.width || y >= c.height) {
                ASSERT_EQ(shown[at], background);
            } else if (!isEdge) {
                ASSERT_EQ(shown[at] >> 16, 200U);
                ASSERT_NEAR(shown[at] & 0xFF, c.left + static_cast<double>(x) * c.step, 1.1);
                ASSERT_NEAR(shown[at] >> 8 & 0xFF, c.top + static_cast<double>(y) * c.step, 1.1);
            }
        }
    }
}

TEST_F(NotePainting, NothingIsDrawnOfNoImage) {
    const OwnedBlock good = MakePlainDib(33, 20, 8), damaged = MakePlainDib(33, 20, 8);
    GlobalReAlloc(damaged.Get(), GlobalSize(damaged.Get()) - 1, 0);
    const Pixels before = Paint(good.Get(), nullptr, nullptr, 0, nullptr);
    for (const DibHandle none : {DibHandle{0}, DibHandle{4711}, damaged.Get()})
        for (const uint32_t flags : {0U, 8U})
            EXPECT_EQ(Paint(none, nullptr, nullptr, flags, nullptr), before);
    PaintDIBWithNote(to->window + 77, good.Get(), nullptr, nullptr, 0, nullptr);
    EXPECT_EQ(ShownIn(*to), before);
}

// Where two paints differ: the box around it, and how many pixels.
std::pair<Box, size_t> Difference(const Pixels& a, const Pixels& b) {
    Box box = {80, 60, 0, 0};
    size_t count = 0;
    for (size_t i = 0; i < a.size() && a.size() == b.size(); i++) {
        if (a[i] == b[i]) continue;
        const auto x = static_cast<int32_t>(i % 80), y = static_cast<int32_t>(i / 80);
        box = {std::min(box[0], x), std::min(box[1], y), std::max(box[2], x + 1),
               std::max(box[3], y + 1)};
        count++;
    }
    return {box, count};
}

TEST_F(NotePainting, NoteLiesInItsBox) {
    to.reset();
    SetDisplayDepth(8);  // where letters have no greys
    to.emplace(80, 60, 5);
    const OwnedBlock dib = MakePlainDib(80, 60, 24), text = BlockOf("Hig\r\nWijkl\r\n"s);
    {
        const LockedBlock block(dib.Get());
        std::memset(block.As<uint8_t>() + 40, 0xCC, block.Size() - 40);
    }
    const auto paint = [&](const NoteRecord& note, uint32_t flags = 0) {
        return Paint(dib.Get(), nullptr, nullptr, flags, &note);
    };
    const Pixels plain = Paint(dib.Get(), nullptr, nullptr, 0, nullptr);
    const NoteRecord opaque = {1, 1, text.Get(), 10, 8, 50, 45, 0};
    NoteRecord clear = opaque, note = opaque;
    clear.Opaque = 0;
    const auto [box, white] = Difference(paint(opaque), plain);
    EXPECT_EQ(box, (Box{10, 8, 50, 45}));
    EXPECT_EQ(white, size_t{40} * 37) << "the whole box";
    const auto [inked, ink] = Difference(paint(clear), plain);
    EXPECT_TRUE(ink > 30 && ink < white / 2);
    EXPECT_TRUE(inked[0] >= 10 && inked[1] >= 8 && inked[2] <= 50 && inked[3] <= 45);
    EXPECT_EQ(Difference(paint(opaque), paint(clear)).second, white - ink) << "the same letters";

    // Clipped at any side, and begun where it comes into view.
    note.Left = -30, note.Top = -30, note.Right = 20, note.Bottom = 12;
    const auto [corner, seen] = Difference(paint(note), plain);
    EXPECT_EQ(corner, (Box{0, 0, 20, 12}));
    note.Left = note.Top = 0;
    EXPECT_EQ(Difference(paint(note), plain), (std::pair{corner, seen}));
    note.Left = 60, note.Top = 50, note.Right = note.Bottom = 1000;
    EXPECT_EQ(Difference(paint(note), plain).first, (Box{60, 50, 80, 60}));
    note.Left = 80;
    EXPECT_EQ(paint(note), plain) << "out of view";
    note = opaque, note.Right = 9;
    EXPECT_EQ(paint(note), plain);

    // Fitted there are no notes, inverted there are; none without text or kept in the pixels.
    EXPECT_EQ(paint(opaque, 8), plain);
    EXPECT_EQ(Difference(paint(opaque, 40), Paint(dib.Get(), nullptr, nullptr, 40, nullptr)).first,
              box);
    note = opaque, note.StoreInHeader = 0;
    EXPECT_EQ(paint(note), plain);
    note = opaque, note.Text = 0;
    EXPECT_EQ(paint(note), plain);
}

TEST_F(NotePainting, NotePlusLiesWhereItsCornerDoes) {
    const std::string line(40, 'i');
    const OwnedBlock text = BlockOf("Hig\r\nWij"s), forty = BlockOf(line + "\nW");
    const OwnedBlock more = BlockOf(line + "WWW\nW"), less = BlockOf(line.substr(1) + "\nW");
    const auto draw = [](NoteRecord note, POINT base, double scaleX, double scaleY, POINT target) {
        const TestWindow fresh(80, 60, 0);
        const DeviceContextHandle context = GetDC(fresh.window);
        PaintNotePlus(0, context, &base, scaleX, scaleY, &target, &note);
        PaintNotePlus(0, context, nullptr, 1, 1, &target, &note);
        PaintNotePlus(0, context, &base, 1, 1, nullptr, &note);
        PaintNotePlus(0, context, &base, 1, 1, &target, nullptr);
        ReleaseDC(fresh.window, context);
        return ShownIn(fresh);
    };
    SIZE size{};  // of forty letters, the last of which stand in the window
    const ScopedContext display(ScopedContext::Kind::Display);
    GetTextExtentPointA(display.Get(), line.c_str(), 40, &size);
    const auto scrolled = [&](const OwnedBlock& lines) {
        return draw({1, 0, lines.Get(), 0, 0, 999, 99, 0}, {0, 0}, 1, 1, {40 - size.cx, 0});
    };
    const NoteRecord note = {1, 1, text.Get(), 14, 18, 44, 38, 0};
    const Pixels there = draw({1, 1, text.Get(), 17, 14, 47, 34, 0}, {0, 0}, 1, 1, {0, 0});
    EXPECT_EQ(draw(note, {10, 10}, 2.5, 0.5625, {7, 9}), there);  // 4.5 becomes 5
    const Pixels blank = draw({}, {0, 0}, 1, 1, {0, 0});
    EXPECT_EQ(Difference(there, blank).first, (Box{17, 14, 47, 34}));
    EXPECT_EQ(draw(note, {15, 0}, 1, 1, {50, 50}), blank) << "begins left of the base";
    EXPECT_EQ(draw(note, {0, 19}, 1, 1, {50, 50}), blank);
    EXPECT_EQ(scrolled(more), scrolled(forty)) << "a line has 40 bytes";
    EXPECT_NE(scrolled(less), scrolled(forty));
}

}  // namespace
}  // namespace vellim::test
