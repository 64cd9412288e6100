// The six buffer calls and the strips behind them.

#include <gtest/gtest.h>

#include "codec/buffers.h"
#include "container/streams.h"
#include "platform/guards.h"
#include "support/engine_run.h"

namespace vellim::test {
namespace {

constexpr uint32_t kFullBuffer = 32767;

uint8_t ByteAt(uint32_t place) {
    return static_cast<uint8_t>(place * 37 + place / 256);
}

// Lines of 1 byte, one to a strip; every byte of the stream tells its place.
void WithLines(const std::vector<uint32_t>& offsets, uint32_t streamBytes,
               const std::function<void(CodecState&)>& use) {
    EngineRun run{.width = 1, .height = 4, .rowsPerStrip = 1, .offsets = offsets};
    for (uint32_t i = 0; i < streamBytes; ++i)
        run.stream.push_back(ByteAt(i));
    WithState(run, [&](CodecState& state) {
        state.Callback = [](uint8_t*, uint32_t, uintptr_t) { return 0U; };
        use(state);
    });
}

// Both ends of the buffer count as buffered; a short last fill has no bytes behind its own.
TEST(DecodeBuffers, MovingToTheNextStrip) {
    struct Case {
        std::vector<uint32_t> offsets;
        // Then: the buffer's first byte; bytes buffered behind the cursor; what a fill gives.
        uint32_t streamBytes, mark, left, refill;
    };
    const Case cases[] = {
        {{100, 20000}, 70000, 100, kFullBuffer - 19900, 0},
        {{10, 9}, 50, 9, 41, 5},
        {{0, kFullBuffer}, 40000, 0, 0, 0},
        {{0, 32768}, 40000, 32768, 40000 - 32768, 5},
        {{10, 50}, 50, 10, 0, 5},
        {{10, 55}, 50, 10, 0, 5},
    };
    for (const Case& test : cases) {
        WithLines(test.offsets, test.streamBytes, [&](CodecState& state) {
            ASSERT_EQ(InitDecodeBuffers(&state) + FlushDataBuffer(&state), 0U);
            EXPECT_EQ(state.BufferMark, test.mark) << test.offsets[1];
            EXPECT_EQ(state.CodeLeft, test.left) << test.offsets[1];
            const uint32_t at = test.offsets[1];
            EXPECT_TRUE(test.left == 0 || *state.CodeCursor == ByteAt(at)) << at;
            EXPECT_EQ(FillCodeBuffer(&state), test.refill) << test.offsets[1];
        });
    }
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
                if (state.CodeLeft == 0) FlushCodeBuffer(&state);
                *state.CodeCursor++ = state.LineBuffer[0];
                --state.CodeLeft;
            }
        }
        EXPECT_EQ(result, 3U);
        ASSERT_EQ(FlushCodeBuffer(&state), 0U);
        const LockedBlock offsets(state.StripOffsets), counts(state.StripByteCounts);
        for (uint32_t i = 0; i < 3; ++i) {
            EXPECT_EQ(offsets.As<uint32_t>()[i], 4 + i * 2 * kLineCode);
            EXPECT_EQ(counts.As<uint32_t>()[i], (i < 2 ? 2 : 1) * kLineCode);
        }
        Bytes expected = run.stream;
        for (uint8_t line = 1; line <= 5; ++line)
            expected.insert(expected.end(), kLineCode, line);
        const LockedBlock written(mBlock(state.Stream));
        ASSERT_EQ(mSize(state.Stream), std::ssize(expected));
        EXPECT_TRUE(std::equal(expected.begin(), expected.end(), written.As<uint8_t>()));
    });
}

}  // namespace
}  // namespace vellim::test
