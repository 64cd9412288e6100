// Uncompressed lines and PackBits beside codecs that take and put bytes one by one.
#include <gtest/gtest.h>

#include <random>

#include "codec/engines.h"
#include "support/engine_run.h"

namespace vellim::test {
namespace {

struct Random {
    uint32_t operator()(uint32_t bound) { return static_cast<uint32_t>(engine() % bound); }
    std::mt19937 engine{1};
};

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
TEST(ByteEngines, DecodeAnyBytesAsTheReference) {
    Random below;
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

TEST(ByteEngines, EncodeAnyLinesAsTheReference) {
    Random below;
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
        run.stream.resize(below(3));
        const uint32_t stopAt = below(150), stop = below(2) == 0 ? 3 : 9;
        const Answer source = LinesOf(pixels, run.width, stopAt, stop);
        ASSERT_TRUE(RunEncoder(EncodeRaw, run, source) == Reference(PutRawLine, run, source))
            << round;
        ASSERT_TRUE(RunEncoder(EncodePackBits, run, source) == Reference(PutPackets, run, source))
            << round;
    }
}

TEST(ByteEngines, PutThePacketsThatTheRulesAskFor) {
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
