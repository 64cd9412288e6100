// vellim_bench: VELLIM beside libtiff, in memory, in one run. Takes Google Benchmark's options;
// --benchmark_filter='Group 4.*document' measures a part.
#include <benchmark/benchmark.h>

#include <cstdio>

#include "bench/cases.h"
#include "bench/report.h"

int main(int argc, char** argv) {
    if (const auto exitCode = vellim::bench::RunPaintForMemory(argc, argv)) return *exitCode;
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    TIFFSetWarningHandler(nullptr);

    const std::string folder = vellim::bench::PageFolder();
    const std::vector<vellim::bench::Page> pages = vellim::bench::LoadPages(folder);
    if (pages.empty()) {
        std::fprintf(stderr, "no pages in %s: set VELLIM_PAGES to a folder of TIFF files\n",
                     folder.c_str());
        return 1;
    }
    vellim::bench::RegisterDecoding(pages);
    vellim::bench::RegisterEncoding(pages);
    vellim::bench::RegisterMmr(pages);
    vellim::bench::RegisterCopying(pages);
    vellim::bench::RegisterDirectoryWalk();
    vellim::bench::RegisterPainting(pages);
    vellim::bench::RegisterDrawing();
    vellim::bench::RegisterFaxPages();
    benchmark::RunSpecifiedBenchmarks();
    return vellim::bench::PrintReport() ? 0 : 1;
}
