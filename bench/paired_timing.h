// Timing two pieces of work against each other on a machine that isn't quiet.
//
// Both are run in short batches that take turns (A B, B A, A B, ...), so that whatever slows the
// machine down for a while hits both alike. Time is processor time of the thread: neither reader
// starts another one, and waiting for a busy processor says nothing about a decoder. The figure of
// each is the median of its batches; the ratio is the median of the rounds' own ratios.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

namespace vellim::bench {

using Work = std::function<void()>;

// Processor time of the calling thread, in seconds.
double ThreadSeconds();

// Seconds that `work` takes once, from a batch of `repeats`.
double TimeBatch(const Work& work, uint32_t repeats);

// How many repeats make a batch long enough to be timed.
uint32_t BatchRepeats(const Work& work);

double Median(std::vector<double> values);

class PairedTiming {
  public:
    PairedTiming(Work vellim, Work libtiff);

    // Runs one batch of each and gives the seconds of one run of VELLIM's.
    double RunRound();

    [[nodiscard]] double VellimSeconds() const { return Median(vellimSeconds_); }
    [[nodiscard]] double LibtiffSeconds() const { return Median(libtiffSeconds_); }
    // How many times as fast as libtiff.
    [[nodiscard]] double Ratio() const { return Median(ratios_); }

  private:
    Work vellim_;
    Work libtiff_;
    uint32_t vellimRepeats_;
    uint32_t libtiffRepeats_;
    std::vector<double> vellimSeconds_;
    std::vector<double> libtiffSeconds_;
    std::vector<double> ratios_;
};

}  // namespace vellim::bench
