// The head of an IOCA image segment (Image Object Content Architecture), as bytes and as a record.
//
//   Begin Segment        0x70, length of its name, the name
//   Begin Image Content  0x91, length, object type
//   Image Size           0x94, length, unit base, resolutions and sizes, two bytes each
//   Image Encoding       0x95, length, compression, recording
//   IDE Size             0x96, length, bits a pixel
//   Image LUT-ID         0x97, length, table
//   Image Data           0xFE 0x92, length in two bytes, code; as often as it takes
//
// Numbers have their high byte first.
#pragma once

#include <array>
#include <cstdint>

#include "vellim/wrappers.h"
#include "wrappers/head_reader.h"

namespace vellim {

inline constexpr uint32_t kIocaHeadBytes = 26;

std::array<uint8_t, kIocaHeadBytes> IocaHeadOf(const IocaHeader& header);

// Reads a head into a zeroed record, up to the first Image Data chunk's length field or the byte
// that isn't part of it.
bool ReadIocaHead(HeadReader& reader, IocaHeader& header);

}  // namespace vellim
