// TIFF pictures on the screen, against the decoded picture turned, scaled and cut by plain means.
#include <gtest/gtest.h>

#include <algorithm>
#include <optional>

#include "support/painted_view.h"
#include "support/shown_colors.h"
#include "support/test_files.h"
#include "vellim/vellim.h"

namespace vellim::test {
namespace {

const ZoomRatios kLarger{5, 2, 5, 2}, kSmaller{3, 5, 3, 5}, kAcross{3, 5, 2, 0}, kSpeck{1, 7, 1, 7};
const ZoomRatios kNothing{1, 1000, 1, 1000}, kTwo{2, 0, 3, 1};

TEST(PaintTiff, IsThePictureTurnedScaledAndCut) {
    const auto live = Live();
    for (const int32_t display : {1, 8, 24}) {
        SetScreen(display);
        const TestWindow large(61, 53, 4), small(22, 19, 3), overlaid(31, 32, 0);
        for (const auto& [bits, photometric] : std::initializer_list<std::pair<uint16_t, uint16_t>>{
                 {1, 0}, {1, 1}, {4, 1}, {4, 3}, {8, 0}, {8, 3}, {24, 2}}) {
            const DecodedImage image = RandomImage(bits, photometric);
            const std::string plain = FileOf(
                BuildTiff({TiffImageOf(image, {ShortTag(TIFF_TAG_RESOLUTION_UNIT, {4})})}), "p");
            const std::string dense = FileOf(
                BuildTiff({TiffImageOf(image, {RationalTag(TIFF_TAG_X_RESOLUTION, 160, 1),
                                               RationalTag(TIFF_TAG_Y_RESOLUTION, 200, 3)})}),
                "d");
            const ViewCase views[] = {{.flags = 0, .ratios = &kLarger},
                                      {.flags = VIEW_ZOOM},
                                      {.flags = VIEW_ZOOM, .ratios = &kLarger},
                                      {.flags = VIEW_ZOOM, .ratios = &kSmaller},
                                      {.flags = VIEW_ZOOM, .ratios = &kAcross},
                                      {.flags = VIEW_ZOOM, .ratios = &kTwo},
                                      {.flags = VIEW_ZOOM, .ratios = &kSpeck},
                                      {.flags = VIEW_ZOOM, .ratios = &kNothing},
                                      {.flags = VIEW_ZOOM, .dpiX = 160, .dpiY = 200.0 / 3},
                                      {.flags = VIEW_FIT | VIEW_ZOOM, .ratios = &kLarger}};
            for (uint32_t i = 0; i < std::size(views) * 4 * 3 * 3; i++) {
                ViewCase view = views[i / 36];
                view.flags |= i % 4 | (i % 2 == i / 2 % 3 ? VIEW_INVERTED : 0);
                const TestWindow& to = i / 4 % 3 == 0 ? large : i / 4 % 3 == 1 ? small : overlaid;
                const std::array<int32_t, 2> positions = {
                    static_cast<int32_t>(i / 12 % 3) * 37,
                    20 + static_cast<int32_t>(i / 12 % 3 * 25)};
                const std::string& file = view.dpiX != 0 ? dense : plain;
                ASSERT_EQ(FaultOfPaint(
                              image, view, to, positions,
                              [&](DeviceContextHandle context) {
                                  return DecompressTiffToScreen(to.window, context, file.c_str(), 0,
                                                                view.ratios, view.flags);
                              },
                              VELLIM_BINARY_DIR),
                          "")
                    << bits << " bits, photometric " << photometric << ", display " << display
                    << ", view " << i / 36 << ", flags " << view.flags << ", window " << to.width
                    << ", at " << positions[0];
            }
        }
    }
    SetDisplay(nullptr);
    EXPECT_EQ(Live(), live);
}

// What a person sees beside the picture.
int32_t boxes = 0;
std::vector<CursorHandle> cursors;
const DesktopDriver kWatching = {
    [](WindowHandle /*owner*/, const char* /*text*/, const char* /*caption*/, uint32_t /*style*/) {
        return ++boxes;
    },
    [](CursorHandle cursor) { cursors.push_back(cursor); }, nullptr};

struct PaintTiffAlone : testing::Test {
    void SetUp() override {
        SetScreen(24);
        SetDesktopDriver(&kWatching);
        SetCursor(arrow_);
        boxes = 0, cursors.clear();
    }
    void TearDown() override {
        SetDesktopDriver(nullptr);
        SetDisplay(nullptr);
    }
    CursorHandle arrow_ = LoadCursorA(0, IDC_ARROW);
};

TEST_F(PaintTiffAlone, RefusesWithTheWindowAsItWas) {
    const auto live = Live();
    {
        const TestWindow to(22, 19, 3);
        const DeviceContextHandle context = GetDC(to.window), stale = GetDC(to.window);
        ReleaseDC(to.window, stale);
        ShowScrollBar(to.window, SB_VERT, 1);
        SetScrollPos(to.window, SB_VERT, 33, 0);
        const ImageSpec image = TiffImageOf(RandomImage(8, 1));
        const auto odd = [](uint16_t bits, uint16_t photometric) {
            return BuildTiff({SimpleImage(4, 4, bits, 1, 1, photometric, 4, {Bytes(99)})});
        };
        const std::string good = FileOf(BuildTiff({image}), "good"), gone = NewPath("gone");
        const std::string two = FileOf(odd(2, 1), "two"), deep = FileOf(odd(16, 1), "deep");
        const std::string junk = FileOf({'I', 'I', 41, 0, 8, 0, 0, 0, 0, 0}, "junk");
        const std::string mapless = FileOf(odd(8, 3), "mapless");
        const std::string wide =
            FileOf(BuildTiff({SimpleImage(1'048'577, 1, 1, 1, 1, 1, 1, {Bytes(131'073)})}), "wide");
        constexpr int32_t kUntouched = TIFF_NOT_CALS;
        const struct {
            const char* file;
            int32_t code, image = 0;
            WindowHandle window;
            DeviceContextHandle context;
        } cases[] = {
            {nullptr, kUntouched, 0, to.window, context},
            {"", kUntouched, 0, to.window, context},
            {good.c_str(), kUntouched, 0, to.window, 0},
            {good.c_str(), kUntouched, 0, to.window, stale},
            {good.c_str(), kUntouched, 0, 0, context},
            {good.c_str(), kUntouched, 0, to.window + 12345, context},
            {good.c_str(), TIFF_BAD_INDEX, 1, to.window, context},
            {good.c_str(), TIFF_BAD_INDEX, -1, to.window, context},
            {gone.c_str(), TIFF_IO_ERROR, 0, to.window, context},
            {junk.c_str(), TIFF_NOT_TIFF, 0, to.window, context},
            {mapless.c_str(), TIFF_TAG_MISSING, 0, to.window, context},
            {wide.c_str(), TIFF_NO_MEMORY, 0, to.window, context},
            {two.c_str(), TIFF_BAD_COLOR_FORMAT, 0, to.window, context},
            {deep.c_str(), TIFF_BAD_COLOR_FORMAT, 0, to.window, context},
        };
        const std::vector<uint32_t> before = to.Pixels();
        for (const auto& c : cases) {
            SetTiffError(kUntouched);
            EXPECT_EQ(DecompressTiffToScreen(c.window, c.context, c.file, c.image, nullptr, 1), 0);
            EXPECT_EQ(TiffError(), c.code) << &c - cases;
            EXPECT_EQ(SetCursor(arrow_), arrow_) << &c - cases;
            EXPECT_TRUE(to.Pixels() == before && GetScrollPos(to.window, SB_VERT) == 33) << c.code;
        }
        ReleaseDC(to.window, context);
        EXPECT_EQ(boxes, 0);
    }
    EXPECT_EQ(Live(), live);
}

TEST_F(PaintTiffAlone, TakesTheImageAskedForUnderTheWaitCursor) {
    const TestWindow to(61, 53, 4);
    const DecodedImage image = RandomImage(4, 3);
    const std::string path =
        FileOf(BuildTiff({TiffImageOf(RandomImage(1, 1)), TiffImageOf(image)}, true), "two");
    EXPECT_EQ(FaultOfPaint(
                  image, {}, to, {0, 20},
                  [&](DeviceContextHandle context) {
                      return DecompressTiffToScreen(to.window, context, path.c_str(), 1, nullptr,
                                                    0);
                  },
                  VELLIM_BINARY_DIR),
              "");
    EXPECT_EQ(cursors, (std::vector{LoadCursorA(0, IDC_WAIT), arrow_}));
    EXPECT_EQ(boxes, 0);
}

// Two of the five strips came.
TEST_F(PaintTiffAlone, KeepsTheLinesThatCameOfADamagedFile) {
    const DecodedImage image = RandomImage(8, 1);
    const uint32_t strip = 7 * 37, beyond = 0x7FFFFF00;
    const std::string path = FileOf(
        BuildTiff({TiffImageOf(
            image, {LongTag(TIFF_TAG_STRIP_OFFSETS, {8, 8 + strip, beyond, beyond, beyond})})}),
        "cut");
    for (const uint32_t flags : {0U, 2U}) {
        const auto live = Live();
        const TestWindow to(61, 53, 4);
        std::vector<uint32_t> expected = Expect(image, {.flags = flags}, to).pixels;
        std::fill_n(expected.begin() + (flags == 0 ? 14 * 61 : 0), 15 * 61, expected.back());
        const DeviceContextHandle context = GetDC(to.window);
        EXPECT_EQ(DecompressTiffToScreen(to.window, context, path.c_str(), 0, nullptr, flags), 0);
        EXPECT_EQ(TiffError(), TIFF_IO_ERROR);
        EXPECT_EQ(SetMapMode(context, MM_TEXT), MM_ANISOTROPIC);
        EXPECT_EQ(ReleaseDC(to.window, context), 1);
        EXPECT_TRUE(to.Pixels() == expected) << flags;
        EXPECT_TRUE(boxes == 0 && SetCursor(arrow_) == arrow_);
        EXPECT_EQ(Live()[0], live[0]);
    }
}

// Ratios below 0, and a picture so wide that a pixel of it is next to nothing.
TEST_F(PaintTiffAlone, LeavesNothingOlderWhereThereIsNothingToSee) {
    const std::string page = FileOf(BuildTiff({TiffImageOf(RandomImage(1, 1))}), "page");
    const std::string wide =
        FileOf(BuildTiff({SimpleImage(1'048'576, 1, 1, 1, 1, 1, 1, {Bytes(131'072)})}), "wide");
    const struct {
        const std::string& file;
        ZoomRatios ratios;
        size_t most;  // pixels that are not background
    } cases[] = {{page, {-1, 1, 1, 1}, 0},
                 {page, {-500, 1, -500, 1}, 0},
                 {page, {1, -3, INT32_MIN, 1}, 0},
                 {wide, {1, 1'048'576, 1, 1}, 1}};
    for (const auto& c : cases) {
        const TestWindow to(4000, 9, 0);
        const std::vector<uint32_t> all = to.Pixels();
        const DeviceContextHandle context = GetDC(to.window);
        PatBlt(context, 0, 0, 4000, 9, BLACKNESS);
        ASSERT_NE(to.Pixels(), all);
        EXPECT_EQ(
            DecompressTiffToScreen(to.window, context, c.file.c_str(), 0, &c.ratios, VIEW_ZOOM), 1);
        ReleaseDC(to.window, context);
        const std::vector<uint32_t> after = to.Pixels();
        const auto background = std::ranges::count(after, all[0]);
        EXPECT_LE(after.size() - static_cast<size_t>(background), c.most) << c.ratios.XNumerator;
    }
}

TEST_F(PaintTiffAlone, LineFunctionsDoNothingWithoutAPaint) {
    const TestWindow to(9, 9, 0);
    const std::vector<uint32_t> before = to.Pixels();
    const DeviceContextHandle context = GetDC(to.window);
    const OwnedObject bitmap(CreateBitmap(9, 1, 1, 24, nullptr));
    BITMAPINFO info{{40, 9, 1, 1, 24, 0, 0, 0, 0, 0, 0}, {}};
    Bytes line(40, 0x5A), scratch(100);
    ScreenLineContext record{context, bitmap.Get(), 0, 0, 9, 28, 0, &info, SRCCOPY, scratch.data()};
    for (const LineCallback callback :
         {FlushMonoLineToScreen, FlushMonoRotLineToScreen, FlushMonoRot18LineToScreen,
          FlushMonoRot27LineToScreen, FlushRGBLineToScreen, FlushRGBRotLineToScreen,
          FlushRGBRot18LineToScreen, FlushRGBRot27LineToScreen, FlushRGB24LineToScreen,
          FlushRGB24RotLineToScreen, FlushRGB24Rot18LineToScreen, FlushRGB24Rot27LineToScreen}) {
        for (const auto data : {reinterpret_cast<uintptr_t>(&record), uintptr_t{0}})
            for (uint8_t* const pixels : {line.data(), static_cast<uint8_t*>(nullptr)})
                EXPECT_EQ(callback(pixels, 0, data), 0U);
    }
    EXPECT_TRUE(to.Pixels() == before && line == Bytes(40, 0x5A) && scratch == Bytes(100));
    ReleaseDC(to.window, context);
}

}  // namespace
}  // namespace vellim::test
