// Uncompressed lines and PackBits beside encoders that put bytes one by one.
#include <gtest/gtest.h>

#include <random>

#include "codec/engines.h"
#include "support/encoder_run.h"

namespace vellim::test {
namespace {

void PutRawLine(PlainSink& sink) {
    for (const uint8_t byte : sink.line)
        sink.Put(byte);
}

void PutPackets(PlainSink& sink) {
    const Bytes& line = sink.line;
    for (size_t at = 0; at < line.size();) {
        const auto equalsNext = [&](size_t i) { return line[i] == line[i + 1]; };
        const size_t bound = at + std::min<size_t>(127, line.size() - 1 - at);
        const bool isRepeat = at < bound && equalsNext(at);
        size_t last = at;
        while (last < bound && equalsNext(last) == isRepeat)
            ++last;
        sink.Put(static_cast<uint8_t>(isRepeat ? at - last : last - at));
        for (size_t i = isRepeat ? last : at; i <= last; ++i)
            sink.Put(line[i]);
        at = last + 1;
    }
}

Encoded Reference(void (*putLine)(PlainSink&), const EngineRun& run, const Answer& source) {
    PlainSink sink{run, source};
    uint32_t code = 0;
    while ((code = sink.NextLine()) == 0)
        putLine(sink);
    sink.encoded.code = code == 3 ? 0 : code;
    if (code == 3 || putLine == PutPackets) sink.Flush();
    return sink.encoded;
}

TEST(ByteEncoders, FollowTheReferenceOnAnyLines) {
    std::mt19937 random(1);
    const auto below = [&](uint32_t bound) { return static_cast<uint32_t>(random() % bound); };
    for (int round = 0; round < 400; ++round) {
        EngineRun run{.width = 1 + below(round % 20 == 0 ? 80000 : 1500), .height = 1 + below(90)};
        if (round % 3 == 0) run.width = 1 + run.width % 20;
        run.rowsPerStrip = 1 + below(run.height);
        const uint32_t stayIn = std::array{1U, 9U, 100U, 1000U}[below(4)];
        const uint32_t values = below(2) == 0 ? 3 : 256;
        Bytes pixels(size_t{run.width} * run.height);
        for (uint8_t byte = 0; uint8_t & pixel : pixels) {
            if (below(stayIn) == 0) byte = static_cast<uint8_t>(below(values));
            pixel = byte;
        }
        const uint32_t stopAt = below(150), stop = below(2) == 0 ? 3 : 9;
        const Answer source = LinesOf(pixels, run.width, stopAt, stop);
        ASSERT_TRUE(RunEncoder(EncodeRaw, run, source) == Reference(PutRawLine, run, source))
            << round;
        ASSERT_TRUE(RunEncoder(EncodePackBits, run, source) == Reference(PutPackets, run, source))
            << round;
    }
}

TEST(ByteEncoders, PutThePacketsThatTheRulesAskFor) {
    const Bytes run300(300, 'b');
    const std::vector<std::pair<Bytes, Bytes>> cases = {
        {{'A'}, {0, 'A'}},
        {{'A', 'B'}, {1, 'A', 'B'}},
        {{'A', 'A', 'B'}, {0xFF, 'A', 0, 'B'}},
        {{'A', 'B', 'B', 'C'}, {1, 'A', 'B', 1, 'B', 'C'}},
        {{'A', 'B', 'B', 'B'}, {1, 'A', 'B', 0xFF, 'B'}},
        {run300, {0x81, 'b', 0x81, 'b', 0xD5, 'b'}},
    };
    for (const auto& [line, packets] : cases) {
        const auto width = static_cast<uint32_t>(line.size());
        const EngineRun run{.width = width, .height = 1, .rowsPerStrip = 1};
        EXPECT_EQ(RunEncoder(EncodePackBits, run, LinesOf(line, width)).stream, packets);
    }
}

}  // namespace
}  // namespace vellim::test
