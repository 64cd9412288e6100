// Text laid over forms, bitmaps and DIBs.
#include "fax/fax_request.h"

namespace vellim::test {
namespace {

using Overlays = FaxTest;

// A form of 83 x 70 pixels as the first of two images.
std::string FormOf(uint16_t bits) {
    std::string path = NewPath("form.tif");
    for (const int32_t width : {83, 40})
        EXPECT_EQ(SaveDIBInTiffFile(path.c_str(), MakeDib(width, 70, bits).Get(), TIFF_SAVE_LZW, 0),
                  1);
    return path;
}

// `form` with the ink of `page` on it, both lowest row first, of these sizes.
Colors Inked(Colors form, BITMAP size, const Colors& page, BITMAP pageSize) {
    for (int32_t y = 1; y <= std::min(size.bmHeight, pageSize.bmHeight); y++)
        for (int32_t x = 0; x < std::min(size.bmWidth, pageSize.bmWidth); x++) {
            const int32_t at = (size.bmHeight - y) * size.bmWidth + x;
            const int32_t ink = (pageSize.bmHeight - y) * pageSize.bmWidth + x;
            if (page[static_cast<size_t>(ink)] == 0) form[static_cast<size_t>(at)] = 0;
        }
    return form;
}

TEST_F(Overlays, PutOnePageOfTextOnAForm) {
    for (const int32_t display : {24, 8, 1})
        for (const uint16_t bits : std::initializer_list<uint16_t>{1, 4, 8, 24}) {
            SetDisplayDepth(display);
            const std::string path = FormOf(bits);
            // A page of another size than the form, and more text than it has room for.
            FaxPageRequest request = Request("MWM\r\nM M M M M M M M M\r\nM\r\nM\r\nM\r\n\r\nX");
            request.PageWidth = display == 8 ? 60 : 120;
            uint32_t page = 0;
            ASSERT_EQ(CreateBMPFaxPageFromASCII(&request, 1, &page, nullptr), 1U);
            const OwnedObject ink(page), form(LoadTiffIntoBitmap(path.c_str(), 0, 0));
            const OwnedObject bitmap(BitmapFormOverlay(path.c_str(), &request));
            const OwnedBlock dib(DIBFormOverlay(path.c_str(), &request));
            ASSERT_TRUE(ink && form && bitmap && dib) << display << ' ' << bits;

            const BITMAP size = RecordOf(form.Get());
            const Colors inked = Inked(ColorsOfBitmap(form.Get()), size, ColorsOfBitmap(ink.Get()),
                                       RecordOf(ink.Get()));
            EXPECT_NE(CellsOf(ink.Get()).find("###"), std::string::npos);
            EXPECT_EQ(ColorsOfBitmap(bitmap.Get()), inked) << display << ' ' << bits;
            const LockedBlock block(dib.Get());
            const auto* header = block.As<BITMAPINFOHEADER>();
            EXPECT_EQ(header->biBitCount, size.bmBitsPixel);
            EXPECT_EQ(header->biXPelsPerMeter, 3936);
            const Colors colors = ColorsOf(dib.Get());
            for (size_t i = 0; i < colors.size(); i++) {
                // Eight bits have but white and black.
                const bool isKept = size.bmBitsPixel != 8 || inked[i] == 0 || inked[i] == 0xFFFFFF;
                ASSERT_TRUE(isKept ? colors[i] == inked[i]
                                   : colors[i] == 0 || colors[i] == 0xFFFFFF);
            }
        }
}

TEST_F(Overlays, GiveTheBareFormWithoutText) {
    const std::string path = FormOf(8), nowhere = NewPath("nowhere");
    const OwnedObject form(LoadTiffIntoBitmap(path.c_str(), 0, 0));
    FaxPageRequest request = Request("M");
    EXPECT_EQ(BitmapFormOverlay(nowhere.c_str(), &request), 0U);
    EXPECT_EQ(DIBFormOverlay(nullptr, &request), 0U);
    std::memset(request.TextFile, 'x', sizeof request.TextFile);
    for (FaxPageRequest* asked : {&request, static_cast<FaxPageRequest*>(nullptr)}) {
        const OwnedObject bare(BitmapFormOverlay(path.c_str(), asked));
        EXPECT_EQ(ColorsOfBitmap(bare.Get()), ColorsOfBitmap(form.Get()));
        EXPECT_EQ(DIBFormOverlay(path.c_str(), asked), 0U);
    }
}

std::vector<CursorHandle> cursors;

TEST_F(Overlays, PutTextAtAPlace) {
    // The height of a line is 16 pixels at 96 dots an inch, which the screen has.
    const struct {
        int32_t x, y;
        uint32_t xResolution, yResolution;
        std::string text, cells;
    } cases[] = {
        {8, 16, 96, 96, "MM", "......|.##...|......|"},
        {8, 0, 96, 96, "MM\r\nM\r\n\r\nM", ".##...|.#....|......|"},
        {8, 0, 96, 96, "\r\nM M\n\nM", "......|.#.#..|.#....|"},
        {8, 0, 96, 96, "M\nMM\rMMM", ".###..|......|......|"},
        {8, 0, 96, 96, "\n\n\nM\n", "......|......|.#....|"},
        {0, 0, 96, 96, "MMMMMMMMMM\r\nM", "######|#.....|......|"},
        {-8, -16, 96, 96, "MMM\r\nMMMM\r\nM", "###...|......|......|"},
        {-80, 0, 96, 96, "M", "......|......|......|"},
        {48, 0, 96, 96, "M", "......|......|......|"},
        {1 << 30, INT32_MIN, 96, 96, "M\r\nM", "......|......|......|"},
        {8, 16, 192, 96, "M", "......|..#...|......|"},
        {8, 8, 96, 192, "M\r\nM", "......|.##...|.##...|"},
        {32, 16, 48, 96, "M", "......|..#...|......|"},
        {16, 16, 0, 96, "M", "......|..#...|......|"},
        {16, 16, ~0U, ~0U, "M", "......|......|......|"},
        {0, 0, 96, 96, "", "......|......|......|"},
    };
    const DesktopDriver watching = {nullptr, [](CursorHandle cursor) { cursors.push_back(cursor); },
                                    nullptr};
    const OwnedObject blank = Blank(6 * kCellWidth, 3 * kCellHeight);
    for (const auto& at : cases) {
        SetDesktopDriver(&watching);
        cursors.clear();
        const OwnedObject drawn(BitmapTextOverlay(blank.Get(), at.x, at.y, at.text.c_str(),
                                                  "VELLIM", -12, at.xResolution, at.yResolution));
        SetDesktopDriver(nullptr);
        EXPECT_EQ(cursors, (std::vector<CursorHandle>{LoadCursorA(0, IDC_WAIT), arrow_}));
        ASSERT_TRUE(drawn) << at.text;
        EXPECT_EQ(CellsOf(drawn.Get()), at.cells) << testing::PrintToString(at.text) << at.x;
    }
    EXPECT_EQ(CellsOf(blank.Get()), "......|......|......|") << "the original stays as it was";
    const char* text = "M";
    EXPECT_EQ(BitmapTextOverlay(0, 0, 0, text, text, 9, 0, 0), 0U);
    EXPECT_EQ(BitmapTextOverlay(blank.Get(), 0, 0, nullptr, text, 9, 0, 0), 0U);
    EXPECT_EQ(BitmapTextOverlay(blank.Get(), 0, 0, text, nullptr, 9, 0, 0), 0U);
}

TEST_F(Overlays, CopyADibOfAnyDepth) {
    const struct {
        int32_t dotsPerMeter;
        uint32_t dotsPerInch;
        int32_t wholeDots;
    } resolutions[] = {{3780, 96, 3779}, {7559, 191, 7519}, {0, 0, 0}, {-5, 0, 0}};
    const OwnedObject blank = Blank(83, 70);
    for (const uint16_t bits : std::initializer_list<uint16_t>{1, 4, 8, 24})
        for (const auto& [dotsPerMeter, dotsPerInch, wholeDots] : resolutions) {
            const OwnedBlock dib = MakeDib(83, 70, bits);
            auto* header = LockedBlock(dib.Get()).As<BITMAPINFOHEADER>();
            header->biXPelsPerMeter = header->biYPelsPerMeter = dotsPerMeter;
            const Bytes before = BytesOf(dib.Get());
            const OwnedBlock drawn(DIBTextOverlay(dib.Get(), 9, 7, "MW\r\nM", "VELLIM", 9));
            ASSERT_TRUE(drawn);
            EXPECT_EQ(BytesOf(dib.Get()), before);
            const auto* copied = LockedBlock(drawn.Get()).As<BITMAPINFOHEADER>();
            EXPECT_EQ(copied->biBitCount, bits == 1 ? 1 : 24);
            EXPECT_EQ(copied->biXPelsPerMeter, wholeDots);
            EXPECT_EQ(copied->biYPelsPerMeter, wholeDots);

            // The ink is that of a bitmap of this resolution.
            const OwnedObject bitmap(DibToBitmap(dib.Get()));
            const OwnedObject ink(BitmapTextOverlay(blank.Get(), 9, 7, "MW\r\nM", "VELLIM", 9,
                                                    dotsPerInch, dotsPerInch));
            EXPECT_EQ(ColorsOf(drawn.Get()),
                      Inked(ColorsOfBitmap(bitmap.Get()), RecordOf(bitmap.Get()),
                            ColorsOfBitmap(ink.Get()), RecordOf(ink.Get())));
        }
    const OwnedBlock dib = MakeDib(83, 70, 8), little(GlobalAlloc(GHND, 39));
    EXPECT_EQ(DIBTextOverlay(0, 0, 0, "M", "VELLIM", 9), 0U);
    EXPECT_EQ(DIBTextOverlay(little.Get(), 0, 0, "M", "VELLIM", 9), 0U);
    EXPECT_EQ(DIBTextOverlay(dib.Get(), 0, 0, nullptr, "VELLIM", 9), 0U);
    EXPECT_EQ(DIBTextOverlay(dib.Get(), 0, 0, "M", nullptr, 9), 0U);
}

}  // namespace
}  // namespace vellim::test
