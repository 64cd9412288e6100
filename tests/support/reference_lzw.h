// LZW the slow way: decoded with every string kept whole and every byte taken alone, encoded code
// by code; and streams of codes, sensible ones and others.
#pragma once

#include <cstdint>

#include "support/encoder_run.h"

namespace vellim::test {

Outcome ReferenceLzw(const EngineRun& run, const Answer& answer = {});

// Encoding, with a tree whose children are searched one by one.
Encoded ReferenceLzwEncoder(const EngineRun& run, const Answer& source);

// Codes in the widths that a decoder reads them with, the last byte filled up with zero bits.
Bytes PackLzwCodes(const std::vector<uint32_t>& codes);

// A strip: clear code, the data's longest known strings, end code, zeros.
Bytes EncodeLzwStrip(const Bytes& data);

}  // namespace vellim::test
