// The six buffer calls and the strips behind them.

#include <gtest/gtest.h>

#include "codec/buffers.h"
#include "container/streams.h"
#include "platform/guards.h"
#include "support/engine_run.h"

namespace vellim::test {
namespace {

constexpr uint32_t kFullBuffer = 32767;

uint32_t RefuseFrom(uint8_t*, uint32_t number, uintptr_t first) {
    return number >= first ? 7 : 0;
}

// Lines of 1 byte; every byte of the stream tells its place.
void WithLines(uint32_t rowsPerStrip, const std::vector<uint32_t>& offsets, uint32_t streamBytes,
               const std::function<void(CodecState&)>& use) {
    EngineRun run{.width = 1, .height = 4, .rowsPerStrip = rowsPerStrip, .offsets = offsets};
    for (uint32_t i = 0; i < streamBytes; ++i)
        run.stream.push_back(static_cast<uint8_t>(i * 37 + i / 256));
    WithState(run, [&](CodecState& state) {
        state.Callback = RefuseFrom;
        state.CallbackData = 100;
        use(state);
    });
}

// Both ends of the buffer count as buffered; a short last fill has no bytes behind its own.
TEST(DecodeBuffers, MovingToTheNextStrip) {
    struct Case {
        const char* what;
        std::vector<uint32_t> offsets;
        uint32_t streamBytes;
        uint32_t result;
        uint32_t mark;    // then: the buffer's first byte, as before where no read is needed
        uint32_t left;    // bytes buffered behind the cursor
        uint32_t refill;  // result of a fill
    };
    for (const Case& test : std::initializer_list<Case>{
             {"forward in the buffer", {100, 20000}, 70000, 0, 100, kFullBuffer - 19900, 0},
             {"back to the first byte", {10, 10}, 50, 0, 10, 40, 5},
             {"in front of the buffer", {10, 9}, 50, 0, 9, 41, 5},
             {"right behind a full buffer", {0, kFullBuffer}, 40000, 0, 0, 0, 0},
             {"one beyond it", {0, 32768}, 40000, 0, 32768, 40000 - 32768, 5},
             {"the end of a short fill", {10, 50}, 50, 0, 10, 0, 5},
             {"behind the stream, in the buffer's range", {10, 55}, 50, 0, 10, 0, 5},
             {"behind the stream", {0, 51}, 50, 6, 0, 50, 5},
             {"no place in a file", {0, 0x80000000U}, 50, 6, 0, 50, 5},
             {"no entry", {0}, 50, 6, 0, 50, 5},
         }) {
        WithLines(1, test.offsets, test.streamBytes, [&](CodecState& state) {
            ASSERT_EQ(InitDecodeBuffers(&state), 0U) << test.what;
            EXPECT_EQ(FlushDataBuffer(&state), test.result) << test.what;
            EXPECT_EQ(state.CodeLeft, test.left) << test.what;
            if (test.result == 0) {
                EXPECT_EQ(state.BufferMark, test.mark) << test.what;
            }
            if (test.result == 0 && test.left != 0) {
                const uint32_t at = test.offsets[1];
                EXPECT_EQ(*state.CodeCursor, static_cast<uint8_t>(at * 37 + at / 256)) << test.what;
            }
            EXPECT_EQ(FillCodeBuffer(&state), test.refill) << test.what;
        });
    }
}

TEST(DecodeBuffers, ShortTableEntriesAndOldJpegHeads) {
    WithLines(1, {0x00090005}, 50, [](CodecState& state) {
        state.StripOffsetType = TIFF_TYPE_SHORT;
        ASSERT_EQ(InitDecodeBuffers(&state), 0U);
        EXPECT_EQ(state.BufferMark, 5U);
        state.Key = TIFF_KEY_JPEG;
        ASSERT_EQ(FlushDataBuffer(&state), 0U);
        EXPECT_EQ(state.CodeLeft, 50U - 9 - 8);
    });
}

TEST(DecodeBuffers, ARefusedLineChangesNothing) {
    WithLines(2, {0, 10}, 50, [](CodecState& state) {
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
    for (const uint32_t offset : {60U, 20000U, 0xFFFFFFFFU})
        WithLines(1, {offset}, 50, [](CodecState& s) { EXPECT_EQ(InitDecodeBuffers(&s), 6U); });
    EXPECT_EQ(InitDecodeBuffers(nullptr), 6U);
    EXPECT_EQ(FlushDataBuffer(nullptr), 6U);
    CodecState state{};
    EXPECT_EQ(FillCodeBuffer(&state), 5U);
    EXPECT_EQ(FlushDataBuffer(&state), 6U);
    state.RowBytes = 0xFFFFFFF0U;
    EXPECT_EQ(InitDecodeBuffers(&state), 1U);
}

std::vector<uint32_t> LongsOf(GlobalHandle block) {
    const LockedBlock longs(block);
    return {longs.As<uint32_t>(), longs.As<uint32_t>() + longs.Size() / sizeof(uint32_t)};
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
        for (; result == 0; result = FillDataBuffer(&state)) {
            for (uint32_t i = 0; i < kLineCode; ++i) {
                if (state.CodeLeft == 0) {
                    ASSERT_EQ(FlushCodeBuffer(&state), 0U);
                }
                *state.CodeCursor = state.LineBuffer[0];
                state.CodeCursor += 1;
                state.CodeLeft -= 1;
            }
        }
        EXPECT_EQ(result, 3U);
        ASSERT_EQ(FlushCodeBuffer(&state), 0U);
        EXPECT_EQ(LongsOf(state.StripOffsets),
                  (std::vector<uint32_t>{4, 4 + 2 * kLineCode, 4 + 4 * kLineCode}));
        EXPECT_EQ(LongsOf(state.StripByteCounts),
                  (std::vector<uint32_t>{2 * kLineCode, 2 * kLineCode, kLineCode}));
        Bytes expected = run.stream;
        for (uint8_t line = 1; line <= 5; ++line)
            expected.insert(expected.end(), kLineCode, line);
        const LockedBlock written(mBlock(state.Stream));
        ASSERT_EQ(mSize(state.Stream), std::ssize(expected));
        EXPECT_TRUE(std::equal(expected.begin(), expected.end(), written.As<uint8_t>()));
    });
}

TEST(EncodeBuffers, AStripBeyondTheTablesIsRefused) {
    WithLines(1, {0}, 1, [](CodecState& state) {
        state.StripByteCounts = GlobalAlloc(GHND, sizeof(uint32_t));
        ASSERT_EQ(InitEncodeBuffers(&state), 0U);
        EXPECT_EQ(FillDataBuffer(&state), 0U);
        EXPECT_EQ(FillDataBuffer(&state), 4U);
    });
}

}  // namespace
}  // namespace vellim::test
