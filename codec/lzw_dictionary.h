// The strings that an LZW generation has codes for (TIFF 6.0 section 13), for encoding.
//
// A string is the code of all of it but its last byte, and that byte; such pairs are looked up in a
// table that their bits point into. Matching is a chain of loads, each of which waits for the one
// before, so nothing more than an exclusive or stands between what one load gives and the address
// of the next. It also puts strings with the same last byte that came about one after the other
// side by side, and pages make many such, which is why two that collide don't spread from the slot
// that both want but go by wide steps.
//
// Long runs of one byte are what pages mostly consist of. Their strings are recorded by byte and
// length besides, so that a run is matched in one step.
#pragma once

#include <array>
#include <cstdint>

#include "codec/lzw_codes.h"

namespace vellim {

// Lives in zeroed memory, and begins with Clear.
class LzwDictionary {
  public:
    // Leaves the single bytes, which are codes themselves, and nothing else. Most generations are
    // far from full: it is quicker to empty the slots that were filled than all of them.
    void Clear() {
        for (uint32_t i = 0; i < filledCount_; ++i)
            slots_[filled_[i]] = 0;
        filledCount_ = 0;
        longestRun_.fill(1);
    }

    // The slot of string `prefix` made longer by `byte`: 0 if there is no such string.
    uint32_t& Find(uint32_t prefix, uint32_t byte) {
        const uint32_t key = prefix << 8 | byte;
        uint32_t index = prefix ^ byte << (kSlotBits - 8);
        while (slots_[index] != 0 && slots_[index] / kLzwTableSize != key)
            index = (index + kStep) % kSlots;
        return slots_[index];
    }

    static uint32_t CodeIn(uint32_t slot) { return slot % kLzwTableSize; }

    // Fills the slot that Find has given for the same string.
    void Add(uint32_t& slot, uint32_t prefix, uint8_t byte, uint32_t code) {
        slot = (prefix << 8 | byte) * kLzwTableSize + code;
        filled_[filledCount_++] = static_cast<uint16_t>(&slot - slots_.data());
    }

    // The longest run of `byte` that is recorded, at least 1, and the code of such a run.
    [[nodiscard]] uint32_t LongestRun(uint8_t byte) const { return longestRun_[byte]; }
    [[nodiscard]] uint32_t RunCode(uint8_t byte, uint32_t length) const {
        return length == 1 ? byte : runs_[byte][length - 1];
    }
    [[nodiscard]] bool CanRecordMore(uint8_t byte) const { return longestRun_[byte] < kLongestRun; }
    void RecordLongerRun(uint8_t byte, uint32_t code) {
        runs_[byte][longestRun_[byte]++] = static_cast<uint16_t>(code);
    }

  private:
    static constexpr unsigned kSlotBits = 15;  // few collide: less than an eighth is ever filled
    static constexpr uint32_t kSlots = 1U << kSlotBits;
    static constexpr uint32_t kStep = 2531;  // odd, so that it leads through all slots
    static constexpr uint32_t kLongestRun = 256;

    // From the top: code of the prefix (12 bits), last byte (8), code (12), which is never 0.
    std::array<uint32_t, kSlots> slots_;
    std::array<uint16_t, kLzwTableSize> filled_;  // indices of slots
    uint32_t filledCount_;
    std::array<uint16_t, kLzwLiterals> longestRun_;
    std::array<std::array<uint16_t, kLongestRun>, kLzwLiterals> runs_;  // [byte][length - 1]
};

}  // namespace vellim
