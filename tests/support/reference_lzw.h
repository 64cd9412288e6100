// LZW decoded the slow way, a chain of prefixes walked for each string and every byte taken alone;
// and an encoder that writes streams of codes, sensible ones and others.
#pragma once

#include <cstdint>

#include "support/engine_run.h"

namespace vellim::test {

Outcome ReferenceLzw(const EngineRun& run, const Answer& answer = {});

// Writes codes in the widths that a decoder reads them with.
class LzwCodeWriter {
  public:
    void Put(uint32_t code);
    Bytes Finish();  // fills the last byte up with zero bits
    [[nodiscard]] uint32_t NextFree() const { return nextFree_; }

  private:
    Bytes bytes_;
    uint32_t pending_ = 0;
    unsigned pendingBits_ = 0;
    uint32_t nextFree_ = 258;
};

// What happens when the table is full: a clear code in good time, or none at all.
enum class FullTable { kClear, kGoOn };

// A strip: clear code, the data's longest known strings, end code, two bytes of zeros.
Bytes EncodeLzwStrip(const Bytes& data, FullTable whenFull);

}  // namespace vellim::test
