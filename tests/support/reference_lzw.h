// LZW decoded the slow way, every string kept whole and every byte taken alone; and an
// encoder that writes streams of codes, sensible ones and others.
#pragma once

#include <cstdint>

#include "support/engine_run.h"

namespace vellim::test {

Outcome ReferenceLzw(const EngineRun& run, const Answer& answer = {});

// Codes in the widths that a decoder reads them with, the last byte filled up with zero bits.
Bytes PackLzwCodes(const std::vector<uint32_t>& codes);

// A strip: clear code, the data's longest known strings, end code, zeros.
Bytes EncodeLzwStrip(const Bytes& data);

}  // namespace vellim::test
