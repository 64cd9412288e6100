// Pages from text, in cells of the library's own font and against a plain model of the rules.
#include <random>

#include "fax/fax_request.h"

namespace vellim::test {
namespace {

using Pages = FaxTest;

struct PagesRun {
    uint32_t code = 99;
    std::vector<std::string> pages;
};

PagesRun CellsOfRun(FaxPageRequest request, uint32_t mostPages = 9) {
    PagesRun run;
    std::vector<BitmapHandle> pages(mostPages);
    pages.resize(CreateBMPFaxPageFromASCII(&request, mostPages, pages.data(), &run.code));
    for (const BitmapHandle page : pages)
        run.pages.push_back(CellsOf(OwnedObject(page).Get()));
    return run;
}

TEST_F(Pages, HaveTheSizeAndResolutionAskedFor) {
    const struct {
        uint32_t flags, measure, xResolution, yResolution;
        int32_t width, height, dotsX, dotsY;
    } cases[] = {{FAX_HUNDREDTHS, 850, 200, 100, 1700, 850, 7873, 3936},
                 {0, 216, 200, 196, 1700, 1666, 7873, 7716},
                 {0, 11, 204, 98, 87, 42, 8031, 3858},
                 {FAX_HUNDREDTHS, 33, 99, 300, 32, 99, 3897, 11811}};
    for (const auto& at : cases) {
        FaxPageRequest request = Request("M");
        request.PageWidth = request.PageHeight = at.measure;
        request.XResolution = at.xResolution;
        request.YResolution = at.yResolution;
        request.Flags = static_cast<uint16_t>(at.flags);
        uint32_t page[2] = {}, code = 99;
        ASSERT_EQ(CreateBMPFaxPageFromASCII(&request, 1, &page[0], &code), 1U);
        ASSERT_EQ(CreateDIBFaxPageFromASCII(&request, 1, &page[1], nullptr), 1U);
        const OwnedObject bitmap(page[0]);
        const OwnedBlock dib(page[1]);
        const BITMAP record = RecordOf(bitmap.Get());
        const LockedBlock block(dib.Get());
        const auto* info = block.As<BITMAPINFO>();
        const BITMAPINFOHEADER& header = info->bmiHeader;
        EXPECT_EQ(code, uint32_t{FAX_DONE});
        EXPECT_EQ(record.bmWidth, at.width);
        EXPECT_EQ(record.bmHeight, at.height);
        EXPECT_EQ(record.bmBitsPixel, 1);
        EXPECT_EQ(header.biXPelsPerMeter, at.dotsX);
        EXPECT_EQ(header.biYPelsPerMeter, at.dotsY);
        EXPECT_EQ(header.biBitCount, 1);
        EXPECT_EQ(info->bmiColors[0].rgbGreen, 255) << "white is first";
        EXPECT_EQ(ColorsOf(dib.Get()), ColorsOfBitmap(bitmap.Get()));
    }
}

constexpr const char* kBlank = "..........|..........|..........|..........|";

TEST_F(Pages, HoldTheTextByTheRules) {
    const std::string sixteenTabs(16, '\t');
    const struct {
        std::string text;
        std::vector<std::string> pages;
    } cases[] = {
        {"", {kBlank}},
        {"\n\f\x01\x1f\x7f\x80\xff", {kBlank}},
        {"MM\r\nM", {"##........|#.........|..........|..........|"}},
        {"M\nM\fM\x7f\x80M\x1f\xff", {"####......|..........|..........|..........|"}},
        {"M\rXM\r\tM\r", {"#.........|#.........|#.........|..........|"}},
        {"\tM\tM", {"...#..#...|..........|..........|..........|"}},
        {"MMMM\tM\tM", {"#####.#...|..........|..........|..........|"}},
        {sixteenTabs + "M\tM", {".......##.|..........|..........|..........|"}},
        {"\t\tMM.MM\r\n\tM", {"......##..|##........|...#......|..........|"}},
        {"MMMMMMMMMMM", {"##########|#.........|..........|..........|"}},
        {"MMM,MMMMMMMM", {"###.......|########..|..........|..........|"}},
        {"MM-M.MMMMMM M", {"####......|######.#..|..........|..........|"}},
        {"MMMMMMMMM MM", {"#########.|##........|..........|..........|"}},
        {",MMMMMMMMM", {"##########|..........|..........|..........|"}},
        {"M(M'M/M_M*M", {"##########|#.........|..........|..........|"}},
        {"M\r\nM\r\nM\r\nM\r\n", {"#.........|#.........|#.........|#.........|", kBlank}},
        {"\r\n\r\n\r\nMM MMMMMMMM\r\nM",
         {"..........|..........|..........|##........|",
          "########..|#.........|..........|..........|"}},
    };
    for (const auto& [text, pages] : cases) {
        FaxPageRequest request = Request(text);
        request.TabStops[0] = 3 * kCellWidth;
        request.TabStops[1] = 6 * kCellWidth;
        request.TabStops[15] = 7 * kCellWidth;
        const PagesRun run = CellsOfRun(request);
        EXPECT_EQ(run.pages, pages) << testing::PrintToString(text);
        EXPECT_EQ(run.code, uint32_t{FAX_DONE});
    }
    FaxPageRequest request = Request("MMM MM\r\nM\tM\r\nM");
    request.LeftMargin = request.TabStops[0] = 2 * kCellWidth;
    request.TopMargin = Down(kCellHeight / 2);
    request.LineSpacing = Down(kCellHeight / 2);
    EXPECT_EQ(CellsOfRun(request).pages,
              (std::vector<std::string>{"..###.....|..###.....|..##......|..........|",
                                        "..#.#.....|..#.#.....|..#.......|..........|"}));
}

TEST_F(Pages, TellWhyThereAreNoMore) {
    FaxPageRequest request = Request("M\r\nM\r\nM\r\nM\r\nMM");
    uint32_t pages[2] = {}, code = 99;
    const auto run = [&](uint32_t most, uint32_t* to, uint32_t kind, BitmapHandle form) {
        const uint32_t count = CreateFaxPageFromASCII(&request, most, to, kind, form, &code);
        for (uint32_t i = 0; i < count; i++)
            kind == FAX_PAGE_DIB ? GlobalFree(pages[i]) : uint32_t(DeleteObject(pages[i]));
        return testing::Message() << count << " pages, code " << code;
    };
    const auto says = [](const testing::Message& message) { return message.GetString(); };
    for (const uint32_t kind : {FAX_PAGE_BITMAP, FAX_PAGE_DIB}) {
        EXPECT_EQ(says(run(1, pages, kind, 0)), "1 pages, code 2");
        EXPECT_EQ(says(run(2, pages, kind, 0)), "2 pages, code 0");
        EXPECT_EQ(says(run(0, pages, kind, 0)), "0 pages, code 1");
        EXPECT_EQ(says(run(1, nullptr, kind, 0)), "0 pages, code 1");
        EXPECT_EQ(says(run(1, pages, kind, 0x1234)), "0 pages, code 4");
    }
    EXPECT_EQ(says(run(1, pages, 12, 0)), "0 pages, code 1");
    EXPECT_EQ(CreateFaxPageFromASCII(nullptr, 1, pages, FAX_PAGE_DIB, 0, nullptr), 0U);
    for (uint32_t FaxPageRequest::*size :
         {&FaxPageRequest::PageWidth, &FaxPageRequest::YResolution})
        for (const uint32_t wrong : {0U, 1U << 30U, ~0U}) {
            FaxPageRequest other = request;
            other.*size = wrong;
            EXPECT_EQ(CreateBMPFaxPageFromASCII(&other, 1, pages, &code), 0U);
            EXPECT_EQ(code, uint32_t{FAX_NO_MEMORY});
        }
    std::memset(request.TextFile, 'x', sizeof request.TextFile);
    EXPECT_EQ(says(run(1, pages, FAX_PAGE_BITMAP, 0)), "0 pages, code 3");
}

TEST_F(Pages, TakeTheFontAskedFor) {
    LOGFONT font{};
    std::memcpy(font.lfFaceName, "VELLIM", sizeof "VELLIM");
    std::vector<uint8_t> record(sizeof font + 1);
    std::memcpy(&record[1], &font, sizeof font);
    FaxPageRequest request = Request("MMM");
    request.Font = reinterpret_cast<LOGFONT*>(&record[1]);
    request.PointSize = -2 * kCellHeight;
    const std::string big = "######....|######....|..........|..........|";
    EXPECT_EQ(CellsOfRun(request).pages.at(0), big);
    std::memcpy(&font, &record[1], sizeof font);
    EXPECT_EQ(font.lfHeight, 2 * kCellHeight);
    request.Font = nullptr;
    EXPECT_EQ(CellsOfRun(request).pages.at(0), big);
    request.Font = &font;
    font.lfHeight = 5;
    SetFace(request, "");
    EXPECT_EQ(CellsOfRun(request).pages.at(0).substr(22), std::string(kBlank).substr(22));
    EXPECT_EQ(font.lfHeight, 5) << "without a name no font is made";
}

// The rules word by word, each measure taken anew.
struct Model {
    FaxPageRequest request;
    uint32_t mostPages;
    ScopedContext context{ScopedContext::Kind::Memory};
    std::vector<OwnedObject> pages{};
    std::string line{};
    uint32_t x = 0, y = 0, tab = 0;

