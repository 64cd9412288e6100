// TIFF files of one image in strips, made around the data under test.
//
// The directory stands in front of the data and the data ends the file, so that what a decoder
// finds behind the last strip doesn't depend on how the directory is written.
#pragma once

#include <cstdint>
#include <vector>

#include "fuzz/lines.h"

namespace vellim::fuzz {

struct StripTiff {
    uint32_t width;
    uint32_t height;
    uint16_t bitsPerSample;
    uint16_t samplesPerPixel;
    uint16_t compression;
    uint16_t optionTag;  // T4Options or Predictor; 0 for neither
    uint16_t option;
    uint32_t rowsPerStrip;
    std::vector<uint32_t> stripOffsets;  // from the first byte of `data`
    std::vector<uint8_t> data;

    [[nodiscard]] uint32_t RowBytes() const {
        return (width * bitsPerSample * samplesPerPixel + 7) / 8;
    }
};

// How the same image is stored.
struct Layout {
    bool bigEndian;
    bool lsbFirst;  // FillOrder 2, every byte of the data mirrored
};

// Builds the file, decodes it from memory and gives what came of it, with a digest of the lines
// from `digestFrom` on.
Outcome DecodeStripTiff(const StripTiff& image, const Layout& layout, Hands hands,
                        uint32_t digestFrom = 0);

// Cuts the data into strips of even length, as many as rowsPerStrip asks for.
void CutIntoStrips(StripTiff& image);

}  // namespace vellim::fuzz
