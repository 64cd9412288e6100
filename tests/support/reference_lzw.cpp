#include "support/reference_lzw.h"

#include <algorithm>
#include <array>
#include <map>
#include <utility>

namespace vellim::test {
namespace {

constexpr uint32_t kClear = 256, kEnd = 257, kFirst = 258, kSize = 4096;

void Undifference(Bytes& line, const EngineRun& run) {
    const uint32_t size = run.RowBytes();
    const uint32_t step = run.bits == 24 ? 3 : 1;
    if (run.bits == 8 || run.bits == 24) {
        for (uint32_t i = step; i < size; ++i)
            line[i] = static_cast<uint8_t>(line[i] + line[i - step]);
    } else if (run.bits == 4) {
        for (uint32_t pixel = 1, left = line[0] >> 4; pixel < size * 2; ++pixel) {
            uint8_t& byte = line[pixel / 2];
            const bool high = pixel % 2 == 0;
            left = (left + (high ? byte >> 4 : byte)) & 15U;
            byte =
                static_cast<uint8_t>(high ? (left << 4 | (byte & 15U)) : ((byte & 0xF0U) | left));
        }
    }
}

class Decoder {
  public:
    Decoder(const EngineRun& run, const Answer& answer) : run_(run), buffers_(run, answer) {
        for (int i = 0; i < 256; ++i) {
            suffix_[static_cast<size_t>(i)] = static_cast<uint8_t>(i);
            prefix_[static_cast<size_t>(i)] = -1;
        }
    }

    Outcome Run() {
        uint32_t code = buffers_.Begin();
        while (code == 0)
            code = Step();
        return buffers_.End(code);
    }

  private:
    uint32_t Step() {
        if (nextFree_ > (1U << width_) - 1 && width_ < 12) ++width_;
        while (width_ >= bitCount_) {
            for (int i = 0; i < 2; ++i) {
                uint8_t byte = 0;
                if (const uint32_t failure = buffers_.TakeByte(byte); failure != 0) return failure;
                bits_ = bits_ << 8 | byte;
                bitCount_ += 8;
            }
        }
        bitCount_ -= width_;
        const auto code = static_cast<uint32_t>(bits_ >> bitCount_ & ((1U << width_) - 1));
        if (code == kEnd) {
            if (const uint32_t result = Deliver(); result != 0) return result;
            if (!buffers_.stripEnded) return 12;
            NewStrip();
            return 0;
        }
        if (code == kClear) {
            nextFree_ = kFirst;
            width_ = 9;
            return 0;
        }
        if (code >= nextFree_) return 12;
        const Bytes string = Spell(code);
        if (nextFree_ < kSize) prefix_[nextFree_++] = static_cast<int>(code);
        return Place(string);
    }

    Bytes Spell(uint32_t code) {
        Bytes string;
        for (int at = static_cast<int>(code); at >= 0; at = prefix_[static_cast<size_t>(at)])
            string.push_back(suffix_[static_cast<size_t>(at)]);
        std::reverse(string.begin(), string.end());
        if (code + 1 == nextFree_) string.back() = string.front();
        if (nextFree_ > kFirst) suffix_[nextFree_ - 1] = string.front();
        return string;
    }

    uint32_t Place(const Bytes& string) {
        size_t at = 0;
        do {
            while (at < string.size() && buffers_.lineLeft > 0)
                buffers_.line[run_.RowBytes() - buffers_.lineLeft--] = string[at++];
            if (buffers_.lineLeft > 0) break;
            if (const uint32_t result = Deliver(); result != 0) return result;
            if (buffers_.stripEnded) {
                NewStrip();
                return 0;
            }
            if (buffers_.lineLeft == 0) return 12;
        } while (at < string.size());
        return 0;
    }

    uint32_t Deliver() {
        if (run_.key == TIFF_KEY_LZW_DIFFERENCING) Undifference(buffers_.line, run_);
        return buffers_.Flush();
    }

    void NewStrip() {
        bitCount_ = 0;
        nextFree_ = kFirst;
        width_ = 9;
    }

    const EngineRun& run_;
    PlainBuffers buffers_;
    std::array<uint8_t, kSize> suffix_{};
    std::array<int, kSize> prefix_{};
    uint64_t bits_ = 0;
    unsigned bitCount_ = 0, width_ = 9;
    uint32_t nextFree_ = kFirst;
};

}  // namespace

Outcome ReferenceLzw(const EngineRun& run, const Answer& answer) {
    return Decoder(run, answer).Run();
}

void LzwCodeWriter::Put(uint32_t code) {
    unsigned width = 9;
    while (width < 12 && nextFree_ >= 1U << width)
        ++width;
    pending_ = pending_ << width | code;
    for (pendingBits_ += width; pendingBits_ >= 8; pendingBits_ -= 8)
        bytes_.push_back(static_cast<uint8_t>(pending_ >> (pendingBits_ - 8)));
    if (code == kClear)
        nextFree_ = kFirst;
    else if (nextFree_ < kSize)
        ++nextFree_;
}

Bytes LzwCodeWriter::Finish() {
    if (pendingBits_ > 0) bytes_.push_back(static_cast<uint8_t>(pending_ << (8 - pendingBits_)));
    return std::exchange(bytes_, {});
}

Bytes EncodeLzwStrip(const Bytes& data, FullTable whenFull) {
    LzwCodeWriter writer;
    writer.Put(kClear);
    std::map<std::pair<uint32_t, uint8_t>, uint32_t> longer;
    uint32_t code = kSize;  // none yet
    for (const uint8_t byte : data) {
        if (code == kSize) {
            code = byte;
            continue;
        }
        if (const auto found = longer.find({code, byte}); found != longer.end()) {
            code = found->second;
            continue;
        }
        // The last place stays open for ever: its last byte is never settled.
        if (writer.NextFree() < kSize - 1) longer[{code, byte}] = writer.NextFree();
        writer.Put(code);
        code = byte;
        if (whenFull == FullTable::kClear && writer.NextFree() == kSize - 2) {
            writer.Put(kClear);
            longer.clear();
        }
    }
    if (code != kSize) writer.Put(code);
    writer.Put(kEnd);
    Bytes strip = writer.Finish();
    strip.insert(strip.end(), 2, 0);
    return strip;
}

}  // namespace vellim::test
