// A fuzz input: its first bytes choose the settings, the rest is the data under test.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace vellim::fuzz {

class Input {
  public:
    Input(const uint8_t* data, size_t size) : rest_(data, size) {}

    // The next byte; 0 behind the end, so that short inputs have settings too.
    uint8_t Byte() {
        if (rest_.empty()) return 0;
        const uint8_t byte = rest_.front();
        rest_ = rest_.subspan(1);
        return byte;
    }
    uint16_t Word() {
        const uint8_t low = Byte();
        return static_cast<uint16_t>(low | (Byte() << 8));
    }
    // A size: mostly sensible, now and then negative.
    int32_t SignedWord() { return static_cast<int16_t>(Word()); }

    [[nodiscard]] std::vector<uint8_t> Rest() const { return {rest_.begin(), rest_.end()}; }

  private:
    std::span<const uint8_t> rest_;
};

}  // namespace vellim::fuzz
