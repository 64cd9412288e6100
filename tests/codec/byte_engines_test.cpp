// Uncompressed lines and PackBits beside decoders that take bytes one by one.
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
        const int packet = head < 128 ? head : head - 256;
        if (packet < 0 && code == 0) code = buffers.TakeByte(byte);
        for (int i = 0; i <= std::abs(packet) && code == 0; ++i, ++at) {
            if (packet >= 0) code = buffers.TakeByte(byte);
            if (at < rowBytes) buffers.line[at] = byte;
        }
    } while (code == 0 && at < rowBytes);
    return code;
}

Outcome Reference(uint32_t (*takeLine)(PlainBuffers&, uint32_t), const EngineRun& run,
                  const Answer& answer) {
    PlainBuffers buffers{run, answer};
    return buffers.Run([&] {
        const uint32_t code = takeLine(buffers, run.RowBytes());
        return code == 0 ? buffers.Flush() : code;
    });
}

// Lines shorter and longer than packets and than the buffer, strips in any order that overlap; and
// a callback that inverts its line, which must not show when bytes are delivered once more, and
// stops somewhere.
TEST(ByteEngines, FollowTheReferenceOnAnyBytes) {
    std::mt19937 random(1);
    const auto below = [&](uint32_t bound) { return static_cast<uint32_t>(random() % bound); };
    for (int round = 0; round < 400; ++round) {
        EngineRun run{.width = 1 + below(round % 20 == 0 ? 40000 : 1500), .height = 1 + below(60)};
        if (round % 3 == 0) run.width = 1 + run.width % 20;
        run.rowsPerStrip = 1 + below(run.height);
        run.stream.resize(1 + below(round % 4 == 0 ? 2000 : 120000));
        for (uint8_t& byte : run.stream)
            byte = static_cast<uint8_t>(below(3) == 0 ? below(256) : below(4));
        const auto size = static_cast<uint32_t>(run.stream.size());
        for (uint32_t line = 0; line < run.height; line += run.rowsPerStrip)
            run.offsets.push_back(below(round % 2 == 0 ? size : std::min(size, 3000U)));
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

}  // namespace
}  // namespace vellim::test
