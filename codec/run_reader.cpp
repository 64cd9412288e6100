#include "codec/run_reader.h"

#include <bit>

namespace vellim {

uint32_t ReadRunCarefully(BitReader& reader, RunColor color, Run& run) {
    run.length = 0;
    for (;;) {
        if (const uint32_t failure = reader.Ensure(8); failure != 0) return failure;
        RunEntry entry = LookUpRun(uint64_t{reader.Peek(8)} << 56, color);
        if (entry.length > 8) {
            if (const uint32_t failure = reader.Ensure(16); failure != 0) return failure;
            entry = LookUpRun(reader.Window(), color);
        }
        reader.Consume(entry.length);
        run.length = std::min(run.length + entry.run, kFarPosition);
        if (entry.kind == RunKind::MakeUp) continue;
        run.closedBy = entry.kind;
        run.codeBits = entry.length;
        return 0;
    }
}

uint32_t SkipThroughFirstOne(BitReader& reader) {
    for (;;) {
        if (const uint32_t failure = reader.Ensure(1); failure != 0) return failure;
        const auto zeros = static_cast<uint32_t>(std::countl_zero(reader.Window()));
        if (zeros < reader.Count()) {
            reader.Consume(zeros + 1);
            return 0;
        }
        reader.Consume(reader.Count());
    }
}

}  // namespace vellim
