#include "codec/fax_2d_line.h"

#include <algorithm>

#include "codec/run_reader.h"
#include "vellim/failures.h"

namespace vellim {
namespace {

// Two runs of a line of one-dimensional coding in one step, where a white one is due.
bool TakePairOfRuns(FaxRow& row, const ChangeLists& lists, BitReader& reader) {
    const bool whiteIsDue = row.count % 2 == 0;
    if (!whiteIsDue || row.count + 2 > lists.Capacity() || !reader.TopUp(kQuickRunBits))
        return false;
    const RunPair pair = LookUpRunPair(reader.Window(), RunColor::White);
    const int32_t between = row.a0 + pair.first;
    if (pair.bits == 0 || between >= row.width) return false;
    reader.Consume(pair.bits);
    row.a0 = between + pair.second;
    lists.Current()[row.count] = between;
    lists.Current()[row.count + 1] = row.a0;
    row.count += 2;
    return true;
}

uint32_t ReadRun(BitReader& reader, RunColor color, Run& run) {
    const BitReader atRun = reader;
    if (reader.TopUp(kQuickRunBits) && ReadRunQuickly(reader, color, run)) return 0;
    reader = atRun;
    return ReadRunCarefully(reader, color, run);
}

}  // namespace

void EndLine(const FaxRow& row, ChangeLists& lists) {
    if (row.count != 0) {
        int32_t& last = lists.Current()[row.count - 1];
        last = std::min(last, kFarPosition);
    }
    lists.MakeReference(row.count, row.width, row.endsWithPass ? row.a0 : row.width);
}

uint32_t DecodeRowOfRuns(FaxRow& row, const ChangeLists& lists, BitReader& reader, bool& hasRuns) {
    do {
        if (TakePairOfRuns(row, lists, reader)) {
            hasRuns = true;
            continue;
        }
        if (row.count + 1 > lists.Capacity()) return TIFF_BAD_CODE;
        Run run;
        const auto color = static_cast<RunColor>(row.count & 1U);
        if (const uint32_t failure = ReadRun(reader, color, run); failure != 0) return failure;
        if (run.closedBy == RunKind::ZeroByte) {
            row.a0 = row.width;
            row.hasEndOfLine = true;
        } else {
            row.a0 += run.length;
            hasRuns = true;
        }
        lists.Current()[row.count++] = row.a0;
    } while (row.a0 < row.width);
    return 0;
}

uint32_t ReadEndOfLine(BitReader& reader, LookAhead& lookAhead, bool& oneDimensional) {
    constexpr uint32_t kEndOfLineBits = 12;
    if (reader.TopUp(kEndOfLineBits + 1) && reader.Peek(kEndOfLineBits) == 1) {
        reader.Consume(kEndOfLineBits);
    } else if (const uint32_t failure = SkipThroughFirstOne(reader); failure != 0) {
        return failure;
    }
    if (const uint32_t failure = reader.Ensure(1); failure != 0) return failure;
    oneDimensional = reader.Peek(1) != 0;
    reader.Consume(1);
    lookAhead = {reader.Position(), reader.Count() & 7U};
    return 0;
}

}  // namespace vellim
