// Uncompressed lines, whose callback may be handed the code buffer itself.

#include <gtest/gtest.h>

#include <random>

#include "codec/engines.h"
#include "support/engine_run.h"

namespace vellim::test {
namespace {

Outcome Reference(const EngineRun& run, const Answer& answer) {
    PlainBuffers buffers(run, answer);
    uint32_t code = buffers.Begin();
    while (code == 0) {
        while (buffers.lineLeft > 0 && code == 0) {
            code = buffers.TakeByte(buffers.line[run.RowBytes() - buffers.lineLeft]);
            --buffers.lineLeft;
        }
        if (code == 0) code = buffers.Flush();
    }
    return buffers.End(code);
}

// The callback inverts its line, and strips overlap, so that bytes are delivered more than once.
TEST(Raw, LinesAreAsStoredWhateverTheCallbackDoes) {
    std::mt19937 random(1);
    const auto below = [&](uint32_t bound) { return static_cast<uint32_t>(random() % bound); };
    for (int round = 0; round < 300; ++round) {
        EngineRun run{.width = 1 + below(round % 20 == 0 ? 40000 : 1500), .height = 1 + below(60)};
        run.rowsPerStrip = 1 + below(run.height);
        run.fillOrder = 1 + below(2);
        run.stream.resize(1 + below(120000));
        for (uint8_t& byte : run.stream)
            byte = static_cast<uint8_t>(below(256));
        const auto size = static_cast<uint32_t>(run.stream.size());
        for (uint32_t line = 0; line < run.height; line += run.rowsPerStrip)
            run.offsets.push_back(round % 2 == 0 ? below(size + 2) : below(std::min(size, 3000U)));
        const uint32_t stopAt = below(80);
        const Answer answer = [&](uint8_t* line, uint32_t number) {
            for (uint32_t i = 0; i < run.RowBytes(); ++i)
                line[i] = static_cast<uint8_t>(~line[i]);
            return number == stopAt ? 3U : 0U;
        };
        ASSERT_EQ(RunEngine(DecodeRaw, run, answer), Reference(run, answer)) << round;
    }
}

TEST(Raw, ALineThatIsntWholeIsNotDelivered) {
    const EngineRun run{
        .width = 4, .height = 2, .rowsPerStrip = 2, .offsets = {0}, .stream = {1, 2, 3, 4, 5, 6}};
    EXPECT_EQ(RunEngine(DecodeRaw, run), (Outcome{5, {{1, 2, 3, 4}}}));
}

}  // namespace
}  // namespace vellim::test
