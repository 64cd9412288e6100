// Decoding: one Google Benchmark a page and coding. A case first checks that both readers give the
// same rows, then lets libtiff choose the call that serves it best, then runs its rounds.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdlib>
#include <string>

#include "bench/cases.h"
#include "bench/codings.h"
#include "bench/paired_timing.h"
#include "bench/readers.h"
#include "bench/report.h"

namespace vellim::bench {

namespace {

constexpr double kMillion = 1e6;
constexpr int kProbes = 3;

const char* NameOf(LibtiffCall call) {
    return call == LibtiffCall::EncodedStrip ? "strip" : "scanline";
}

LibtiffCall FasterCall(Bytes& file, Bytes& buffer) {
    const auto seconds = [&](LibtiffCall call) {
        std::vector<double> times;
        times.reserve(kProbes);
        for (int i = 0; i < kProbes; ++i)
            times.push_back(TimeBatch([&] { DecodeWithLibtiff(file, call, buffer); }, 1));
        return Median(times);
    };
    return seconds(LibtiffCall::EncodedStrip) <= seconds(LibtiffCall::Scanline)
               ? LibtiffCall::EncodedStrip
               : LibtiffCall::Scanline;
}

void MeasureDecoding(benchmark::State& state, const Page& original, const Coding& coding,
                     const std::string& group) {
    Page page = Convert(original, coding);
    const auto refuse = [&](const char* reason) {
        AddFailure(group, page.name, reason);
        state.SkipWithError(reason);
    };
    if (page.file.empty()) return refuse("libtiff couldn't convert it");
    const PageBlock block(page.file);
    if (!ReadersAgree(block, page.file)) return refuse("the two readers differ");

    Bytes buffer;
    const LibtiffCall call = FasterCall(page.file, buffer);
    PairedTiming timing(
        [&] { Demand(DecodeWithVellim(block) == page.height, "VELLIM"); },
        [&] { Demand(DecodeWithLibtiff(page.file, call, buffer) == page.height, "libtiff"); });
    while (state.KeepRunning())
        state.SetIterationTime(timing.RunRound());

    ReportPage(state, page, group, timing, NameOf(call));
}

}  // namespace

// A reader or writer that fails in mid-run would look fast: nothing after that means anything.
void Demand(bool whole, const char* who) {
    if (whole) return;
    std::fprintf(stderr, "%s stopped in the middle of a measurement\n", who);
    std::abort();
}

void ReportPage(benchmark::State& state, const Page& page, const std::string& group,
                const PairedTiming& timing, const char* call) {
    const double megapixels = page.Pixels() / kMillion;
    const double vellim = megapixels / timing.VellimSeconds();
    const double libtiff = megapixels / timing.LibtiffSeconds();
    state.counters["vellim_Mpixel/s"] = vellim;
    state.counters["libtiff_Mpixel/s"] = libtiff;
    state.counters["ratio"] = timing.Ratio();
    AddResult({group, page.name, "Mpixel/s", vellim, libtiff, timing.Ratio(), call});
}

// libtiff differences samples of whole bytes only.
static bool Suits(const Page& page, const Coding& coding) {
    return coding.option != kLzwDifferencing.option || coding.compression != COMPRESSION_LZW ||
           page.bitsPerPixel % 8 == 0;
}

void RegisterPages(const std::vector<Page>& pages, PageKind kind, const std::string& group,
                   const Coding& coding, MeasurePage measure) {
    for (const Page& page : pages) {
        if (page.kind != kind || !Suits(page, coding)) continue;
        benchmark::RegisterBenchmark((group + "/" + page.name).c_str(),
                                     [&page, group, coding, measure](benchmark::State& state) {
                                         measure(state, page, coding, group);
                                     })
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond)
            ->Iterations(kRounds);
    }
}

void RegisterDecoding(const std::vector<Page>& pages) {
    const auto add = [&](PageKind kind, const char* what, const Coding& coding) {
        RegisterPages(pages, kind, std::string(coding.name) + ", " + what, coding, MeasureDecoding);
    };
    for (const Coding& coding : {kGroup4, kGroup3, kGroup3TwoD, kCcitt1D, kPackBits, kRaw})
        add(PageKind::Document, "document pages", coding);
    for (const Coding& coding : {kGroup4, kGroup3, kGroup3TwoD, kCcitt1D, kPackBits, kLzw})
        add(PageKind::Halftone, "halftones", coding);
    for (const Coding& coding : {kLzw, kLzwDifferencing, kPackBits, kRaw})
        add(PageKind::Colour, "grey and colour", coding);
}

}  // namespace vellim::bench
