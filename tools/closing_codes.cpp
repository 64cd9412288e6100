// The codes are looked for from the end on backwards: that way a zero bit is always either fill or
// one of a code's eleven, and lines of code can't be mistaken for one, since no line holds eleven
// zeros in a row.
#include "closing_codes.h"

namespace vellim::tool {
namespace {

constexpr size_t kEolZeros = 11;

class BitsFromEnd {
  public:
    explicit BitsFromEnd(const std::vector<uint8_t>& code) : code_(code), left_(code.size() * 8) {}

    // Bits before the place reached.
    [[nodiscard]] size_t Left() const { return left_; }

    // Passes over the bit before, if there is one and it is a 1.
    bool TakeOne() {
        if (left_ == 0 || !IsOne(left_ - 1)) return false;
        --left_;
        return true;
    }

    // Passes over all zeros before, and gives their number.
    size_t TakeZeros() {
        const size_t from = left_;
        while (left_ > 0 && !IsOne(left_ - 1))
            --left_;
        return from - left_;
    }

  private:
    [[nodiscard]] bool IsOne(size_t bit) const { return (code_[bit / 8] & 0x80U >> bit % 8) != 0; }

    const std::vector<uint8_t>& code_;
    size_t left_;
};

}  // namespace

ClosingCodes FindClosingCodes(const std::vector<uint8_t>& code, EolTag tag) {
    ClosingCodes found;
    BitsFromEnd bits(code);
    bits.TakeZeros();
    while (bits.TakeOne()) {
        if (tag == EolTag::Bit) bits.TakeOne();
        const size_t one = bits.Left();
        if (bits.TakeZeros() < kEolZeros) break;
        found.firstBit = one - kEolZeros;
        ++found.count;
    }
    return found;
}

}  // namespace vellim::tool
