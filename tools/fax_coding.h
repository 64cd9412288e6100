// The codings of black and white that stand in files of other kinds than TIFF.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "vellim/codec.h"

namespace vellim::tool {

enum class FaxCoding : uint8_t {
    G3,      // T.4 one-dimensional, lines on byte boundaries without EOL
    G3Eol,   // the same with an EOL before each line
    G3TwoD,  // T.4 two-dimensional
    G4,      // T.6
    Mmr      // T.6 lines in blocks, between a head and a tail of T.4
};

// By its name on the command line ("g3-2d"); nothing if there is none.
std::optional<FaxCoding> FindFaxCoding(std::string_view name);

// "g3", "g3-eol", "g3-2d", "g4", "mmr".
std::string_view FaxCodingName(FaxCoding coding);

// "Group 3 1-D", "Group 4" and the like, for people.
std::string_view FaxCodingInWords(FaxCoding coding);

// Of any but Mmr, which is coded by calls of its own.
CompressionKey KeyOf(FaxCoding coding);

}  // namespace vellim::tool
