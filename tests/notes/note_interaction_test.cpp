// Writing a note: the dialog, the box that the note gets, and notes burned into images.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "notes/note_burning.h"
#include "notes/note_placement.h"
#include "notes/note_scale.h"
#include "notes_support.h"
#include "support/shown_colors.h"
#include "vellim/dialogs.h"
#include "vellim/text.h"
#include "vellim/windows.h"

namespace vellim::test {
namespace {

using namespace std::string_literals;

constexpr ColorRef kBlack = 0, kWhite = 0xFFFFFF;

// What a person does in the next dialog; ends it, or else it counts as not shown.
std::function<void(WindowHandle)> person;
const DesktopDriver kDriver = {nullptr, nullptr, [](WindowHandle dialog) { person(dialog); }};

void SetDensity(GlobalHandle dib, int32_t x, int32_t y) {
    auto* header = LockedBlock(dib).As<BITMAPINFOHEADER>();
    header->biXPelsPerMeter = x, header->biYPelsPerMeter = y;
}

struct NoteInteraction : testing::Test {
    std::vector<uint32_t> live = LiveWithFont();
    WindowHandle window = CreateMemoryWindow(100, 80, 0);

    void SetUp() override { SetDesktopDriver(&kDriver); }
    void TearDown() override {
        SetDesktopDriver(nullptr);
        SetDisplay(nullptr);
        DestroyWindow(window);
        EXPECT_EQ(Live(), live) << "something was kept";
    }
    // Of lines that are `blank` or one of "AB" and "W".
    [[nodiscard]] SIZE SizeOf(const std::string& text) const {
        SIZE size{};
        const DeviceContextHandle context = GetDC(window);
        GetTextExtentPointA(context, text.data(), static_cast<int32_t>(text.size()), &size);
        ReleaseDC(window, context);
        EXPECT_GT(size.cy, 0);
        return size;
    }
};

TEST_F(NoteInteraction, DialogShowsTheNoteAndGivesItBack) {
    const OwnedBlock image = MakeDib(60, 40, 1);
    for (const int32_t inHeader : {0, 1})
        for (const int32_t opaque : {0, 1}) {
            NoteRecord note = {
                inHeader, opaque, BlockOf("old\r\ntext\0more"s).Release(), 1, 2, 3, 4, image.Get()};
            person = [&](WindowHandle dialog) {
                const auto boxes = [&] {
                    uint32_t checked = 0;
                    for (int32_t box = 1000; box <= 1003; box++)
                        checked = checked << 1U | IsDlgButtonChecked(dialog, box);
                    return checked;
                };
                EXPECT_EQ(boxes(), (inHeader != 0 ? 4U : 8U) | (opaque != 0 ? 1U : 2U));
                char text[20];
                GetDlgItemTextA(dialog, 1004, text, sizeof text);
                EXPECT_STREQ(text, "old\r\ntext");
                // A box stays checked however often it is clicked.
                for (const auto& [box, checked] :
                     std::initializer_list<std::pair<int32_t, uint32_t>>{
                         {1001, 4}, {1000, 8}, {1000, 8}, {1001, 4}, {1001, 4}}) {
                    ClickControl(dialog, box);
                    EXPECT_EQ(boxes() & 12U, checked);
                }
                ClickControl(dialog, 1003);
                EXPECT_EQ(boxes(), 5U);
                ClickControl(dialog, 1002), ClickControl(dialog, 1002);
                EXPECT_EQ(boxes(), 6U);
                EXPECT_EQ(SendMessageA(dialog, WM_COMMAND, 1006, 0) + SendMessageA(dialog, 5, 1, 0),
                          0U);
                TypeIntoControl(dialog, 1004, "new");
                ClickControl(dialog, 1);
            };
            EXPECT_EQ(NotePlus(window, &note, nullptr, nullptr, nullptr, 0), 1);
            EXPECT_TRUE(note.StoreInHeader == 1 && note.Opaque == 0 && note.Dib == image.Get());
            EXPECT_EQ(TextOf(note.Text), "new\0"s);
            GlobalFree(note.Text);
        }
    EXPECT_EQ(NoteDlgFn(0, WM_INITDIALOG, 0, 0), 1);
    EXPECT_EQ(NoteDlgFn(0, WM_COMMAND, 1, 0) + NoteDlgFn(77, WM_COMMAND, 0x00010003, 0), 1);
}

TEST_F(NoteInteraction, EndsAsTheDialogDoes) {
    const auto clicks = [](const std::vector<int32_t>& controls) {
        return [=](WindowHandle dialog) {
            TypeIntoControl(dialog, 1004, "new");
            for (const int32_t control : controls)
                ClickControl(dialog, control);
        };
    };
    enum class Image : uint8_t { None, Whole, Damaged };
    const struct {
        std::function<void(WindowHandle)> acts;
        const char* text;  // none: ""
        int32_t note, notePlus;
        Image image;
        bool placed = false, burned = false;
    } cases[] = {{clicks({1003, 2}), "old", 0, 0, Image::Whole},
                 {clicks({1005}), "", 0, 0, Image::Whole},
                 {clicks({1001, 1}), "new", 1, 1, Image::Whole, true},
                 {clicks({1001, 1}), "new", 1, 1, Image::None, true},
                 {clicks({1000, 1}), "new", 0, 0, Image::None},
                 {clicks({1000, 1}), "", 1, 1, Image::Whole, true, true},
                 {clicks({1000, 1}), "new", 1, 0, Image::Damaged, true},
                 {clicks({1000}), "old", 1, 0, Image::Whole}};
    for (const auto& c : cases)
        for (const bool isPlus : {false, true}) {
            const OwnedBlock image = MakeDib(60, 40, 8);
            SetDensity(image.Get(), 777, 888);
            if (c.image == Image::Damaged)
                GlobalReAlloc(image.Get(), GlobalSize(image.Get()) - 1, 0);
            const DibHandle dib = c.image == Image::None ? 0 : image.Get();
            NoteRecord note = {0, 0, BlockOf("old\0"s).Release(), 5, 6, 7, 8, dib};
            person = c.acts;
            EXPECT_EQ(isPlus ? NotePlus(window, &note, nullptr, nullptr, nullptr, 4)
                             : Note(window, &note),
                      isPlus ? c.notePlus : c.note);
            EXPECT_STREQ(TextOf(note.Text).c_str(), c.text);
            EXPECT_EQ(note.Text == 0, *c.text == '\0');
            EXPECT_EQ(BoxOf(note) != (Box{5, 6, 7, 8}), c.placed);
            EXPECT_EQ(note.Dib != dib, c.burned);
            if (c.burned) {
                const auto* header = LockedBlock(note.Dib).As<BITMAPINFOHEADER>();
                EXPECT_TRUE(header->biXPelsPerMeter == 777 && header->biYPelsPerMeter == 888);
                GlobalFree(note.Dib);
            }
            GlobalFree(note.Text);
        }
    SetDesktopDriver(nullptr);
    NoteRecord note{};
    EXPECT_EQ(Note(window, &note), 1) << "there is nobody to ask";
    EXPECT_EQ(NotePlus(window, &note, nullptr, nullptr, nullptr, 0) + Note(window, nullptr), 0);
}

TEST_F(NoteInteraction, ScaleIsThatOfDensitiesAndRatios) {
    SetDisplay(nullptr);  // 96 dots an inch
    const ScopedContext context(ScopedContext::Kind::Display);
    BITMAPINFOHEADER header{};
    header.biXPelsPerMeter = 7874, header.biYPelsPerMeter = 40;
    const ZoomRatios zoom = {3, 2, 5, -1};
    const NoteScale plain = GetNoteScale(context.Get(), header, nullptr, Density::kUsed);
    EXPECT_NEAR(plain.x, 0.48, 1e-9);
    EXPECT_EQ(plain.y, 1) << "40 is no density";
    header.biYPelsPerMeter = 41;
    const NoteScale zoomed = GetNoteScale(context.Get(), header, &zoom, Density::kUsed);
    EXPECT_NEAR(zoomed.x, 0.72, 1e-9);
    EXPECT_NEAR(zoomed.y, 96 * 39.37 / 41, 1e-9);
    EXPECT_EQ(GetNoteScale(context.Get(), header, &zoom, Density::kIgnored).x, 1.5);
}

TEST_F(NoteInteraction, BoxIsWhereThePointIsOnTheImage) {
    const OwnedBlock image = MakeDib(200, 160, 1), text = BlockOf("AB\r\n\t\r\nC"s);
    SetDensity(image.Get(), 1890, 3780);  // twice and once the pixels of the display's 96 an inch
    SetScrollRange(window, SB_HORZ, 0, 200, 0), SetScrollPos(window, SB_HORZ, 100, 0);
    SetScrollRange(window, SB_VERT, 0, 160, 0), SetScrollPos(window, SB_VERT, 30, 0);
    const ZoomRatios half = {1, 2, 1, 2}, twice = {2, 1, 2, 1}, quarter = {1, 4, 1, 4};
    const POINT origin = {-500, 7};
    const struct {
        const ZoomRatios* zoom;
        uint32_t flags;
        const POINT* origin;
        POINT point, after;
        int32_t left, top;
    } cases[] = {
        {nullptr, 4, nullptr, {10, 20}, {10, 20}, 50 + 10, 15 + 20},
        {nullptr, 4 | 64, &origin, {10, 20}, {10, 20}, -490, 27},
        {&half, 4, nullptr, {10, 20}, {10, 20}, 20, 40},
        {&twice, 4, nullptr, {11, 21}, {11, 21}, 150 + 6, 45 + 11},
        {&twice, 4 | 128, nullptr, {11, 21}, {11, 21}, 150 + 6, 45 + 11},
        {&quarter, 4 | 128, nullptr, {30, 10}, {5, 0}, 20, 0},
        {nullptr, 0, nullptr, {10, 20}, {10, 20}, 150 + 5, 15 + 20},
    };
    for (const auto& c : cases) {
        NoteRecord note = {1, 1, text.Get(), 1000, 2000, 0, 0, image.Get()}, unplaced = note;
        POINT point = c.point;
        PlaceNoteBox(window, &note, &point, c.origin, c.zoom, c.flags);
        const SIZE wide = SizeOf("WW"), ab = SizeOf("AB");
        EXPECT_EQ(BoxOf(note),
                  (Box{c.left, c.top, c.left + std::max(wide.cx, ab.cx), c.top + 3 * ab.cy}));
        EXPECT_TRUE(point.x == c.after.x && point.y == c.after.y);
        PlaceNoteBox(window, &unplaced, nullptr, &origin, c.zoom, c.flags);
        EXPECT_TRUE(unplaced.Left == 500 && unplaced.Top == 2007);
    }
    const std::string line(300, 'x');
    for (const auto& [what, width, height] : {std::tuple{""s, SizeOf("WW").cx, 1},
                                              {"\r\n"s, SizeOf("WW").cx, 2},
                                              {line + '\n', SizeOf(line).cx, 1}}) {
        const OwnedBlock block = BlockOf(what);
        NoteRecord note = {1, 1, block.Get(), 0, 0, 0, 0, 0};
        PlaceNoteBox(window, &note, nullptr, nullptr, nullptr, 0);
        EXPECT_EQ(BoxOf(note), (Box{0, 0, width, height * SizeOf("x").cy})) << what;
    }
}

// The colours of a burned copy, lowest row first.
Colors Burned(const Box& box, bool isOpaque, GlobalHandle dib, const std::string& text) {
    NoteRecord note = {
        0, isOpaque ? 1 : 0, BlockOf(text).Release(), box[0], box[1], box[2], box[3], dib};
    const OwnedBlock copy(BurnNoteIntoDib(0, &note));
    EXPECT_EQ(note.Text, 0U);
    return copy ? ColorsOf(copy.Get()) : Colors();
}

TEST_F(NoteInteraction, BurnedInkLiesInTheBoxAlone) {
    constexpr int32_t width = 90, height = 60;
    const OwnedBlock paper = MakeDib(width, height, 1);
    {
        const LockedBlock block(paper.Get());
        std::memset(block.As<uint8_t>() + 48, 0xFF, block.Size() - 48);
    }
    const std::string text = "Hig\r\n\r\nW\tij\r\n"s;
    const Colors ink = Burned({0, 0, width, height}, false, paper.Get(), text);
    ASSERT_EQ(ink.size(), size_t{width} * height);
    EXPECT_GT(std::ranges::count(ink, kBlack), 30);
    EXPECT_EQ(ink, Burned({0, 0, width, height}, false, paper.Get(), "Hig\nWij"s));
    for (const auto& [bits, display] :
         {std::pair<uint16_t, int32_t>{1, 24}, {1, 8}, {4, 24}, {8, 24}, {24, 24}}) {
        SetDisplayDepth(display);
        const OwnedBlock dib = MakeDib(width, height, bits, false);
        const Colors image = ColorsOf(dib.Get());
        for (const Box& box : {Box{0, 0, 90, 60},
                               {20, 10, 45, 30},
                               {-3, -4, 20, 20},
                               {70, 50, 300, 300},
                               {200, 10, 240, 30},
                               {5, 5, 6, 6}})
            for (const bool isOpaque : {false, true}) {
                const Colors burned = Burned(box, isOpaque, dib.Get(), text);
                ASSERT_EQ(burned.size(), image.size());
                for (int32_t at = 0; at < width * height; at++) {
                    const auto i = static_cast<size_t>(at);
                    const int32_t x = at % width - box[0], y = height - 1 - at / width - box[1];
                    const bool isIn =
                        x >= 0 && x < box[2] - box[0] && y >= 0 && y < box[3] - box[1];
                    const auto inBox = static_cast<size_t>(at + width * box[1] - box[0]);
                    const bool isInk = isIn && x < width && y < height && ink[inBox] == kBlack;
                    const ColorRef ground = isIn && isOpaque ? kWhite : image[i];
                    ASSERT_EQ(burned[i], isInk ? kBlack : ground) << bits << " bits, " << at;
                }
            }
    }
    EXPECT_EQ(Burned({5, 5, 5, 9}, true, paper.Get(), text), Colors()) << "a box of no size";
    EXPECT_EQ(Burned({5, 5, 40, 30}, false, paper.Get(), "\1\2\r\n\x7F"s).size(), ink.size());
    NoteRecord note = {0, 1, BlockOf(text).Release(), 0, 0, 9, 9, 0};
    EXPECT_EQ(BurnNoteIntoDib(window, &note), 0U);
    note.Dib = paper.Get();
    EXPECT_EQ(BurnNoteIntoDib(window + 4711, &note), 0U);
    EXPECT_EQ(TextOf(note.Text), text) << "nothing was begun";
    GlobalFree(note.Text);
}

}  // namespace
}  // namespace vellim::test
