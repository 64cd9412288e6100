#include "platform/graphics/bit_joining.h"

#include <algorithm>
#include <bit>
#include <cstring>

#if defined(__x86_64__)
#include <immintrin.h>
#define VELLIM_GATHERS_BITS __attribute__((target("bmi2")))
#endif

namespace vellim {
namespace {

constexpr uint32_t kWordBits = 64;

bool GathersBits() {
#if defined(VELLIM_GATHERS_BITS)
    static const bool gathers = __builtin_cpu_supports("bmi2") != 0;
    return gathers;
#else
    return false;
#endif
}

// Bytes behind the row read as zero.
uint64_t BigEndianWord(const uint8_t* row, size_t bytes, size_t at) {
    uint64_t word = 0;
    if (at >= bytes) return 0;
    std::memcpy(&word, row + at, std::min(sizeof word, bytes - at));
    return std::endian::native == std::endian::little ? __builtin_bswap64(word) : word;
}

void StoreBigEndian(uint64_t word, uint8_t* to) {
    if constexpr (std::endian::native == std::endian::little) word = __builtin_bswap64(word);
    std::memcpy(to, &word, sizeof word);
}

// Bits come in at the low end of a word, first bit highest.
class BitsOut {
  public:
    explicit BitsOut(uint8_t* to) : to_(to) {}

    void Put(uint64_t bits, uint32_t count) {
        const uint32_t room = kWordBits - filled_;
        if (count >= room) {
            const uint32_t left = count - room;
            StoreBigEndian(word_ | bits >> left, to_);
            to_ += sizeof word_;
            word_ = left == 0 ? 0 : bits << (kWordBits - left);
            filled_ = left;
            return;
        }
        if (count != 0) word_ |= bits << (room - count);
        filled_ += count;
    }
    void Finish() { StoreBigEndian(word_, to_); }

  private:
    uint8_t* to_;
    uint64_t word_ = 0;
    uint32_t filled_ = 0;
};

}  // namespace

bool BitJoiner::Prepare(std::span<const PixelGroup> groups) {
    wordCount_ = count_ = 0;
    if (!GathersBits() || groups.empty()) return false;
    for (size_t i = 0; i < groups.size(); i++) {
        if (i != 0 && groups[i].first != groups[i - 1].end) return false;
        if (groups[i].end - groups[i].first > int32_t{kWordBits}) return false;
    }
    const auto end = static_cast<size_t>(groups.back().end);
    wordCount_ = (end + kWordBits - 1) / kWordBits;
    if (!words_.Reserve(wordCount_)) return false;
    std::fill_n(words_.Get(), wordCount_, Word{});
    constexpr uint64_t high = uint64_t{1} << (kWordBits - 1);
    for (const PixelGroup& group : groups) {
        const auto first = static_cast<size_t>(group.first);
        Word& word = words_.Get()[first / kWordBits];
        word.begins |= high >> first % kWordBits;
        word.count++;
    }
    for (size_t i = 0; i < wordCount_; i++) {
        Word& word = words_.Get()[i];
        const auto zeros = static_cast<uint32_t>(std::countl_zero(word.begins));
        word.before = zeros == 0 ? 0 : ~uint64_t{0} << (kWordBits - zeros);
    }
    const auto behind = static_cast<uint32_t>(wordCount_ * kWordBits - end);
    inLast_ = ~uint64_t{0} << behind;
    count_ = groups.size();
    return true;
}

#if defined(VELLIM_GATHERS_BITS)

// In each group, the bits below the first, added to as many ones, carry into the first's place if
// one of them is set; no carry goes beyond it, for it is taken out before.
VELLIM_GATHERS_BITS void BitJoiner::Join(const uint8_t* row, size_t bytes, uint8_t inverted,
                                         uint8_t* to) const {
    const uint64_t mask = inverted != 0 ? ~uint64_t{0} : 0;
    const auto wordAt = [&](size_t i) {
        const uint64_t word = BigEndianWord(row, bytes, i * sizeof mask) ^ mask;
        return i + 1 == wordCount_ ? word & inLast_ : word;
    };
    BitsOut out(to);
    uint64_t next = wordAt(0);
    for (size_t i = 0; i < wordCount_; i++) {
        const auto& [begins, before, count] = words_.Get()[i];
        uint64_t bits = next & ~before;
        if (i + 1 < wordCount_) {
            next = wordAt(i + 1);
            bits |= static_cast<uint64_t>((next & words_.Get()[i + 1].before) != 0);
        }
        const uint64_t rest = ~(begins | before);
        const uint64_t ones = ((bits & rest) + rest) | bits;
        out.Put(_pext_u64(ones ^ mask, begins), count);
    }
    out.Finish();
}

#else

void BitJoiner::Join(const uint8_t* /*row*/, size_t /*bytes*/, uint8_t /*inverted*/,
                     uint8_t* /*to*/) const {}

#endif

}  // namespace vellim
