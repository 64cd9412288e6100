#include "support/reference_lzw.h"

#include <algorithm>
#include <array>
#include <bit>
#include <unordered_map>
#include <utility>

namespace vellim::test {
namespace {

constexpr uint32_t kClear = 256, kEnd = 257, kFirst = 258, kSize = 4096;

void Undifference(Bytes& line, uint16_t bits) {
    const size_t step = bits / 8;
    for (size_t i = step; bits >= 8 && i < line.size(); ++i)
        line[i] = static_cast<uint8_t>(line[i] + line[i - step]);
    if (bits != 4) return;
    for (unsigned left = 0; uint8_t & byte : line) {
        const unsigned high = left + (byte >> 4);
        left = high + byte;
        byte = static_cast<uint8_t>(high << 4 | (left & 15U));
    }
}

void Difference(Bytes& line, uint16_t bits) {
    const size_t step = bits / 8;
    for (size_t i = line.size(); bits >= 8 && i > step; --i)
        line[i - 1] = static_cast<uint8_t>(line[i - 1] - line[i - 1 - step]);
    if (bits != 4) return;
    for (unsigned left = 0; uint8_t & byte : line) {
        const unsigned high = byte >> 4, low = byte & 15U;
        byte = static_cast<uint8_t>((high - left) << 4 | ((low - high) & 15U));
        left = low;
    }
}

struct Decoder {
    PlainBuffers& buffers;
    std::array<Bytes, kSize> strings = {};
    uint64_t bits = 0;
    uint32_t bitCount = 0, width = 9, nextFree = kFirst;

    uint32_t Step() {
        if (nextFree > (1U << width) - 1 && width < 12) ++width;
        for (int i = 0; width >= bitCount || i % 2 != 0; ++i) {
            uint8_t byte = 0;
            if (const uint32_t failure = buffers.TakeByte(byte); failure != 0) return failure;
            bits = bits << 8 | byte;
            bitCount += 8;
        }
        bitCount -= width;
        const auto code = static_cast<uint32_t>(bits >> bitCount & ((1U << width) - 1));
        if (code == kClear) return StartTable(bitCount);
        if (code == kEnd) {
            if (const uint32_t result = Deliver(); result != 0) return result;
            return buffers.stripEnded ? StartTable(0) : 12;
        }
        if (code >= nextFree) return 12;
        // The newest string ends with the first byte of what follows it, known only now.
        if (nextFree > kFirst) strings[nextFree - 1].back() = strings[code].front();
        if (nextFree < kSize) {
            strings[nextFree] = strings[code];
            strings[nextFree++].push_back(0);
        }
        return Place(strings[code]);
    }

    uint32_t Place(const Bytes& string) {
        for (const uint8_t byte : string) {
            if (buffers.lineLeft > 0) buffers.line[buffers.line.size() - buffers.lineLeft--] = byte;
            if (buffers.lineLeft > 0) continue;
            if (const uint32_t result = Deliver(); result != 0) return result;
            if (buffers.stripEnded) return StartTable(0);
            if (buffers.lineLeft == 0) return 12;
        }
        return 0;
    }

    uint32_t Deliver() {
        if (buffers.run.key == TIFF_KEY_LZW_DIFFERENCING)
            Undifference(buffers.line, buffers.run.bits);
        return buffers.Flush();
    }

    uint32_t StartTable(uint32_t bitsKept) {
        bitCount = bitsKept;
        nextFree = kFirst;
        width = 9;
        return 0;
    }
};

struct Encoder {
    PlainSink& sink;
    std::array<uint32_t, 4099> codes = {};
    std::unordered_map<uint32_t, uint32_t> longer = {};  // of [code * 256 + byte]
    int current = -1;
    uint32_t nextEntry = kFirst, checkedEntry = kFirst, startLine = 0;
    uint32_t pending = 0, pendingBits = 0;
    bool needClear = true;

    void StartGeneration() {
        longer.clear();
        nextEntry = checkedEntry = kFirst;
        startLine = sink.lineNumber;
    }

