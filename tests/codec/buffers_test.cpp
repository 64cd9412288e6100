// Where the buffers of a decoding run stand behind a jump to another strip. Those of an encoding
// run show in the bytes and tables that an encoder leaves.

#include <gtest/gtest.h>

#include "codec/buffers.h"
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

}  // namespace
}  // namespace vellim::test
