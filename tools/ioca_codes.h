// The codes of the self-defining fields that an image segment (IOCA) is a row of.
#pragma once

#include <cstdint>

namespace vellim::tool {

enum IocaCode : uint32_t {
    kBeginSegment = 0x70,  // the lowest of all
    kEndSegment = 0x71,
    kBeginTile = 0x8C,
    kEndTile = 0x8D,
    kBeginMask = 0x8E,
    kEndMask = 0x8F,
    kBeginContent = 0x91,
    kEndContent = 0x93,
    kImageSize = 0x94,
    kImageEncoding = 0x95,
    kPixelSize = 0x96,
    kLookUpTable = 0x97,
    kBandImage = 0x98,
    kPixelStructure = 0x9B,
    kLongForm = 0xFE,  // a second byte of code, and two bytes of length
    kImageData = 0xFE92,
    kBandData = 0xFE9C,
};

}  // namespace vellim::tool