    uint32_t NextLine() {
        const uint32_t code = sink.NextLine();
        if (code == 0 && sink.run.key == TIFF_KEY_LZW_DIFFERENCING)
            Difference(sink.line, sink.run.bits);
        return code;
    }

    void Take(uint8_t byte) {
        if (current < 0) {
            current = byte;
            return;
        }
        const auto prefix = static_cast<uint32_t>(current);
        const auto [found, isNew] = longer.try_emplace(prefix * 256 + byte, nextEntry);
        if (!isNew) {
            current = static_cast<int>(found->second);
            return;
        }
        Append(prefix);
        current = byte;
        if (nextEntry != kSize - 1) return;
        Append(kClear);
        WriteList(false);
    }

    void Append(uint32_t code) { codes[nextEntry++] = code; }
    void AppendCurrent() {
        if (current >= 0) Append(static_cast<uint32_t>(std::exchange(current, -1)));
    }

    void EndLine() {
        const auto width = static_cast<uint32_t>(std::bit_width(nextEntry));
        const bool isWorthIt = (nextEntry - checkedEntry) * width > sink.run.RowBytes() * 8 % 65536;
        checkedEntry = nextEntry;
        if (!isWorthIt || sink.lineNumber - startLine < 3) return;
        AppendCurrent();
        Append(kClear);
        WriteList(false);
    }

    void EndStrip() {
        AppendCurrent();
        for (const uint32_t code : {kEnd, 0U, 0U, 0U})
            Append(code);
        WriteList(true);
    }

    void WriteList(bool isClosing) {
        codes[kFirst - 1] = kClear;
        for (uint32_t i = needClear ? kFirst - 1 : kFirst; i < nextEntry; ++i) {
            const uint32_t width = i < 512 ? 9 : i < 1024 ? 10 : i < 2048 ? 11 : 12;
            pending |= codes[i] << (32 - width - pendingBits);
            pendingBits += width;
            while (pendingBits >= 16) {
                if (sink.Room() != 1) PutByte();
                PutByte();
            }
        }
        for (uint32_t bytes = isClosing ? (pendingBits + 15) / 16 * 2 : 0; bytes > 0; --bytes)
            PutByte();
        if (isClosing) pendingBits = 0;
        needClear = isClosing;
        StartGeneration();
    }

    void PutByte() {
        sink.Put(static_cast<uint8_t>(pending >> 24));
        pending <<= 8;
        pendingBits -= 8;
    }

    uint32_t Run() {
        uint32_t code = NextLine();
        for (StartGeneration(); code == 0; code = NextLine()) {
            if (sink.lineNumber > 1) EndLine();
            for (const uint8_t byte : sink.line)
                Take(byte);
            if (sink.stripEnded) EndStrip();
        }
        return code;
    }
};

}  // namespace

Encoded ReferenceLzwEncoder(const EngineRun& run, const Answer& source) {
    PlainSink sink{run, source};
    const uint32_t code = Encoder{sink}.Run();
    sink.encoded.code = code == 3 ? 0 : code;
    if (sink.encoded.code == 0) sink.Flush();
    return sink.encoded;
}

Outcome ReferenceLzw(const EngineRun& run, const Answer& answer) {
    PlainBuffers buffers{run, answer};
    Decoder decoder{buffers};
    for (size_t i = 0; i < 256; ++i)
        decoder.strings[i] = {static_cast<uint8_t>(i)};
    return buffers.Run([&] { return decoder.Step(); });
}

Bytes PackLzwCodes(const std::vector<uint32_t>& codes) {
    Bytes bytes;
    uint32_t pending = 0, pendingBits = 0, nextFree = kFirst;
    for (const uint32_t code : codes) {
        uint32_t width = 9;
        while (width < 12 && nextFree >= 1U << width)
            ++width;
        pending = pending << width | code;
        for (pendingBits += width; pendingBits >= 8; pendingBits -= 8)
            bytes.push_back(static_cast<uint8_t>(pending >> (pendingBits - 8)));
        nextFree = code == kClear ? kFirst : std::min(nextFree + 1, kSize);
    }
    bytes.push_back(static_cast<uint8_t>(pending << (8 - pendingBits)));
    return bytes;
}

}  // namespace vellim::test
