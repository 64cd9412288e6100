// Uncompressed lines and PackBits: golden packets, and any bytes at all beside decoders that take
// them one by one.

#include <gtest/gtest.h>

#include <random>

#include "codec/engines.h"
#include "support/engine_run.h"

namespace vellim::test {
namespace {

uint32_t TakeRawLine(PlainBuffers& buffers, uint32_t rowBytes) {
    uint32_t code = 0;
    for (uint32_t i = 0; i < rowBytes && code == 0; ++i)
        code = buffers.TakeByte(buffers.line[i]);
    return code;
}

uint32_t TakePackets(PlainBuffers& buffers, uint32_t rowBytes) {
    uint32_t code = 0;
    uint32_t at = 0;
    do {
        uint8_t head = 0, byte = 0;
        code = buffers.TakeByte(head);
        const int packet = static_cast<int8_t>(head);
        if (packet < 0 && code == 0) code = buffers.TakeByte(byte);
        for (int i = 0; i <= std::abs(packet) && code == 0; ++i, ++at) {
            if (packet >= 0) code = buffers.TakeByte(byte);
            if (at < rowBytes) buffers.line[at] = byte;
        }
    } while (code == 0 && at < rowBytes);
    return code;
}

using LineTaker = uint32_t (*)(PlainBuffers&, uint32_t rowBytes);

Outcome Reference(LineTaker takeLine, const EngineRun& run, const Answer& answer) {
    PlainBuffers buffers(run, answer);
    uint32_t code = buffers.Begin();
    while (code == 0) {
        code = takeLine(buffers, run.RowBytes());
        if (code == 0) code = buffers.Flush();
    }
    return buffers.End(code);
}

// Lines shorter and longer than packets and than the buffer, strips in any order that overlap, both
// orders of bits; and a callback that inverts its line, which must not show when bytes are
// delivered once more, and stops somewhere.
TEST(ByteEngines, FollowTheReferenceOnAnyBytes) {
    std::mt19937 random(1);
    const auto below = [&](uint32_t bound) { return static_cast<uint32_t>(random() % bound); };
    for (int round = 0; round < 400; ++round) {
        EngineRun run{.width = 1 + below(round % 20 == 0 ? 40000 : 1500), .height = 1 + below(60)};
        if (round % 3 == 0) run.width = 1 + run.width % 20;
        run.rowsPerStrip = 1 + below(run.height);
        run.fillOrder = 1 + below(2);
        run.stream.resize(1 + below(round % 4 == 0 ? 2000 : 120000));
        for (uint8_t& byte : run.stream)
            byte = static_cast<uint8_t>(below(3) == 0 ? below(256) : below(4));
        const auto size = static_cast<uint32_t>(run.stream.size());
        for (uint32_t line = 0; line < run.height; line += run.rowsPerStrip)
            run.offsets.push_back(below(round % 2 == 0 ? size + 2 : std::min(size, 3000U)));
        const uint32_t stopAt = below(80), stop = below(2) == 0 ? 3 : 9;
        const Answer answer = [&](uint8_t* line, uint32_t number) {
            for (uint32_t i = 0; i < run.RowBytes(); ++i)
                line[i] = static_cast<uint8_t>(~line[i]);
            return number == stopAt ? stop : 0U;
        };
        ASSERT_EQ(RunEngine(DecodeRaw, run, answer), Reference(TakeRawLine, run, answer)) << round;
        ASSERT_EQ(RunEngine(DecodePackBits, run, answer), Reference(TakePackets, run, answer))
            << round;
    }
}

TEST(ByteEngines, Lines) {
    const Bytes fives(129, 5);
    struct Case {
        const char* what;
        Engine engine;
        uint32_t width;
        Bytes stream;
        Outcome expected;
    };
    for (const Case& test : std::initializer_list<Case>{
             {"a raw line that isn't whole", DecodeRaw, 4, {1, 2, 3, 4, 5}, {5, {{1, 2, 3, 4}}}},
             {"raw lines of no bytes", DecodeRaw, 0, {1}, {0, {{}, {}}}},
             {"literal and repeat", DecodePackBits, 3, {0, 7, 0xFF, 9}, {5, {{7, 9, 9}}}},
             {"-128 repeats", DecodePackBits, 129, {0x80, 5}, {5, {fives}}},
             {"surplus is dropped",
              DecodePackBits,
              2,
              {0x80, 5, 3, 1, 2, 3, 4},
              {0, {{5, 5}, {1, 2}}}},
             {"the line isn't whole", DecodePackBits, 4, {1, 1, 2}, {5, {}}},
             {"the literal isn't whole", DecodePackBits, 4, {3, 1, 2}, {5, {}}},
             {"the repeat has no byte", DecodePackBits, 4, {1, 1, 2, 0xFF}, {5, {}}},
             {"lines of no bytes use packets up", DecodePackBits, 0, {0x80, 5}, {5, {{}}}},
         }) {
        const EngineRun run{.width = test.width,
                            .height = 2,
                            .rowsPerStrip = 2,
                            .offsets = {0},
                            .stream = test.stream};
        EXPECT_EQ(RunEngine(test.engine, run), test.expected) << test.what;
    }
}

}  // namespace
}  // namespace vellim::test
