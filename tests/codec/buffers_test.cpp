// The six buffer calls and the strips behind them.

#include <gtest/gtest.h>

#include "codec/buffers.h"
#include "container/streams.h"
#include "platform/guards.h"
#include "support/engine_run.h"

namespace vellim::test {
namespace {

constexpr uint32_t kFullBuffer = 32767;

uint32_t TakeAll(uint8_t*, uint32_t, uintptr_t) {
    return 0;
}
uint32_t RefuseFrom(uint8_t*, uint32_t number, uintptr_t first) {
    return number >= first ? 7 : 0;
}

// Lines of 1 byte; every byte of the stream tells its place.
EngineRun Lines(uint32_t height, uint32_t rowsPerStrip, std::vector<uint32_t> offsets,
                size_t streamBytes) {
    EngineRun run{.width = 1, .height = height, .rowsPerStrip = rowsPerStrip, .offsets = offsets};
    for (size_t i = 0; i < streamBytes; ++i)
        run.stream.push_back(static_cast<uint8_t>(i * 37 + i / 256));
    return run;
}

TEST(DecodeBuffers, StripsThatAreBufferedNeedNoRead) {
    const EngineRun run = Lines(5, 1, {100, 40000, 20000, 100, 60000}, 70000);
    WithState(run, [&](CodecState& state) {
        state.Callback = TakeAll;
        ASSERT_EQ(InitDecodeBuffers(&state), 0U);
        EXPECT_EQ(state.CodeBufferSize, kFullBuffer);
        // Strip, whether the stream moves for it, the buffer's first byte behind it.
        struct Step {
            uint32_t offset;
            bool reads;
            uint32_t mark;
        };
        for (const Step& step : {Step{100, false, 100}, Step{40000, true, 40000},
                                 Step{20000, true, 20000}, Step{100, true, 100}}) {
            if (step.offset != 100 || step.reads) {
                const int32_t before = mTell(state.Stream);
                ASSERT_EQ(FlushDataBuffer(&state), 0U);
                EXPECT_EQ(mTell(state.Stream) != before, step.reads) << step.offset;
            }
            EXPECT_EQ(state.BufferMark, step.mark);
            EXPECT_EQ(*state.CodeCursor, run.stream[step.offset]);
        }
    });
}

// Both ends of the buffer count as buffered; a short last fill has no bytes behind its own.
TEST(DecodeBuffers, TheBuffersEnds) {
    struct Case {
        const char* what;
        std::vector<uint32_t> offsets;
        size_t streamBytes;
        uint32_t secondStrip;  // result of moving there
        uint32_t left;         // bytes buffered then
        uint32_t refill;       // result of a fill then
    };
    const std::vector<Case> cases{
        {"back to the first byte", {10, 10}, 50, 0, 40, 5},
        {"right behind a full buffer", {0, kFullBuffer}, 40000, 0, 0, 0},
        {"one beyond it", {0, kFullBuffer + 1}, 40000, 0, 40000 - kFullBuffer - 1, 5},
        {"the end of a short fill", {10, 50}, 50, 0, 0, 5},
        {"behind the stream, in the buffer's range", {10, 55}, 50, 0, 0, 5},
        {"behind the stream", {0, 51}, 50, 6, 50, 5},
        {"no place in a file", {0, 0x80000000U}, 50, 6, 50, 5},
        {"no entry", {0}, 50, 6, 50, 5},
    };
    for (const Case& test : cases) {
        WithState(Lines(2, 1, test.offsets, test.streamBytes), [&](CodecState& state) {
            state.Callback = TakeAll;
            ASSERT_EQ(InitDecodeBuffers(&state), 0U) << test.what;
            EXPECT_EQ(FlushDataBuffer(&state), test.secondStrip) << test.what;
            EXPECT_EQ(state.CodeLeft, test.left) << test.what;
            EXPECT_EQ(FillCodeBuffer(&state), test.refill) << test.what;
        });
    }
}

TEST(DecodeBuffers, AFirstStripOutOfReachIsAnIoError) {
    for (const uint32_t offset : {60U, 20000U, 0xFFFFFFFFU}) {
        WithState(Lines(1, 1, {offset}, 50),
                  [](CodecState& state) { EXPECT_EQ(InitDecodeBuffers(&state), 6U); });
    }
}

TEST(DecodeBuffers, ShortTableEntriesAndOldJpegHeads) {
    WithState(Lines(2, 1, {0x00090005}, 50), [](CodecState& state) {
        state.Callback = TakeAll;
        state.StripOffsetType = 3;
        ASSERT_EQ(InitDecodeBuffers(&state), 0U);
        EXPECT_EQ(state.BufferMark, 5U);
        state.Key = TIFF_KEY_JPEG;
        ASSERT_EQ(FlushDataBuffer(&state), 0U);
        EXPECT_EQ(state.CodeLeft, 50U - 9 - 8);
    });
}

TEST(DecodeBuffers, ARefusedLineChangesNothing) {
    WithState(Lines(4, 2, {0, 10}, 50), [](CodecState& state) {
        state.Callback = RefuseFrom;
        state.CallbackData = 1;
        ASSERT_EQ(InitDecodeBuffers(&state), 0U);
        ASSERT_EQ(FlushDataBuffer(&state), 0U);
        EXPECT_EQ(FlushDataBuffer(&state), 7U);
        EXPECT_EQ(state.LineNumber, 1U);
        EXPECT_EQ(state.StripIndex, 0U);
        state.CallbackData = 9;
        EXPECT_EQ(FlushDataBuffer(&state), 0U);
        EXPECT_EQ(state.StripEnded, 1U);
        EXPECT_EQ(state.StripIndex, 1U);
        EXPECT_EQ(state.StripLastLine, 3U);
        ASSERT_EQ(FlushDataBuffer(&state), 0U);
        EXPECT_EQ(FlushDataBuffer(&state), 3U);
    });
}

TEST(DecodeBuffers, BadStates) {
    EXPECT_EQ(InitDecodeBuffers(nullptr), 6U);
    EXPECT_EQ(FlushDataBuffer(nullptr), 6U);
    CodecState state{};
    EXPECT_EQ(FillCodeBuffer(&state), 5U);
    EXPECT_EQ(FlushDataBuffer(&state), 6U);
    state.RowBytes = 0xFFFFFFF0U;
    EXPECT_EQ(InitDecodeBuffers(&state), 1U);
    ReleaseCodecState(state);
}

// An engine that writes each line as its number, 7,000 times, into strips of two lines.
TEST(EncodeBuffers, StripsAreEnteredAsTheyAreWritten) {
    constexpr uint32_t kLineCode = 7000;
    const EngineRun run{
        .width = 8, .height = 5, .rowsPerStrip = 2, .offsets = {9, 9, 9}, .stream = {1, 2, 3, 4}};
    WithState(run, [&](CodecState& state) {
        state.Callback = [](uint8_t* line, uint32_t number, uintptr_t) -> uint32_t {
            line[0] = static_cast<uint8_t>(number + 1);
            return 0;
        };
        state.StripByteCounts = GlobalAlloc(GHND, 3 * sizeof(uint32_t));
        ASSERT_EQ(mSeek(state.Stream, 0, 2), 4);
        uint32_t result = InitEncodeBuffers(&state);
        while (result == 0) {
            for (uint32_t i = 0; i < kLineCode; ++i) {
                if (state.CodeLeft == 0) {
                    ASSERT_EQ(FlushCodeBuffer(&state), 0U);
                }
                *state.CodeCursor = state.LineBuffer[0];
                state.CodeCursor += 1;
                state.CodeLeft -= 1;
            }
            result = FillDataBuffer(&state);
        }
        EXPECT_EQ(result, 3U);
        ASSERT_EQ(FlushCodeBuffer(&state), 0U);
        const LockedBlock offsets(state.StripOffsets), counts(state.StripByteCounts);
        const std::vector<uint32_t> starts(offsets.As<uint32_t>(), offsets.As<uint32_t>() + 3);
        const std::vector<uint32_t> sizes(counts.As<uint32_t>(), counts.As<uint32_t>() + 3);
        EXPECT_EQ(starts, (std::vector<uint32_t>{4, 4 + 2 * kLineCode, 4 + 4 * kLineCode}));
        EXPECT_EQ(sizes, (std::vector<uint32_t>{2 * kLineCode, 2 * kLineCode, kLineCode}));
        ASSERT_EQ(mSize(state.Stream), static_cast<int32_t>(4 + 5 * kLineCode));
        const LockedBlock written(mBlock(state.Stream));
        for (uint32_t line = 0; line < 5; ++line) {
            EXPECT_EQ(written.As<uint8_t>()[4 + line * kLineCode], line + 1);
            EXPECT_EQ(written.As<uint8_t>()[3 + (line + 1) * kLineCode], line + 1);
        }
    });
}

TEST(EncodeBuffers, AStripBeyondTheTablesIsRefused) {
    const EngineRun run{.width = 8, .height = 5, .rowsPerStrip = 1, .offsets = {0}, .stream = {1}};
    WithState(run, [](CodecState& state) {
        state.Callback = TakeAll;
        state.StripByteCounts = GlobalAlloc(GHND, sizeof(uint32_t));
        ASSERT_EQ(InitEncodeBuffers(&state), 0U);
        EXPECT_EQ(FillDataBuffer(&state), 0U);
        EXPECT_EQ(FillDataBuffer(&state), 4U);
    });
}

}  // namespace
}  // namespace vellim::test
