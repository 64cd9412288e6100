// One Google Benchmark a page and coding. A case first checks that both readers give the same rows,
// then lets libtiff choose the call that serves it best, then runs its rounds.
#include "bench/cases.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdlib>
#include <string>

#include "bench/paired_timing.h"
#include "bench/readers.h"
#include "bench/report.h"

namespace vellim::bench {

namespace {

constexpr double kMillion = 1e6;
constexpr int kProbes = 3;

constexpr Coding kRaw = {"uncompressed", COMPRESSION_NONE, 0};
constexpr Coding kPackBits = {"PackBits", COMPRESSION_PACKBITS, 0};
constexpr Coding kLzw = {"LZW", COMPRESSION_LZW, PREDICTOR_NONE};
constexpr Coding kLzwDifferencing = {"LZW differencing", COMPRESSION_LZW, PREDICTOR_HORIZONTAL};
constexpr Coding kCcitt1D = {"CCITT 1-D", COMPRESSION_CCITTRLE, 0};
constexpr Coding kGroup3 = {"Group 3 1-D", COMPRESSION_CCITTFAX3, 0};
constexpr Coding kGroup3TwoD = {"Group 3 2-D", COMPRESSION_CCITTFAX3, GROUP3OPT_2DENCODING};
constexpr Coding kGroup4 = {"Group 4", COMPRESSION_CCITTFAX4, 0};

const char* NameOf(LibtiffCall call) {
    return call == LibtiffCall::EncodedStrip ? "strip" : "scanline";
}

// A decoder that fails in mid-run would look fast: nothing after that means anything.
void Demand(bool whole, const char* reader) {
    if (whole) return;
    std::fprintf(stderr, "%s stopped decoding in the middle of a measurement\n", reader);
    std::abort();
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

void MeasureDecoding(benchmark::State& state, Page page, const std::string& group) {
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

    const double megapixels = page.Pixels() / kMillion;
    const double vellim = megapixels / timing.VellimSeconds();
    const double libtiff = megapixels / timing.LibtiffSeconds();
    state.counters["vellim_Mpixel/s"] = vellim;
    state.counters["libtiff_Mpixel/s"] = libtiff;
    state.counters["ratio"] = timing.Ratio();
    AddResult({group, page.name, "Mpixel/s", vellim, libtiff, timing.Ratio(), NameOf(call)});
}

// libtiff differences samples of whole bytes only.
bool Suits(const Page& page, const Coding& coding) {
    return coding.option != kLzwDifferencing.option || coding.compression != COMPRESSION_LZW ||
           page.bitsPerPixel % 8 == 0;
}

void RegisterPages(const std::vector<Page>& pages, PageKind kind, const char* what,
                   const Coding& coding) {
    const std::string group = std::string(coding.name) + ", " + what;
    for (const Page& page : pages) {
        if (page.kind != kind || !Suits(page, coding)) continue;
        benchmark::RegisterBenchmark((group + "/" + page.name).c_str(),
                                     [&page, group, coding](benchmark::State& state) {
                                         MeasureDecoding(state, Convert(page, coding), group);
                                     })
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond)
            ->Iterations(kRounds);
    }
}

}  // namespace

void RegisterDecoding(const std::vector<Page>& pages) {
    for (const Coding& coding : {kGroup4, kGroup3, kGroup3TwoD, kCcitt1D, kPackBits, kRaw})
        RegisterPages(pages, PageKind::Document, "document pages", coding);
    for (const Coding& coding : {kGroup4, kGroup3, kGroup3TwoD, kCcitt1D, kPackBits, kLzw})
        RegisterPages(pages, PageKind::Halftone, "halftones", coding);
    for (const Coding& coding : {kLzw, kLzwDifferencing, kPackBits, kRaw})
        RegisterPages(pages, PageKind::Colour, "grey and colour", coding);
}

}  // namespace vellim::bench
