// Batches, rounds and medians.
#include "bench/paired_timing.h"

#include <algorithm>
#include <cmath>
#include <ctime>
#include <utility>

namespace vellim::bench {

namespace {

constexpr double kBatchSeconds = 0.015;
constexpr double kMaxRepeats = 100'000;
constexpr double kNanosecond = 1e-9;

}  // namespace

double ThreadSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * kNanosecond;
}

double TimeBatch(const Work& work, uint32_t repeats) {
    const double start = ThreadSeconds();
    for (uint32_t i = 0; i < repeats; ++i)
        work();
    return (ThreadSeconds() - start) / repeats;
}

// The first run warms caches and memory up; the second is what the count is reckoned from.
uint32_t BatchRepeats(const Work& work) {
    work();
    const double once = std::max(TimeBatch(work, 1), kNanosecond);
    return static_cast<uint32_t>(std::clamp(std::ceil(kBatchSeconds / once), 1.0, kMaxRepeats));
}

double Median(std::vector<double> values) {
    if (values.empty()) return 0;
    std::sort(values.begin(), values.end());
    const size_t middle = values.size() / 2;
    if (values.size() % 2 == 1) return values[middle];
    return (values[middle - 1] + values[middle]) / 2;
}

PairedTiming::PairedTiming(Work vellim, Work libtiff)
    : vellim_(std::move(vellim)),
      libtiff_(std::move(libtiff)),
      vellimRepeats_(BatchRepeats(vellim_)),
      libtiffRepeats_(BatchRepeats(libtiff_)) {}

double PairedTiming::RunRound() {
    const bool libtiffFirst = ratios_.size() % 2 == 1;
    double libtiff = libtiffFirst ? TimeBatch(libtiff_, libtiffRepeats_) : 0;
    const double vellim = TimeBatch(vellim_, vellimRepeats_);
    if (!libtiffFirst) libtiff = TimeBatch(libtiff_, libtiffRepeats_);
    vellimSeconds_.push_back(vellim);
    libtiffSeconds_.push_back(libtiff);
    ratios_.push_back(libtiff / vellim);
    return vellim;
}

}  // namespace vellim::bench
