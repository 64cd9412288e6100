// Any bytes as a text that becomes fax pages, of any measures and in any font; and that is laid
// over a form, a bitmap and a DIB.
#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <string>

#include "fuzz/checks.h"
#include "fuzz/input.h"
#include "support/shown_colors.h"
#include "support/test_files.h"
#include "vellim/vellim.h"

namespace vellim::fuzz {
namespace {

using test::Bytes;

constexpr uint32_t kMostSide = 300;
constexpr uint32_t kMostPages = 5;

struct Settings {
    FaxPageRequest request;
    LOGFONT font;
    int32_t display, x, y;
    uint16_t bits;
    uint32_t mostPages;
};

// Mostly what makes a small page, but now and then as far off as can be.
uint32_t Figure(Input& input) {
    constexpr std::array<uint32_t, 6> far = {~0U, 1U << 31U, 1U << 30U, 0xFFFF, 1, 0};
    const uint8_t choice = input.Byte();
    if (choice < 0xD0) return input.Byte();
    return choice < 0xF0 ? input.Word() : far[choice % far.size()];
}

Settings ReadSettings(Input& input) {
    constexpr std::array<const char*, 4> faces = {"VELLIM", "", "Times New Roman", "Courier New"};
    constexpr std::array<int32_t, 3> displays = {24, 8, 1};
    constexpr std::array<uint16_t, 4> depths = {1, 4, 8, 24};
    Settings settings{};
    FaxPageRequest& request = settings.request;
    for (uint32_t FaxPageRequest::*field :
         {&FaxPageRequest::PageWidth, &FaxPageRequest::PageHeight, &FaxPageRequest::LeftMargin,
          &FaxPageRequest::TopMargin, &FaxPageRequest::XResolution, &FaxPageRequest::YResolution,
          &FaxPageRequest::LineSpacing})
        request.*field = Figure(input);
    for (uint32_t i = 0; i < FAX_TAB_STOPS; i++)
        request.TabStops[i] = i < 4 ? Figure(input) : i * 16;
    request.PointSize = static_cast<int32_t>(Figure(input));
    if (input.Byte() % 4 == 0) request.PointSize = -(request.PointSize % 64);
    request.Flags = input.Byte();
    const uint8_t face = input.Byte();
    std::strncpy(request.FontName, faces[face % faces.size()], sizeof request.FontName - 1);
    if (face >= 0xF0) std::memset(request.FontName, 'x', sizeof request.FontName);
    std::memcpy(settings.font.lfFaceName, request.FontName, LF_FACESIZE);
    settings.font.lfWidth = input.Byte() % 64 - 32;
    settings.display = displays[input.Byte() % displays.size()];
    settings.x = static_cast<int32_t>(Figure(input));
    settings.y = static_cast<int32_t>(Figure(input));
    settings.bits = depths[input.Byte() % depths.size()];
    settings.mostPages = input.Byte() % (kMostPages + 1);
    return settings;
}

Bytes RowsOf(BitmapHandle bitmap) {
    BITMAP record{};
    Require(GetObjectA(bitmap, sizeof record, &record) == sizeof record, "a bitmap tells its size");
    Bytes rows(static_cast<size_t>(record.bmWidthBytes) * static_cast<size_t>(record.bmHeight));
    GetBitmapBits(bitmap, static_cast<int32_t>(rows.size()), rows.data());
    return rows;
}

struct Made {
    uint32_t code = 0;
    std::vector<test::Colors> pages;

    bool operator==(const Made& other) const = default;
};

Made Make(Settings& settings, FaxPageKind kind) {
    std::array<uint32_t, kMostPages> pages{};
    Made made;
    const uint32_t count = CreateFaxPageFromASCII(&settings.request, settings.mostPages,
                                                  pages.data(), kind, 0, &made.code);
    Require(count <= settings.mostPages, "no more pages than there is room for");
    Require((count == 0) == (made.code != FAX_DONE && made.code != FAX_TOO_MANY_PAGES),
            "there are pages, or the code tells why not");
    for (uint32_t i = 0; i < count; i++) {
        const OwnedObject bitmap(kind == FAX_PAGE_BITMAP ? pages[i] : 0);
        const OwnedBlock dib(kind == FAX_PAGE_BITMAP ? BitmapToDib(pages[i], 0) : pages[i]);
        made.pages.push_back(test::ColorsOf(dib.Get()));
    }
    return made;
}

void MakePages(Settings& settings) {
    const Made bitmaps = Make(settings, FAX_PAGE_BITMAP), dibs = Make(settings, FAX_PAGE_DIB);
    Require(bitmaps == dibs, "pages of both kinds are alike");
}

void LayOver(Settings& settings, const std::string& text) {
    const OwnedBlock dib = test::MakeDib(61, 47, settings.bits);
    const Bytes before = test::BytesOf(dib.Get());
    const FaxPageRequest& request = settings.request;
    const OwnedBlock drawn(DIBTextOverlay(dib.Get(), settings.x, settings.y, text.c_str(),
                                          request.FontName, request.PointSize));
    Require(static_cast<bool>(drawn) && test::BytesOf(dib.Get()) == before, "a DIB has a copy");

    const std::string form = test::NewPath("form.tif");
    SaveDIBInTiffFile(form.c_str(), dib.Get(), TIFF_SAVE_NONE, 0);
    const OwnedObject bitmap(BitmapFormOverlay(form.c_str(), &settings.request));
    const OwnedBlock page(DIBFormOverlay(form.c_str(), &settings.request));
    Require(static_cast<bool>(bitmap) && static_cast<bool>(page), "a form has a page");

    const Bytes rows = RowsOf(bitmap.Get());
    const OwnedObject copy(BitmapTextOverlay(bitmap.Get(), settings.x, settings.y, text.c_str(),
                                             request.FontName, request.PointSize,
                                             request.XResolution, request.YResolution));
    Require(static_cast<bool>(copy) && RowsOf(bitmap.Get()) == rows, "a bitmap has a copy");
}

}  // namespace
}  // namespace vellim::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace vellim;
    fuzz::Input input(data, size);
    fuzz::Settings settings = fuzz::ReadSettings(input);
    if (settings.font.lfWidth > 0) settings.request.Font = &settings.font;
    const std::vector<uint8_t> text = input.Rest();
    const std::string path = test::FileOf(text, "text");
    std::memcpy(settings.request.TextFile, path.c_str(), path.size() + 1);

    test::SetDisplayDepth(settings.display);
    SetTiffSizeLimits(fuzz::kMostSide, fuzz::kMostSide);
    GetStockObject(SYSTEM_FONT);  // which is made once
    const std::vector<uint32_t> before = test::Live();
    fuzz::MakePages(settings);
    fuzz::LayOver(settings, std::string(text.begin(), text.end()));
    fuzz::Require(test::Live() == before, "all is given back");
    SetDisplay(nullptr);
    return 0;
}
