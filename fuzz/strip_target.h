// The settings that the targets of byte-oriented decoders share.
#pragma once

#include <array>

#include "fuzz/input.h"
#include "fuzz/strip_tiff.h"

namespace vellim::fuzz {

struct Depth {
    uint16_t bitsPerSample;
    uint16_t samplesPerPixel;
};
inline constexpr std::array<Depth, 4> kDepths = {{{1, 1}, {4, 1}, {8, 1}, {8, 3}}};

// Width, height, rows a strip: small enough that no input takes long.
constexpr uint16_t kMaxStripRows = 255;

// Input: a byte of settings (bits 0 and 1: depth, bit 2: the caller's), width (two bytes, low byte
// first), height (a byte), rows a strip (a byte), data.
inline StripTiff ReadStripTiff(Input& input, uint8_t choice, uint16_t compression) {
    const Depth depth = kDepths[choice & 3U];
    StripTiff image{};
    image.width = input.Word();
    image.height = input.Byte();
    image.rowsPerStrip = input.Byte();
    image.bitsPerSample = depth.bitsPerSample;
    image.samplesPerPixel = depth.samplesPerPixel;
    image.compression = compression;
    image.data.assign(input.Rest().begin(), input.Rest().end());
    return image;
}

}  // namespace vellim::fuzz
