// LZW the slow way: decoded with every string kept whole and every byte taken alone, encoded code
// by code with a map of the longer strings; and streams of codes, sensible ones and others.
#pragma once

#include <cstdint>

#include "support/engine_run.h"

namespace vellim::test {

Outcome ReferenceLzw(const EngineRun& run, const Answer& answer = {});
Encoded ReferenceLzwEncoder(const EngineRun& run, const Answer& source);

// Codes in the widths that a decoder reads them with, the last byte filled up with zero bits.
Bytes PackLzwCodes(const std::vector<uint32_t>& codes);

}  // namespace vellim::test
