// The sixteen records of a CALS header (MIL-PRF-28002, type 1): a key with its colon and blank, the
// value, and spaces to the record's end.
//
// The last byte of a record is never part of a value: it has to be a space or zero.
#pragma once

#include <cstdint>
#include <span>

#include "vellim/cals.h"

namespace vellim {

inline constexpr uint32_t kLastByteOfRecord = CALS_RECORD_BYTES - 1;

// Makes a string of a record, in place: spaces and zeros at its end go, and a carriage return or
// line feed there, but one only. A record of nothing else becomes a single space.
void TrimCALSRecord(char* record);

// Reads so many decimal numbers from behind the key. Each ends at the first byte that isn't a
// digit, and that byte, whatever it is, parts it from the next. What isn't a number is 0; what is
// too large for 32 bits is the largest that isn't. False when there is no such record.
bool ReadCALSNumbers(char* header, const char* key, std::span<int32_t> numbers);

// Puts the text behind the key into `texts` at `offset`, which moves on behind the terminator, and
// gives its address. Null when there is no such record, or nothing behind its key.
const char* ReadCALSText(char* header, const char* key, char* texts, uint32_t& offset);

// Write a value behind the key of a record that is there, and spaces behind the value. A text that
// is too long is cut; a null one is "NONE". Numbers have at least `digits` places, filled with
// zeros, and commas between them.
void WriteCALSText(char* header, const char* key, const char* text);
void WriteCALSNumbers(char* header, const char* key, int32_t digits,
                      std::span<const int32_t> numbers);

}  // namespace vellim
