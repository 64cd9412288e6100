// What is measured, registered with Google Benchmark.
#pragma once

#include "bench/pages.h"

namespace vellim::bench {

// Rounds of each case: a round is a batch of either reader.
constexpr int kRounds = 15;

// Decoding every page in the codings that suit its depth. `pages` outlives the run.
void RegisterDecoding(const std::vector<Page>& pages);

// Opening a file of many images.
void RegisterDirectoryWalk();

}  // namespace vellim::bench
