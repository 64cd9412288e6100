// What the tags of one image say, gathered once for all commands.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "tag_values.h"
#include "vellim/base.h"

namespace vellim::tool {

enum ResolutionUnit : uint32_t { kNoUnit = 1, kInch = 2, kCentimetre = 3 };

// Absent where the file gives none: the library's own stand-in, the display's resolution, says
// nothing about the document.
struct Resolution {
    Rational x, y;
    uint32_t unit = kInch;
};

struct ImageFacts {
    std::optional<uint32_t> width;
    std::optional<uint32_t> height;  // as stored: 0 means that the writer didn't know it
    uint32_t bitsPerSample = 1;
    uint32_t samplesPerPixel = 1;
    uint32_t compression = 1;
    uint32_t t4Options = 0;
    uint32_t predictor = 1;
    uint32_t fillOrder = 1;
    uint32_t orientation = 1;
    uint32_t planes = 1;
    std::optional<uint32_t> photometric;
    std::optional<Resolution> resolution;
    uint32_t strips = 0;
    uint32_t rowsPerStrip = 0;
    uint32_t tileWidth = 0;  // 0: no tiles
    uint32_t tileLength = 0;
    std::string title;  // DocumentName, else ImageDescription; as stored

    int32_t problem = 0;  // failure code why the library doesn't decode such an image, or 0
    TiffDimensions dimensions = {};  // where `problem` is 0
};

// Gathers the facts of an image whose tags are in memory.
ImageFacts GatherFacts(TiffFileHandle file, int32_t image);

// Why such an image can't be decoded, in words; empty if nothing in its tags speaks against it.
std::string Obstacle(const ImageFacts& facts);

// Dots an inch of one axis; 0 for a unit that isn't known.
double DotsPerInch(const Rational& resolution, uint32_t unit);

// "Group 3 2-D, fill bits"
std::string CompressionInWords(const ImageFacts& facts);

}  // namespace vellim::tool
