// What is measured, registered with Google Benchmark.
#pragma once

#include <benchmark/benchmark.h>

#include <optional>
#include <string>

#include "bench/pages.h"
#include "bench/paired_timing.h"

namespace vellim::bench {

// Rounds of each case: a round is a batch of either reader.
constexpr int kRounds = 15;

// Measures one page in one coding, as a case of `group`.
using MeasurePage = void (*)(benchmark::State& state, const Page& page, const Coding& coding,
                             const std::string& group);

// One case for every page of this kind whose depth suits the coding. `pages` outlives the run.
void RegisterPages(const std::vector<Page>& pages, PageKind kind, const std::string& group,
                   const Coding& coding, MeasurePage measure);

// Ends the process unless a run inside a measurement did all of its work.
void Demand(bool whole, const char* who);

// Enters a page's figures, in pixels a second.
void ReportPage(benchmark::State& state, const Page& page, const std::string& group,
                const PairedTiming& timing, const char* call);

// Decoding every page in the codings that suit its depth. `pages` outlives the run.
void RegisterDecoding(const std::vector<Page>& pages);

// Encoding every page in the codings that suit its depth. `pages` outlives the run.
void RegisterEncoding(const std::vector<Page>& pages);

// MMR streams of the document pages, beside libtiff's Group 4. `pages` outlives the run.
void RegisterMmr(const std::vector<Page>& pages);

// Copying pages from file to file, beside a plain copy of as many bytes.
void RegisterCopying(const std::vector<Page>& pages);

// Opening a file of many images.
void RegisterDirectoryWalk();

// Painting pages into a window, and loading them as device bitmaps. `pages` outlives the run.
void RegisterPainting(const std::vector<Page>& pages);

// Painting a drawing that is far larger than the memory that this takes.
void RegisterDrawing();

// Fax pages from a plain text.
void RegisterFaxPages();

// Where the arguments ask for it, paints that drawing, prints the memory taken and gives the exit
// code of the process, which exists for that alone.
std::optional<int> RunPaintForMemory(int argc, char** argv);

// Decodes the first image of a file with VELLIM and drops its lines.
bool DecodeIntoNothing(const std::string& path);

}  // namespace vellim::bench
