// PackBits: golden packets, and any bytes at all beside a decoder that takes them one by one.

#include <gtest/gtest.h>

#include <random>

#include "codec/engines.h"
#include "support/engine_run.h"

namespace vellim::test {
namespace {

Outcome Reference(const EngineRun& run, const Answer& answer = {}) {
    PlainBuffers buffers(run, answer);
    uint32_t code = buffers.Begin();
    while (code == 0) {
        int64_t left = run.RowBytes();
        do {
            uint8_t head = 0, byte = 0;
            code = buffers.TakeByte(head);
            const int packet = static_cast<int8_t>(head);
            if (packet < 0 && code == 0) code = buffers.TakeByte(byte);
            for (int i = 0; i <= std::abs(packet) && code == 0; ++i, --left) {
                if (packet >= 0) code = buffers.TakeByte(byte);
                if (left > 0) buffers.line[run.RowBytes() - static_cast<size_t>(left)] = byte;
            }
        } while (code == 0 && left > 0);
        if (code == 0) code = buffers.Flush();
    }
    return buffers.End(code);
}

Bytes Copies(size_t count, uint8_t value) {
    return Bytes(count, value);
}

TEST(PackBits, Packets) {
    struct Case {
        const char* what;
        uint32_t width;
        Bytes stream;
        Outcome expected;
    };
    const std::array cases{
        Case{"literal and repeat", 5, {1, 7, 8, 0xFE, 9}, {0, {{7, 8, 9, 9, 9}}}},
        Case{"-128 repeats", 129, {0x80, 5}, {0, {Copies(129, 5)}}},
        Case{"a repeat beyond the line is cut", 3, {0x80, 5}, {0, {{5, 5, 5}}}},
        Case{"a literal beyond the line is cut", 2, {3, 1, 2, 3, 4}, {0, {{1, 2}}}},
        Case{"the line isn't whole", 4, {1, 1, 2}, {5, {}}},
        Case{"the literal isn't whole", 4, {3, 1, 2}, {5, {}}},
        Case{"the repeat has no byte", 4, {1, 1, 2, 0xFF}, {5, {}}},
        Case{"lines of no bytes use packets up", 0, {0x80, 5}, {0, {{}}}},
    };
    for (const Case& test : cases) {
        const EngineRun run{.width = test.width,
                            .height = 1,
                            .rowsPerStrip = 1,
                            .offsets = {0},
                            .stream = test.stream};
        EXPECT_EQ(RunEngine(DecodePackBits, run), test.expected) << test.what;
    }
}

// Any bytes are PackBits. Lines shorter and longer than packets, streams longer than the buffer,
// strips in any order, both orders of bits.
TEST(PackBits, FollowsTheReferenceOnAnyBytes) {
    std::mt19937 random(1);
    const auto below = [&](uint32_t bound) { return static_cast<uint32_t>(random() % bound); };
    for (int round = 0; round < 400; ++round) {
        EngineRun run{.width = 1 + below(round % 2 == 0 ? 20 : 5000), .height = 1 + below(60)};
        run.rowsPerStrip = 1 + below(run.height);
        run.fillOrder = 1 + below(2);
        run.stream.resize(1 + below(round % 10 == 0 ? 100000 : 2000));
        for (uint8_t& byte : run.stream)
            byte = static_cast<uint8_t>(below(3) == 0 ? below(256) : below(4));
        for (uint32_t line = 0; line < run.height; line += run.rowsPerStrip)
            run.offsets.push_back(below(static_cast<uint32_t>(run.stream.size()) + 2));
        const Answer answer = [&](uint8_t*, uint32_t number) { return number == 40 ? 9U : 0U; };
        ASSERT_EQ(RunEngine(DecodePackBits, run, answer), Reference(run, answer)) << round;
    }
}

}  // namespace
}  // namespace vellim::test
