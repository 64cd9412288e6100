#include "fuzz/lines.h"

#include <cstring>

#include "fuzz/checks.h"
#include "vellim/failures.h"

namespace vellim::fuzz {

namespace {

// A run is stopped once it has delivered this much, or one input of white lines takes seconds.
constexpr uint64_t kMaxBytes = 1'000'000;
constexpr uint64_t kMaxLines = 5'000;
constexpr uint64_t kDigestStart = 14695981039346656037U;
constexpr uint64_t kDigestFactor = 1099511628211U;

struct Collector {
    Expected expected;
    Hands hands;
    Outcome outcome;
    uint64_t bytes = 0;
};

uint32_t TakeLine(uint8_t* line, uint32_t lineNumber, uintptr_t callbackData) {
    auto& collector = *reinterpret_cast<Collector*>(callbackData);
    Outcome& outcome = collector.outcome;
    Require(!outcome.stopped, "no line comes after a stop");
    Require(lineNumber == collector.expected.firstLine + outcome.lines, "lines come in order");

    const uint32_t rowBytes = collector.expected.rowBytes;
    for (uint32_t i = 0; i < rowBytes; ++i)
        outcome.digest = (outcome.digest ^ line[i]) * kDigestFactor;
    if (collector.hands == Hands::Scribbling) std::memset(line, 0x5A, rowBytes);
    ++outcome.lines;
    collector.bytes += rowBytes;
    outcome.stopped = collector.bytes >= kMaxBytes || outcome.lines >= kMaxLines;
    return outcome.stopped ? TIFF_LINE_STOP : TIFF_LINE_GO_ON;
}

}  // namespace

Outcome Run(const Expected& expected, Hands hands, const Decode& decode) {
    Collector collector{expected, hands, {}};
    Outcome& outcome = collector.outcome;
    outcome.digest = kDigestStart;
    outcome.result = decode(reinterpret_cast<uintptr_t>(&collector), TakeLine);
    outcome.code = TiffError();

    RequireTold(outcome.result, outcome.code);
    if (outcome.result == 1) Require(outcome.code == TIFF_SUCCESS, "success has no code");
    if (outcome.stopped) Require(outcome.result == 1, "a stop is a success");
    if (expected.lines < 0) return outcome;
    Require(outcome.lines <= expected.lines, "no line comes behind the last");
    if (outcome.result == 1 && !outcome.stopped)
        Require(outcome.lines == expected.lines, "success delivers every line");
    return outcome;
}

}  // namespace vellim::fuzz
