// The decoders of one-dimensional coding (ITU-T T.4 section 4.1; TIFF 6.0 section 10): runs of
// white and black by turns, starting with white. Every bit pattern decodes, so damage shows as
// wrong runs, and only the stream's end is a failure.
#include <algorithm>

#include "codec/bit_reader.h"
#include "codec/change_lists.h"
#include "codec/end_of_run.h"
#include "codec/engines.h"
#include "codec/run_painter.h"
#include "codec/run_reader.h"
#include "vellim/failures.h"

namespace vellim {
namespace {

// The line being decoded. It is painted as it is read: no list of its changes is needed.
struct RunLine {
    LinePainter painter;
    int32_t width;
    int32_t position = 0;
    RunColor due = RunColor::White;
    bool hasRuns = false;  // closed by a terminating code

    explicit RunLine(const CodecState& state)
        : painter(state.LineBuffer, state.RowBytes), width(state.Dimensions.biWidth) {}

    [[nodiscard]] bool GoesOn() const { return position < width; }

    // A white run ends at `between`, and a black one behind it at `end`.
    void AddPair(int32_t between, int32_t end) {
        painter.Black(between, end);
        position = end;
        hasRuns = true;
    }

    void EndWithWhite(int32_t end) {
        position = end;
        hasRuns = true;
    }

    // The next run, in the colour that is due, ends at `end`.
    void Add(int32_t end) {
        if (due == RunColor::Black) painter.Black(position, end);
        position = end;
        due = OtherColor(due);
    }
};

// A white and a black run in one step, where there is one for them and the line doesn't end
// between the two.
inline bool TakePairAtOnce(RunLine& line, BitReader& reader) {
    const RunPair pair = LookUpRunPair(reader.Window(), RunColor::White);
    const int32_t between = line.position + pair.first;
    if (pair.bits == 0 || between >= line.width) return false;
    reader.Consume(pair.bits);
    line.AddPair(between, between + pair.second);
    return true;
}

inline bool ReadSoundRun(BitReader& reader, RunColor color, Run& run) {
    return reader.TopUp(kQuickRunBits) && ReadRunQuickly(reader, color, run) &&
           run.closedBy == RunKind::Terminating;
}

// The same run by run. The line may end with the white one, which needs no painting. False, with
// nothing taken, when the pair needs care.
inline bool TakePairByRuns(RunLine& line, BitReader& reader) {
    const BitReader atPair = reader;
    Run white;
    if (ReadSoundRun(reader, RunColor::White, white)) {
        const int32_t between = line.position + white.length;
        if (between >= line.width) {
            line.EndWithWhite(between);
            return true;
        }
        Run black;
        if (ReadSoundRun(reader, RunColor::Black, black)) {
            line.AddPair(between, between + black.length);
            return true;
        }
    }
    reader = atPair;
    return false;
}

// Reads pairs of a white and a black run to the line's end (true), or up to a pair that needs care
// (false): one closed by a zero byte, or one in which the code buffer's room ends.
bool ReadRunsQuickly(RunLine& sharedLine, BitReader& sharedReader) {
    RunLine line = sharedLine;
    BitReader reader = sharedReader;
    bool sound = true;
    do {
        sound = reader.TopUp(kQuickRunBits) &&
                (TakePairAtOnce(line, reader) || TakePairByRuns(line, reader));
    } while (sound && line.GoesOn());
    sharedLine = line;
    sharedReader = reader;
    return sound;
}

// Reads at least one run: all the line's, or those up to one that the caller must look at, which
// `run` is then. A run closed by a zero byte isn't added to the line.
uint32_t ReadRuns(RunLine& line, BitReader& reader, Run& run) {
    run.closedBy = RunKind::Terminating;
    if (line.due == RunColor::White && ReadRunsQuickly(line, reader)) return 0;
    if (const uint32_t failure = ReadRunCarefully(reader, line.due, run); failure != 0) {
        return failure;
    }
    if (run.closedBy == RunKind::Terminating) {
        line.Add(std::min(line.position + run.length, kFarPosition));
        line.hasRuns = true;
    }
    return 0;
}

// Passes over end-of-line codes that stand alone, without fill, in front of a line.
void SkipEndsOfLine(BitReader& reader) {
    constexpr uint32_t kEndOfLineBits = 12;
    while (reader.TopUp(2 * kEndOfLineBits) && reader.Peek(kEndOfLineBits) == 1) {
        reader.Consume(kEndOfLineBits);
    }
}

// Paints and delivers the line. 0, or what FlushDataBuffer gave.
uint32_t Deliver(CodecState& state, RunLine& line) {
    line.painter.Finish();
    return FlushDataBuffer(&state);
}

}  // namespace

// Lines begin on byte boundaries. A zero byte is no code here, but a run that ends where it begins.
uint32_t Decode1DNoEol(CodecState& state) {
    if (state.Dimensions.biWidth > kFarPosition) return TIFF_NO_MEMORY;
    if (const uint32_t code = InitDecodeBuffers(&state); code != 0) return EndOfRun(code);

    const CodeSource source(state);
    BitReader reader(source);
    for (;;) {
        RunLine line(state);
        do {
            Run run;
            if (const uint32_t failure = ReadRuns(line, reader, run); failure != 0) return failure;
            if (run.closedBy == RunKind::ZeroByte) {
                line.Add(std::min(line.position + run.length, kFarPosition));
            }
        } while (line.GoesOn());

        if (const uint32_t code = Deliver(state, line); code != 0) return EndOfRun(code);
        reader.AlignToByte();
        if (state.StripEnded == 0) continue;
        state.StripEnded = 0;
        reader.Reload();
    }
}

// An end-of-line code closes the line it stands in; the line's rest takes the colour that was due.
// One that stands alone, as before each line and in the closing sequence, delivers nothing.
uint32_t Decode1DEol(CodecState& state) {
    if (state.Dimensions.biWidth > kFarPosition) return TIFF_NO_MEMORY;
    if (const uint32_t code = InitDecodeBuffers(&state); code != 0) return EndOfRun(code);

    const CodeSource source(state);
    BitReader reader(source);
    for (;;) {
        SkipEndsOfLine(reader);
        RunLine line(state);
        do {
            Run run;
            if (const uint32_t failure = ReadRuns(line, reader, run); failure != 0) return failure;
            if (run.closedBy != RunKind::ZeroByte) continue;
            if (const uint32_t failure = SkipThroughFirstOne(reader); failure != 0) return failure;
            if (line.hasRuns) line.Add(line.width);
            break;
        } while (line.GoesOn());
        if (!line.hasRuns) continue;

        if (const uint32_t code = Deliver(state, line); code != 0) return EndOfRun(code);
        if (state.StripEnded == 0) continue;
        state.StripEnded = 0;
        reader.Reload();
    }
}

}  // namespace vellim
