// Reading whole runs: make-up codes added up to the terminating code that closes them.
#pragma once

#include <algorithm>
#include <cstdint>

#include "codec/bit_reader.h"
#include "codec/change_lists.h"
#include "codec/run_lookup.h"

namespace vellim {

struct Run {
    int32_t length = 0;     // pixels, at most kFarPosition
    RunKind closedBy{};     // Terminating, or ZeroByte
    uint32_t codeBits = 0;  // length of the code that closed it
};

// Each lookup wants eight bits in hand, and sixteen for a code longer than eight, even where the
// code itself takes fewer. 0, or the failure of the reader's fill.
uint32_t ReadRunCarefully(BitReader& reader, RunColor color, Run& run);

// The same where the code buffer has room. Needs kQuickRunBits bits in the window: a lookup, and
// what a second one behind its code wants in hand; longer chains of make-up codes top it up. False,
// with the reader somewhere in the run, when the room ends in it: the caller goes back to the run's
// start and reads it carefully.
inline constexpr uint32_t kRunLookAhead = 16;
inline constexpr uint32_t kQuickRunBits = kBlackLookupBits + kRunLookAhead;

inline bool ReadRunQuickly(BitReader& reader, RunColor color, Run& run) {
    RunEntry entry = LookUpRun(reader.Window(), color);
    reader.Consume(entry.length);
    run.length = entry.run;
    while (entry.kind == RunKind::MakeUp) {
        if (!reader.TopUp(kRunLookAhead)) return false;
        entry = LookUpRun(reader.Window(), color);
        reader.Consume(entry.length);
        run.length += entry.run;
    }
    run.closedBy = entry.kind;
    run.codeBits = entry.length;
    return true;
}

// Passes over zero bits, any number of them, and the 1 bit behind them, as an end-of-line code
// closes. No bit beyond that one is wanted. 0, or the failure of the reader's fill.
uint32_t SkipThroughFirstOne(BitReader& reader);

}  // namespace vellim