    [[nodiscard]] SIZE Extent(const std::string& text) const {
        SIZE size{};
        GetTextExtentPointA(context.Get(), text.data(), static_cast<int32_t>(text.size()), &size);
        return size;
    }
    void Draw() const {
        TextOutA(context.Get(), static_cast<int32_t>(x), static_cast<int32_t>(y), line.data(),
                 static_cast<int32_t>(line.size()));
    }
    void NewPage() {
        const auto width = static_cast<int32_t>(request.PageWidth);
        const auto height = static_cast<int32_t>(request.PageHeight);
        pages.push_back(Blank(width, height));
        SelectObject(context.Get(), pages.back().Get());
        x = request.LeftMargin, y = request.TopMargin, tab = 0;
    }
    void NextLine() {
        y += static_cast<uint32_t>(Extent("M").cy) + request.LineSpacing;
        x = request.LeftMargin, tab = 0;
    }
    // False where there are more pages than there may be.
    bool Set(const std::string& text) {
        NewPage();
        for (size_t i = 0; i < text.size(); i++) {
            if (text[i] == 9) {
                Draw();
                x += static_cast<uint32_t>(Extent(line).cx);
                if (tab < 16) x = std::max(x, request.LeftMargin + request.TabStops[tab]);
                line.clear(), tab++;
            } else if (text[i] == 13) {
                i++;
                Draw();
                NextLine();
                line.clear();
            } else if (text[i] >= 32 && text[i] <= 126) {
                line += text[i];
            }
            std::string tail;
            if (x + static_cast<uint32_t>(Extent(line).cx) >=
                request.PageWidth - request.LeftMargin) {
                for (size_t at = line.size(); at-- > 1;) {
                    if (std::strchr(" !,-.:;?", line[at]) == nullptr) continue;
                    tail = line.substr(at + 1), line.resize(at);
                    break;
                }
                Draw();
                NextLine();
                line = tail;
            }
            if (y < request.PageHeight - request.TopMargin) continue;
            line = tail;
            if (pages.size() == mostPages) return false;
            NewPage();
        }
        Draw();
        return true;
    }
};

TEST_F(Pages, AreThoseOfTheModel) {
    std::mt19937 random(1903);
    const auto below = [&](uint32_t end) { return static_cast<uint32_t>(random() % end); };
    const std::string bytes = "abcdefgMMWWiil  ,.-!?:;\t\t\r\r\n\n\f\x7f\xe9()";
    for (int round = 0; round < 300; round++) {
        std::string text(below(600), 'a');
        for (char& byte : text)
            byte = bytes[below(below(3) == 0 ? 8 : static_cast<uint32_t>(bytes.size()))];
        FaxPageRequest request = Request(text);
        SetFace(request, round % 2 == 0 ? "VELLIM" : "Times New Roman");
        request.YResolution = 100;
        request.Flags = static_cast<uint16_t>(FAX_HUNDREDTHS | below(4) * 2);
        request.PageWidth = 60 + below(300), request.PageHeight = 40 + below(200);
        request.LeftMargin = below(below(8) == 0 ? 400 : 25),
        request.TopMargin = below(below(8) == 0 ? 150 : 24);
        request.LineSpacing = below(4), request.PointSize = 7 + static_cast<int32_t>(below(6));
        for (int i = 0; i < FAX_TAB_STOPS; i++)
            request.TabStops[i] = static_cast<uint32_t>(i) * below(30);

        LOGFONT font{};
        font.lfHeight = -MulDiv(request.PointSize, 100, 72);
        font.lfWeight = (request.Flags & FAX_BOLD) != 0 ? FW_BOLD : FW_NORMAL;
        font.lfItalic = (request.Flags & FAX_ITALIC) != 0 ? 1 : 0;
        font.lfCharSet = DEFAULT_CHARSET;
        std::memcpy(font.lfFaceName, request.FontName, LF_FACESIZE);
        Model model{.request = request, .mostPages = 1 + below(9)};
        const OwnedObject made(CreateFontIndirectA(&font));
        const GraphicsHandle before = SelectObject(model.context.Get(), made.Get());
        const bool isAll = model.Set(text);

        std::vector<uint32_t> bitmaps(model.mostPages), dibs(model.mostPages);
        uint32_t code = 99;
        ASSERT_EQ(CreateBMPFaxPageFromASCII(&request, model.mostPages, bitmaps.data(), &code),
                  model.pages.size());
        EXPECT_EQ(code, uint32_t{isAll ? FAX_DONE : FAX_TOO_MANY_PAGES});
        ASSERT_EQ(CreateDIBFaxPageFromASCII(&request, model.mostPages, dibs.data(), &code),
                  model.pages.size());
        for (size_t i = 0; i < model.pages.size(); i++) {
            const OwnedObject bitmap(bitmaps[i]);
            const OwnedBlock dib(dibs[i]);
            const Colors colors = ColorsOfBitmap(model.pages[i].Get());
            EXPECT_EQ(ColorsOfBitmap(bitmap.Get()), colors) << "round " << round << ", page " << i;
            EXPECT_EQ(ColorsOf(dib.Get()), colors) << "round " << round << ", page " << i;
        }
        SelectObject(model.context.Get(), before);
    }
}

}  // namespace
}  // namespace vellim::test
