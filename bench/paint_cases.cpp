// Painting pages into a window, beside decoding them into nothing and beside libtiff's lines; and
// loading pages as device bitmaps, beside loading them as DIBs. All work on files, which the system
// keeps in its cache.
#include <fstream>

#include "bench/cases.h"
#include "bench/codings.h"
#include "bench/report.h"
#include "bench/screen_window.h"
#include "bench/temporary_folder.h"
#include "vellim/vellim.h"

namespace vellim::bench {

namespace {

constexpr double kMillion = 1e6;

// A page of 300 dots an inch, at half its size on a display of 96.
constexpr float kPageDotsPerInch = 300;
constexpr ZoomRatios kHalf = {300, 2 * 96, 300, 2 * 96};

// The page as a file of that resolution, or an empty path.
std::string StorePage(const Page& page, const Coding& coding, const TemporaryFolder& folder) {
    const Page converted = Convert(page, coding);
    if (converted.file.empty()) return {};
    std::string path = folder.File("page.tif");
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(converted.file.data()),
               static_cast<std::streamsize>(converted.file.size()));
    const TiffPointer tiff(TIFFOpen(path.c_str(), "r+"));
    const bool isStored = tiff != nullptr &&
                          TIFFSetField(tiff.get(), TIFFTAG_XRESOLUTION, kPageDotsPerInch) == 1 &&
                          TIFFSetField(tiff.get(), TIFFTAG_YRESOLUTION, kPageDotsPerInch) == 1 &&
                          TIFFRewriteDirectory(tiff.get()) == 1;
    return isStored ? path : std::string();
}

uint32_t DropLine(uint8_t* /*line*/, uint32_t /*lineNumber*/, uintptr_t /*callbackData*/) {
    return TIFF_LINE_GO_ON;
}

bool ReadLinesWithLibtiff(const std::string& path, Bytes& line) {
    const TiffPointer tiff(TIFFOpen(path.c_str(), "r"));
    uint32_t height = 0;
    if (tiff == nullptr || TIFFGetField(tiff.get(), TIFFTAG_IMAGELENGTH, &height) == 0)
        return false;
    line.resize(static_cast<size_t>(TIFFScanlineSize(tiff.get())));
    for (uint32_t row = 0; row < height; ++row)
        if (TIFFReadScanline(tiff.get(), line.data(), row) != 1) return false;
    return true;
}

void Report(const Page& page, const std::string& group, const PairedTiming& timing,
            const char* beside) {
    const double megapixels = page.Pixels() / kMillion;
    AddResult({group, page.name, "Mpixel/s", megapixels / timing.VellimSeconds(),
               megapixels / timing.LibtiffSeconds(), timing.Ratio(), beside});
}

struct Extent {
    int32_t width, height;
};
constexpr Extent kScreen = {800, 600};

// A window of a screen's size shows a part of the page; one of the page's half size all of it.
enum class Shown { Part, All };

Extent HalfOf(const Page& page) {
    return {static_cast<int32_t>(page.width + 1) / 2, static_cast<int32_t>(page.height + 1) / 2};
}

bool IsHalfSize(const ScreenWindow& window, const std::string& path, const Page& page) {
    RECT size{};
    return window.SizeOf(path, &kHalf, VIEW_ZOOM, size) && size.right == HalfOf(page).width &&
           size.bottom == HalfOf(page).height;
}

enum class Beside { Decoding, Libtiff };

template <Shown kShown, Beside kBeside>
void MeasurePainting(benchmark::State& state, const Page& page, const Coding& coding,
                     const std::string& group) {
    const TemporaryFolder folder;
    const std::string path = StorePage(page, coding, folder);
    const Extent extent = kShown == Shown::Part ? kScreen : HalfOf(page);
    const ScreenWindow window(extent.width, extent.height);
    if (!IsHalfSize(window, path, page) || !window.Paint(path, &kHalf, VIEW_ZOOM) ||
        !window.HasTwoColors()) {
        AddFailure(group, page.name, "it isn't painted at half size");
        return state.SkipWithError("it isn't painted at half size");
    }
    const auto paint = [&] { Demand(window.Paint(path, &kHalf, VIEW_ZOOM), "the painting"); };
    Bytes line;
    const auto beside = [&] {
        if (kBeside == Beside::Decoding) return Demand(DecodeIntoNothing(path), "the decoding");
        Demand(ReadLinesWithLibtiff(path, line), "libtiff");
    };
    PairedTiming timing(paint, beside);
    while (state.KeepRunning())
        state.SetIterationTime(timing.RunRound());
    Report(page, group, timing, kBeside == Beside::Decoding ? "bare decoding instead" : "scanline");
}

bool LoadDib(const std::string& path) {
    const DibHandle dib = LoadTiffIntoDIB(path.c_str(), 0, 0);
    GlobalFree(dib);
    return dib != 0;
}

bool LoadBitmap(const std::string& path) {
    return DeleteObject(LoadTiffIntoBitmap(path.c_str(), 0, 0)) == 1;
}

void MeasureLoading(benchmark::State& state, const Page& page, const Coding& coding,
                    const std::string& group) {
    const TemporaryFolder folder;
    const std::string path = StorePage(page, coding, folder);
    if (!LoadDib(path) || !LoadBitmap(path)) {
        AddFailure(group, page.name, "it isn't loaded");
        return state.SkipWithError("it isn't loaded");
    }
    PairedTiming timing([&] { Demand(LoadBitmap(path), "LoadTiffIntoBitmap"); },
                        [&] { Demand(LoadDib(path), "LoadTiffIntoDIB"); });
    while (state.KeepRunning())
        state.SetIterationTime(timing.RunRound());
    Report(page, group, timing, "LoadTiffIntoDIB instead");
}

}  // namespace

bool DecodeIntoNothing(const std::string& path) {
    const TiffFileHandle file = OpenTiffFile(path.c_str(), T_READ);
    const bool isDecoded =
        GetTiffImage(file, 0) == 1 && DecodeTiffImage(file, 0, 0, 0, 0, DropLine) == 1;
    CloseTiffFile(file);
    return isDecoded;
}

void RegisterPainting(const std::vector<Page>& pages) {
    const auto add = [&](const std::string& group, MeasurePage measure) {
        RegisterPages(pages, PageKind::Document, group + ", document pages", kGroup4, measure);
        RegisterPages(pages, PageKind::Halftone, group + ", halftones", kGroup4, measure);
    };
    add("Painting at half size in 800 x 600", MeasurePainting<Shown::Part, Beside::Decoding>);
    add("Painting at half size in 800 x 600, beside libtiff",
        MeasurePainting<Shown::Part, Beside::Libtiff>);
    add("Painting all at half size", MeasurePainting<Shown::All, Beside::Decoding>);
    RegisterPages(pages, PageKind::Document, "Loading Group 4 as a bitmap", kGroup4,
                  MeasureLoading);
    RegisterPages(pages, PageKind::Colour, "Loading LZW as a bitmap", kLzw, MeasureLoading);
    RegisterPages(pages, PageKind::Colour, "Loading uncompressed as a bitmap", kRaw,
                  MeasureLoading);
}

}  // namespace vellim::bench
