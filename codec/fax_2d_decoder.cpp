// The decoders of two-dimensional coding: T.4 with an end-of-line code and a tag bit before each
// line, and T.6, which has neither. Both keep a line as a list of changing elements; only the
// painter makes pixels of it.
#include <algorithm>

#include "codec/bit_reader.h"
#include "codec/change_lists.h"
#include "codec/end_of_run.h"
#include "codec/engines.h"
#include "codec/fax_2d_row.h"
#include "codec/run_painter.h"
#include "codec/run_reader.h"
#include "vellim/failures.h"

namespace vellim {
namespace {

// Puts the reader on the strip's first byte; the line above the strip's first is white.
void BeginStrip(CodecState& state, ChangeLists& lists, BitReader& reader, LookAhead& lookAhead) {
    const int32_t width = state.Dimensions.biWidth;
    state.StripEnded = 0;
    reader.Reload();
    lookAhead = {reader.Position(), 0};
    lists.MakeReference(0, width, width);
}

// Makes a finished line the reference of the next.
void EndLine(const FaxRow& row, ChangeLists& lists) {
    if (row.count != 0) {
        int32_t& last = lists.Current()[row.count - 1];
        last = std::min(last, kFarPosition);
    }
    lists.MakeReference(row.count, row.width, row.endsWithPass ? row.a0 : row.width);
}

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

// One line of one-dimensional coding, as a list that the next line can be read against. An
// end-of-line code closes the line, but stays in the reader.
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
        } else {
            row.a0 += run.length;
            hasRuns = true;
        }
        lists.Current()[row.count++] = row.a0;
    } while (row.a0 < row.width);
    return 0;
}

// The end-of-line code and the tag bit behind it: 1 when the next line is one-dimensional.
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

}  // namespace

uint32_t DecodeGroup4(CodecState& state) {
    if (const uint32_t code = InitDecodeBuffers(&state); code != 0) return EndOfRun(code);
    const int32_t width = state.Dimensions.biWidth;
    ChangeLists lists(width);
    if (!lists) return TIFF_NO_MEMORY;

    BitReader reader(state);
    LookAhead lookAhead;
    BeginStrip(state, lists, reader, lookAhead);
    for (;;) {
        FaxRow row{.width = width};
        const uint32_t failure = DecodeFaxRow<FaxDialect::Group4>(row, lists, reader, lookAhead);
        if (failure != 0) return failure;
        PaintRuns(lists.Current(), state.LineBuffer, row.count, state.RowBytes);
        EndLine(row, lists);
        if (const uint32_t code = FlushDataBuffer(&state); code != 0) return EndOfRun(code);
        if (state.StripEnded != 0) BeginStrip(state, lists, reader, lookAhead);
    }
}

// The end-of-line code behind a line is read before the line is delivered, so the last line too
// needs one behind it. The code at the head of the stream is read as a line with nothing in it,
// which delivers nothing as long as no real line has come; its tag bit decides the first real line.
uint32_t Decode2DEol(CodecState& state) {
    if (const uint32_t code = InitDecodeBuffers(&state); code != 0) return EndOfRun(code);
    const int32_t width = state.Dimensions.biWidth;
    ChangeLists lists(width);
    if (!lists) return TIFF_NO_MEMORY;

    BitReader reader(state);
    LookAhead lookAhead;
    BeginStrip(state, lists, reader, lookAhead);
    bool oneDimensional = true;
    bool lineSeen = false;
    for (;;) {
        FaxRow row{.width = width};
        uint32_t failure = 0;
        if (oneDimensional) {
            failure = DecodeRowOfRuns(row, lists, reader, lineSeen);
        } else {
            lineSeen = true;
            failure = DecodeFaxRow<FaxDialect::Group3>(row, lists, reader, lookAhead);
        }
        if (failure == 0) failure = ReadEndOfLine(reader, lookAhead, oneDimensional);
        if (failure != 0) return failure;

        if (lineSeen) PaintRuns(lists.Current(), state.LineBuffer, row.count, state.RowBytes);
        EndLine(row, lists);
        if (!lineSeen) continue;
        if (const uint32_t code = FlushDataBuffer(&state); code != 0) return EndOfRun(code);
        if (state.StripEnded != 0) BeginStrip(state, lists, reader, lookAhead);
    }
}

}  // namespace vellim
