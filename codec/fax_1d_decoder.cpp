// The decoders of one-dimensional coding (ITU-T T.4 section 4.1; TIFF 6.0 section 10): runs of
// white and black by turns, starting with white. Every bit pattern decodes, so damage shows as
// wrong runs, and only the stream's end is a failure.
#include "codec/bit_reader.h"
#include "codec/change_lists.h"
#include "codec/end_of_run.h"
#include "codec/engines.h"
#include "codec/run_painter.h"
#include "codec/run_reader.h"
#include "vellim/failures.h"

namespace vellim {
namespace {

// The line being decoded. The colour that is due is told by the number of changes: even is white.
struct RunLine {
    int32_t* changes;
    uint32_t capacity;
    int32_t width;
    uint32_t count = 0;
    int32_t position = 0;
    bool hasRuns = false;  // closed by a terminating code

    RunLine(const ChangeLists& lists, int32_t lineWidth)
        : changes(lists.Current()), capacity(lists.Capacity()), width(lineWidth) {}

    [[nodiscard]] bool GoesOn() const { return position < width; }
    [[nodiscard]] RunColor Color() const { return static_cast<RunColor>(count & 1U); }

    void Store() {
        if (count == capacity) DropEmptyRuns();
        changes[count++] = position;
    }

    // Two changes at one place undo each other. Without such pairs the list can't outgrow the line,
    // however many empty runs damaged data has.
    void DropEmptyRuns() {
        uint32_t kept = 0;
        for (uint32_t i = 0; i < count; ++i) {
            if (kept != 0 && changes[kept - 1] == changes[i]) {
                --kept;
            } else {
                changes[kept++] = changes[i];
            }
        }
        count = kept;
    }

    void Add(const Run& run) {
        position = std::min(position + run.length, kFarPosition);
        Store();
    }
};

// Reads runs, starting with a white one, to the line's end (true), or to one that needs care
// (false): closed by a zero byte, or where room ends in the code buffer or in the list.
bool ReadRunsQuickly(RunLine& line, BitReader& sharedReader) {
    BitReader reader = sharedReader;
    const int32_t width = line.width;
    int32_t position = line.position;
    int32_t* change = line.changes + line.count;
    const int32_t* const lastPair = line.changes + line.capacity - 2;
    bool lineDone = false;
    while (change <= lastPair) {
        if (reader.Count() < kRunCodeBits) {
            if (!reader.HasRoom()) break;
            reader.Refill();
        }
        const RunPair pair = LookUpRunPair(reader.Window(), RunColor::White);
        const int32_t between = position + pair.first;
        // The line may end between the two.
        if (pair.bits != 0 && between < width) {
            reader.Consume(pair.bits);
            position = between + pair.second;
            *change++ = between;
            *change++ = position;
        } else {
            const BitReader atRun = reader;
            Run white;
            if (!ReadRunQuickly(reader, RunColor::White, white) ||
                white.closedBy == RunKind::ZeroByte) {
                reader = atRun;
                break;
            }
            position += white.length;
            *change++ = position;
            if (position < width) {
                const BitReader atBlack = reader;
                Run black;
                if (!ReadRunQuickly(reader, RunColor::Black, black) ||
                    black.closedBy == RunKind::ZeroByte) {
                    reader = atBlack;
                    break;
                }
                position += black.length;
                *change++ = position;
            }
        }
        if (position >= width) {
            lineDone = true;
            break;
        }
    }
    line.position = position;
    line.count = static_cast<uint32_t>(change - line.changes);
    line.hasRuns = line.hasRuns || line.count != 0;
    sharedReader = reader;
    return lineDone;
}

// Reads at least one run: all the line's, or those up to one that the caller must look at, which
// `run` is then. A run closed by a zero byte isn't added to the line.
uint32_t ReadRuns(RunLine& line, BitReader& reader, Run& run) {
    run.closedBy = RunKind::Terminating;
    if (reader.HasRoom() && line.Color() == RunColor::White && ReadRunsQuickly(line, reader)) {
        return 0;
    }
    if (const uint32_t failure = ReadRunCarefully(reader, line.Color(), run); failure != 0) {
        return failure;
    }
    if (run.closedBy == RunKind::Terminating) {
        line.Add(run);
        line.hasRuns = true;
    }
    return 0;
}

}  // namespace

// Lines begin on byte boundaries. A zero byte is no code here, but a run of no pixels.
uint32_t Decode1DNoEol(CodecState& state) {
    if (const uint32_t code = InitDecodeBuffers(&state); code != 0) return EndOfRun(code);
    const int32_t width = state.Dimensions.biWidth;
    const ChangeLists lists(width);
    if (!lists) return TIFF_NO_MEMORY;

    BitReader reader(state);
    for (;;) {
        RunLine line(lists, width);
        do {
            Run run;
            if (const uint32_t failure = ReadRuns(line, reader, run); failure != 0) return failure;
            if (run.closedBy == RunKind::ZeroByte) line.Add(run);
        } while (line.GoesOn());

        PaintRuns(line.changes, state.LineBuffer, line.count, state.RowBytes);
        if (const uint32_t code = FlushDataBuffer(&state); code != 0) return EndOfRun(code);
        reader.AlignToByte();
        if (state.StripEnded == 0) continue;
        state.StripEnded = 0;
        reader.Reload();
    }
}

// An end-of-line code closes the line it stands in; the line's rest takes the colour that was due.
// One that stands alone, as before each line and in the closing sequence, delivers nothing.
uint32_t Decode1DEol(CodecState& state) {
    if (const uint32_t code = InitDecodeBuffers(&state); code != 0) return EndOfRun(code);
    const int32_t width = state.Dimensions.biWidth;
    const ChangeLists lists(width);
    if (!lists) return TIFF_NO_MEMORY;

    BitReader reader(state);
    for (;;) {
        RunLine line(lists, width);
        do {
            Run run;
            if (const uint32_t failure = ReadRuns(line, reader, run); failure != 0) return failure;
            if (run.closedBy != RunKind::ZeroByte) continue;
            if (const uint32_t failure = SkipThroughFirstOne(reader); failure != 0) return failure;
            line.position = width;
            line.Store();
        } while (line.GoesOn());
        if (!line.hasRuns) continue;

        PaintRuns(line.changes, state.LineBuffer, line.count, state.RowBytes);
        if (const uint32_t code = FlushDataBuffer(&state); code != 0) return EndOfRun(code);
        if (state.StripEnded == 0) continue;
        state.StripEnded = 0;
        reader.Reload();
    }
}

}  // namespace vellim
