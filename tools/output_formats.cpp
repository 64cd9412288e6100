// The table of formats.
#include "output_formats.h"

#include <algorithm>
#include <array>
#include <cctype>

namespace vellim::tool {
namespace {

PixelType AsItIs(PixelType type) {
    return type;
}
PixelType AsBilevel(PixelType /*type*/) {
    return kBilevel;
}
PixelType AsGrey(PixelType /*type*/) {
    return kGrey8;
}
PixelType AsRgb(PixelType /*type*/) {
    return kRgb;
}

constexpr std::array<OutputFormat, 20> kFormats = {{
    {"png", false, AsItIs, BeginPng},
    {"bmp", false, AsItIs, BeginBmp},
    {"pbm", true, AsBilevel, BeginPnm},
    {"pgm", true, AsGrey, BeginPnm},
    {"ppm", true, AsRgb, BeginPnm},
    {"tif", true, nullptr, nullptr},
    {"tiff", true, nullptr, nullptr},
    {"cal", false, AsBilevel, BeginCals, PrepareCals},
    {"cals", false, AsBilevel, BeginCals, PrepareCals},
    {"ct1", false, AsBilevel, BeginCals, PrepareCals},
    {"mil", false, AsBilevel, BeginCals, PrepareCals},
    {"ica", false, AsBilevel, BeginIoca, PrepareWrapped},
    {"ioca", false, AsBilevel, BeginIoca, PrepareWrapped},
    {"mda", false, AsBilevel, BeginModca, PrepareWrapped},
    {"modca", false, AsBilevel, BeginModca, PrepareWrapped},
    {"afp", false, AsBilevel, BeginModca, PrepareWrapped},
    {"g3", false, AsBilevel, BeginBare, PrepareBare, FaxCoding::G3Eol},
    {"fax", false, AsBilevel, BeginBare, PrepareBare, FaxCoding::G3Eol},
    {"g4", false, AsBilevel, BeginBare, PrepareBare, FaxCoding::G4},
    {"mmr", false, AsBilevel, BeginBare, PrepareBare, FaxCoding::Mmr},
}};

bool SameName(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
        return std::tolower(static_cast<unsigned char>(x)) ==
               std::tolower(static_cast<unsigned char>(y));
    });
}

}  // namespace

bool HoldsCalsTexts(const OutputFormat& format) {
    return format.begin == BeginCals;
}

const OutputFormat* FindFormat(std::string_view name) {
    const auto* const found =
        std::find_if(kFormats.begin(), kFormats.end(),
                     [name](const OutputFormat& format) { return SameName(format.name, name); });
    return found == kFormats.end() ? nullptr : found;
}

const OutputFormat* FormatOfPath(std::string_view path) {
    const size_t dot = path.rfind('.');
    return dot == std::string_view::npos ? nullptr : FindFormat(path.substr(dot + 1));
}

std::string FormatNames() {
    std::string names;
    for (const OutputFormat& format : kFormats) {
        if (!names.empty()) names += ", ";
        names += format.name;
    }
    return names;
}

}  // namespace vellim::tool
