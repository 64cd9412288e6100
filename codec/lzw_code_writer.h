// LZW codes as bits, the most significant first (TIFF 6.0 section 13).
//
// Bytes go out in pairs. The code buffer's last place takes one alone, and what that leaves behind
// is still a pair's worth or less; so bits never wait longer than for the next code or for Close.
#pragma once

#include <cstdint>
#include <span>

#include "vellim/codec.h"

namespace vellim {

class LzwCodeWriter {
  public:
    explicit LzwCodeWriter(CodecState& state) : state_(state) {}

    // Writes codes of `width` bits. 0 or a failure code.
    uint32_t Write(std::span<const uint16_t> codes, unsigned width);

    // Fills the bits that are left up to a whole pair with zeros and writes them.
    uint32_t Close();

  private:
    void WriteFour(const uint16_t* codes, unsigned width);
    uint32_t PutByte();
    uint32_t DrainPairs();

    CodecState& state_;
    uint64_t pending_ = 0;  // bits that aren't written yet, from the top
    unsigned count_ = 0;    // how many; below a pair between calls
};

}  // namespace vellim
