// What is measured, registered with Google Benchmark.
#pragma once

#include <benchmark/benchmark.h>

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

}  // namespace vellim::bench
