// CALS pictures on the screen, and TIFF pictures by the call that tells them apart, against the
// decoded picture turned, scaled and cut by plain means.
#include <gtest/gtest.h>

#include "support/painted_view.h"
#include "support/reference_ccitt.h"
#include "support/shown_colors.h"
#include "support/test_files.h"
#include "vellim/vellim.h"

namespace vellim::test {
namespace {

Bytes CalsFile(int32_t width, int32_t height, int32_t density, const Bytes& code) {
    const CalsInfo info = {1, {180, 90}, {width, height}, density};
    Bytes file = BytesOf(OwnedBlock(DefineCALSHead(&info, nullptr)).Get());
    file.resize(CALS_HEADER_BYTES);
    file.insert(file.end(), code.begin(), code.end());
    return file;
}

// The first `lines` lines of a picture, a set bit being black.
Bytes CalsOf(const DecodedImage& image, int32_t density, size_t lines) {
    const Bytes rows = PackedRows(image);
    const size_t rowBytes = rows.size() / static_cast<size_t>(image.height);
    Picture picture{image.width, {}};
    for (size_t at = 0; at < rows.size(); at += rowBytes)
        picture.rows.emplace_back(&rows[at], rows.data() + at + rowBytes);
    const auto height = static_cast<uint32_t>(lines);
    const EngineRun run{.width = static_cast<uint32_t>(image.width),
                        .height = height,
                        .rowsPerStrip = height,
                        .bits = 1,
                        .key = TIFF_KEY_GROUP4};
    return CalsFile(image.width, image.height, density,
                    ReferenceCcittEncoder(run, picture, 2, lines).stream);
}

constexpr size_t kLines = 29;
int32_t boxes = 0, cursors = 0;
const DesktopDriver kWatching = {
    [](WindowHandle /*owner*/, const char* /*text*/, const char* /*caption*/, uint32_t /*style*/) {
        return ++boxes;
    },
    [](CursorHandle /*cursor*/) { cursors++; }, nullptr};

struct PaintCals : testing::Test {
    void SetUp() override {
        SetScreen(24);
        SetDesktopDriver(&kWatching);
        boxes = cursors = 0;
    }
    void TearDown() override {
        SetDesktopDriver(nullptr);
        SetDisplay(nullptr);
    }
};

// Each is as large as GetScreenViewSize tells.
TEST_F(PaintCals, IsThePictureTurnedScaledAndCut) {
    const ZoomRatios larger{5, 2, 5, 2}, across{3, 5, 2, 1}, speck{1, 7, 0, 7};
    const DecodedImage mono = RandomImage(1, 0), color = RandomImage(8, 3);
    const std::string cals = FileOf(CalsOf(mono, 0, kLines), "plain.cal");
    const std::string dense = FileOf(CalsOf(mono, 160, kLines), "dense.cal");
    const std::string tiff = FileOf(
        BuildTiff({TiffImageOf(color, {ShortTag(TIFF_TAG_RESOLUTION_UNIT, {4})})}), "plain.tif");
    const struct {
        const std::string& file;
        ViewCase view;
    } cases[] = {{cals, {.ratios = &larger, .isCals = true}},
                 {cals, {.flags = VIEW_ZOOM, .isCals = true}},
                 {cals, {.flags = VIEW_ZOOM, .ratios = &larger, .isCals = true}},
                 {cals, {.flags = VIEW_ZOOM, .ratios = &across, .isCals = true}},
                 {dense, {.flags = VIEW_ZOOM, .dpiX = 160, .dpiY = 160, .isCals = true}},
                 {dense, {.flags = VIEW_FIT | VIEW_ZOOM, .ratios = &larger, .isCals = true}},
                 {cals, {.flags = VIEW_ZOOM, .ratios = &speck, .isCals = true}},
                 {tiff, {.flags = VIEW_ZOOM, .ratios = &across}},
                 {tiff, {.flags = VIEW_FIT}}};
    const auto live = Live();
    for (const int32_t display : {1, 8, 24}) {
        SetScreen(display);
        const TestWindow large(61, 53, 4), small(22, 19, 3), overlaid(31, 32, 0);
        for (uint32_t i = 0; i < std::size(cases) * 4 * 2 * 3 * 3; i++) {
            const auto& [file, asked] = cases[i / 72];
            ViewCase view = asked;
            view.flags |= i % 4 | (i / 4 % 2 != 0 ? VIEW_INVERTED : 0);
            const TestWindow& to = i / 8 % 3 == 0 ? large : i / 8 % 3 == 1 ? small : overlaid;
            const auto step = static_cast<int32_t>(i / 24 % 3);
            const DecodedImage& image = view.isCals ? mono : color;
            const auto size = Expect(image, view, to).size;
            const auto paint = [&, path = file.c_str()](DeviceContextHandle context) {
                RECT whole{};
                EXPECT_EQ(GetScreenViewSize(SCREEN_FORMAT_ANY, to.window, context, path, 0,
                                            view.ratios, view.flags, &whole),
                          1);
                EXPECT_EQ((std::array{whole.left, whole.top, whole.right, whole.bottom}),
                          (std::array{0, 0, size[0], size[1]}));
                return view.isCals && i % 3 != 0
                           ? DecompressCALSToScreen(to.window, context, path, view.ratios,
                                                    view.flags)
                           : DecompressToScreen(SCREEN_FORMAT_ANY, to.window, context, path, 0,
                                                view.ratios, view.flags);
            };
            ASSERT_EQ(FaultOfPaint(image, view, to, {37 * step, 20 + 25 * step}, paint,
                                   VELLIM_BINARY_DIR),
                      "")
                << "display " << display << ", case " << i / 72 << ", flags " << view.flags
                << ", window " << to.width << ", at " << 37 * step;
        }
    }
    EXPECT_EQ(Live(), live);
}

TEST_F(PaintCals, NoOtherCursorIsShown) {
    const TestWindow to(61, 53, 4);
    const DeviceContextHandle context = GetDC(to.window);
    const std::string path = FileOf(CalsOf(RandomImage(1, 0), 0, kLines), "a.cal");
    EXPECT_EQ(DecompressCALSToScreen(to.window, context, path.c_str(), nullptr, 0), 1);
    EXPECT_EQ(boxes + cursors, 0);
    ReleaseDC(to.window, context);
}

// Code left alone, or anything.
constexpr int32_t kUntouched = TIFF_BAD_TAG, kAnyCode = -1;

TEST_F(PaintCals, RefusesWithTheWindowAsItWas) {
    const auto live = Live();
    {
        const TestWindow to(22, 19, 3);
        const DeviceContextHandle context = GetDC(to.window);
        const DecodedImage image = RandomImage(1, 0);
        const std::string cals = FileOf(CalsOf(image, 0, kLines), "a.cal");
        const std::string tiff = FileOf(BuildTiff({TiffImageOf(image)}), "a.tif");
        const std::string mm = FileOf({'M', 'M', 'x', 'y', 'z'}, "mm"), gone = NewPath("gone");
        const std::string text = FileOf(Bytes(3000, 'x'), "text"), tiny = FileOf({'I'}, "tiny");
        const std::string wide = FileOf(CalsFile(1'048'577, 1, 0, Bytes(9)), "wide.cal");
        const struct {
            int32_t format, code;
            std::string file;
            WindowHandle window;
            DeviceContextHandle context;
        } cases[] = {{3, kUntouched, cals, to.window, context},
                     {-1, kUntouched, gone, to.window, context},
                     {0, TIFF_NOT_TIFF, mm, to.window, context},
                     {0, kAnyCode, text, to.window, context},
                     {0, kAnyCode, tiny, to.window, context},
                     {0, kAnyCode, gone, to.window, context},
                     {0, kUntouched, "", to.window, context},
                     {1, TIFF_BAD_BYTE_ORDER, cals, to.window, context},
                     {2, TIFF_NOT_CALS, tiff, to.window, context},
                     {2, TIFF_IO_ERROR, gone, to.window, context},
                     {2, TIFF_NO_MEMORY, wide, to.window, context},
                     {2, kUntouched, "", to.window, context},
                     {2, kUntouched, cals, to.window, 0},
                     {2, kUntouched, cals, 0, context},
                     {0, kUntouched, tiff, to.window + 12345, context}};
        const std::vector<uint32_t> before = to.Pixels();
        for (const auto& c : cases) {
            RECT size{};
            const auto refused = [&](int32_t result) {
                EXPECT_EQ(result, 0) << &c - cases;
                const int32_t code = TiffError();
                EXPECT_TRUE(c.code == kAnyCode || code == c.code) << code << " in " << &c - cases;
                SetTiffError(kUntouched);
            };
            SetTiffError(kUntouched);
            const char* path = c.file.c_str();
            refused(DecompressToScreen(c.format, c.window, c.context, path, 0, nullptr, 0));
            if (c.code != TIFF_NO_MEMORY)  // a size can be told without
                refused(
                    GetScreenViewSize(c.format, c.window, c.context, path, 0, nullptr, 0, &size));
            if (c.format == SCREEN_FORMAT_CALS)
                refused(DecompressCALSToScreen(c.window, c.context, path, nullptr, 0));
            EXPECT_TRUE(to.Pixels() == before) << &c - cases;
        }
        EXPECT_EQ(DecompressCALSToScreen(to.window, context, nullptr, nullptr, 0), 0);
        EXPECT_EQ(GetScreenViewSize(2, to.window, context, cals.c_str(), 0, nullptr, 0, nullptr),
                  0);
        EXPECT_EQ(boxes, 0);
        ReleaseDC(to.window, context);
    }
    EXPECT_EQ(Live(), live);
}

// Fourteen lines, and the end of the code.
TEST_F(PaintCals, KeepsTheLinesThatCameOfADamagedFile) {
    const DecodedImage image = RandomImage(1, 0);
    const std::string path = FileOf(CalsOf(image, 0, 14), "cut.cal");
    for (const uint32_t flags : {0U, 2U}) {
        const TestWindow to(61, 53, 4);
        std::vector<uint32_t> expected = Expect(image, {.flags = flags, .isCals = true}, to).pixels;
        std::fill_n(expected.begin() + (flags == 0 ? 14 * 61 : 0), 15 * 61, expected.back());
        const DeviceContextHandle context = GetDC(to.window);
        EXPECT_EQ(DecompressCALSToScreen(to.window, context, path.c_str(), nullptr, flags), 0);
        EXPECT_EQ(TiffError(), TIFF_UNEXPECTED_EOFB);
        EXPECT_EQ(SetMapMode(context, MM_TEXT), MM_TEXT);
        ReleaseDC(to.window, context);
        EXPECT_TRUE(to.Pixels() == expected) << flags;
    }
    EXPECT_EQ(boxes, 0) << "the warning belongs to loading";
}

// A part of the picture, handed to the line functions by hand.
TEST_F(PaintCals, LineFunctionsReadTheirRecordAlone) {
    const LineCallback callbacks[] = {FlushCALSLineToScreen, FlushCALS90LineToScreen,
                                      FlushCALS180LineToScreen, FlushCALS270LineToScreen};
    const DecodedImage image = RandomImage(1, 0);
    Bytes rows = PackedRows(image);
    for (const uint32_t turns : {0U, 1U, 2U, 3U}) {
        const bool isRow = turns % 2 == 0;
        const TestWindow whole(isRow ? 37 : 29, isRow ? 29 : 37, 0), part(20, 18, 0);
        const DeviceContextHandle line = CreateCompatibleDC(0), context = GetDC(part.window);
        const OwnedObject bitmap(CreateBitmap(isRow ? 37 : 1, isRow ? 1 : 37, 1, 1, nullptr));
        const GraphicsHandle before = SelectObject(line, bitmap.Get());
        Bytes scratch(size_t{37} * 4);
        CalsScreenContext record{bitmap.Get(),
                                 context,
                                 line,
                                 {0, 0, whole.width, whole.height},
                                 {0, 0, 20, 18},
                                 {5, 3, 25, 21},
                                 {0, 0, 20, 18},
                                 isRow ? 6U : 74U,
                                 scratch.data(),
                                 NOTSRCCOPY,
                                 37};
        for (uint32_t n = 0; n < kLines; n++)
            EXPECT_EQ(
                callbacks[turns](&rows[size_t{5} * n], n, reinterpret_cast<uintptr_t>(&record)),
                0U);
        EXPECT_EQ(callbacks[turns](rows.data(), 9, 0), 0U);
        EXPECT_EQ(callbacks[turns](nullptr, 9, reinterpret_cast<uintptr_t>(&record)), 0U);
        const std::vector<uint32_t> all =
            Expect(image, {.flags = turns, .isCals = true}, whole).pixels;
        std::vector<uint32_t> expected;
        for (int32_t y = 3; y < 21; y++) {
            const auto row = all.begin() + ptrdiff_t{y} * whole.width;
            expected.insert(expected.end(), row + 5, row + 25);
        }
        EXPECT_TRUE(part.Pixels() == expected) << turns;
        SelectObject(line, before);
        DeleteDC(line), ReleaseDC(part.window, context);
    }
}

}  // namespace
}  // namespace vellim::test
