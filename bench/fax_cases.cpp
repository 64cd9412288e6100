// Fax pages from a plain text of 500 pages at 204 x 196 dots an inch, beside as many pages of empty
// lines: what the letters cost.
#include <cstring>
#include <fstream>

#include "bench/cases.h"
#include "bench/report.h"
#include "bench/temporary_folder.h"
#include "vellim/vellim.h"

namespace vellim::bench {

namespace {

constexpr uint32_t kPages = 500;
constexpr uint32_t kMostLinesOfPage = 80;
constexpr int kPageRounds = 5;
constexpr const char* kGroup = "Fax pages from text, 204 x 196";

constexpr const char* kWords[] = {"the",   "page", "of",    "a",       "letter,",  "measured",
                                  "lines", "are",  "drawn", "without", "haste;",   "and",
                                  "words", "wrap", "where", "they",    "must.",    "Machines",
                                  "hum",   "all",  "night", "sending", "invoices", "on"};

// Paragraphs of some lines each, which the pages wrap; more of them than the pages have room for.
std::string Text() {
    constexpr uint32_t wordsOfLine = 12, wordsOfParagraph = 6 * wordsOfLine;
    std::string text;
    uint32_t seed = 1;
    for (uint32_t i = 0; i < kPages * kMostLinesOfPage * wordsOfLine; i++) {
        seed = seed * 1103515245U + 12345U;
        text += kWords[(seed >> 16U) % std::size(kWords)];
        text += i % wordsOfParagraph == wordsOfParagraph - 1 ? "\r\n" : " ";
    }
    return text;
}

std::string EmptyLines() {
    std::string text;
    for (uint32_t i = 0; i < kPages * kMostLinesOfPage; i++)
        text += "\r\n";
    return text;
}

// A letter page with margins of an inch.
FaxPageRequest RequestFor(const std::string& path) {
    FaxPageRequest request{};
    std::strncpy(request.TextFile, path.c_str(), sizeof request.TextFile - 1);
    std::strncpy(request.FontName, "Courier New", sizeof request.FontName - 1);
    request.PageWidth = 850;
    request.PageHeight = 1100;
    request.LeftMargin = request.TopMargin = 100;
    request.PointSize = 10;
    request.XResolution = 204;
    request.YResolution = 196;
    request.Flags = FAX_HUNDREDTHS;
    return request;
}

// The first pages of the text in the file.
bool MakePages(const std::string& path, FaxPageKind kind) {
    FaxPageRequest request = RequestFor(path);
    std::vector<uint32_t> pages(kPages);
    uint32_t code = FAX_DONE;
    const uint32_t count = CreateFaxPageFromASCII(&request, kPages, pages.data(), kind, 0, &code);
    for (uint32_t i = 0; i < count; i++)
        kind == FAX_PAGE_DIB ? GlobalFree(pages[i]) : uint32_t(DeleteObject(pages[i]));
    return count == kPages && code == FAX_TOO_MANY_PAGES;
}

void Store(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

void MeasurePages(benchmark::State& state, FaxPageKind kind) {
    const char* name = kind == FAX_PAGE_DIB ? "DIBs" : "bitmaps";
    const TemporaryFolder folder;
    const std::string text = folder.File("text"), blank = folder.File("blank");
    Store(text, Text());
    Store(blank, EmptyLines());
    if (!MakePages(text, kind) || !MakePages(blank, kind)) {
        AddFailure(kGroup, name, "the pages aren't made");
        return state.SkipWithError("the pages aren't made");
    }
    PairedTiming timing([&] { Demand(MakePages(text, kind), "the text"); },
                        [&] { Demand(MakePages(blank, kind), "the blank pages"); });
    while (state.KeepRunning())
        state.SetIterationTime(timing.RunRound());
    AddResult({kGroup, name, "pages/s", kPages / timing.VellimSeconds(),
               kPages / timing.LibtiffSeconds(), timing.Ratio(), "pages without letters instead"});
}

}  // namespace

void RegisterFaxPages() {
    for (const FaxPageKind kind : {FAX_PAGE_BITMAP, FAX_PAGE_DIB})
        benchmark::RegisterBenchmark(kind == FAX_PAGE_DIB ? "Fax pages/DIBs" : "Fax pages/bitmaps",
                                     [=](benchmark::State& state) { MeasurePages(state, kind); })
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond)
            ->Iterations(kPageRounds);
}

}  // namespace vellim::bench
