// Encoding: a case first checks that what each writer makes is read back as the page's rows, then
// lets libtiff choose the call that serves it best, then runs its rounds.
#include <algorithm>

#include "bench/cases.h"
#include "bench/codings.h"
#include "bench/readers.h"
#include "bench/report.h"
#include "bench/writers.h"
#include "vellim/platform.h"

namespace vellim::bench {

namespace {

constexpr int kProbes = 3;

Bytes BytesOf(GlobalHandle block) {
    const auto* bytes = static_cast<const uint8_t*>(GlobalLock(block));
    Bytes copy(bytes, bytes == nullptr ? bytes : bytes + GlobalSize(block));
    GlobalUnlock(block);
    GlobalFree(block);
    return copy;
}

bool ReadsBack(const PageRows& page, const Bytes& file) {
    return !file.empty() && RowsOf(PageBlock(file)) == page.rows;
}

void Discard(GlobalHandle block) {
    Demand(block != 0, "VELLIM");
    GlobalFree(block);
}

LibtiffWrite FasterCall(const PageRows& page, const Coding& coding, Bytes& buffer, Bytes& file) {
    const auto seconds = [&](LibtiffWrite call) {
        std::vector<double> times;
        for (int i = 0; i < kProbes; ++i)
            times.push_back(
                TimeBatch([&] { EncodeWithLibtiff(page, coding, call, buffer, file); }, 1));
        return Median(times);
    };
    return seconds(LibtiffWrite::EncodedStrip) <= seconds(LibtiffWrite::Scanline)
               ? LibtiffWrite::EncodedStrip
               : LibtiffWrite::Scanline;
}

void MeasureEncoding(benchmark::State& state, const Page& original, const Coding& coding,
                     const std::string& group) {
    const PageRows page = RowsOfPage(original);
    Bytes buffer, file;
    const bool sound = !page.rows.empty() &&
                       ReadsBack(page, BytesOf(EncodeWithVellim(page, coding))) &&
                       EncodeWithLibtiff(page, coding, LibtiffWrite::EncodedStrip, buffer, file) &&
                       ReadsBack(page, file);
    if (!sound) {
        AddFailure(group, original.name, "a writer's file doesn't read back");
        return state.SkipWithError("a writer's file doesn't read back");
    }
    const LibtiffWrite call = FasterCall(page, coding, buffer, file);
    PairedTiming timing(
        [&] { Discard(EncodeWithVellim(page, coding)); },
        [&] { Demand(EncodeWithLibtiff(page, coding, call, buffer, file), "libtiff"); });
    while (state.KeepRunning())
        state.SetIterationTime(timing.RunRound());
    ReportPage(state, original, group, timing,
               call == LibtiffWrite::EncodedStrip ? "strip" : "scanline");
}

}  // namespace

void RegisterEncoding(const std::vector<Page>& pages) {
    const auto add = [&](PageKind kind, const char* what, const Coding& coding) {
        RegisterPages(pages, kind, std::string("Encoding ") + coding.name + ", " + what, coding,
                      MeasureEncoding);
    };
    for (const Coding& coding : {kGroup4, kGroup3, kGroup3TwoD, kCcitt1D, kPackBits, kRaw})
        add(PageKind::Document, "document pages", coding);
    for (const Coding& coding : {kGroup4, kPackBits, kLzw})
        add(PageKind::Halftone, "halftones", coding);
    for (const Coding& coding : {kLzw, kLzwDifferencing, kPackBits, kRaw})
        add(PageKind::Colour, "grey and colour", coding);
}

}  // namespace vellim::bench
