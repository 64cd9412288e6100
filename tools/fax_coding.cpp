#include "fax_coding.h"

#include <algorithm>
#include <array>

namespace vellim::tool {
namespace {

struct Row {
    std::string_view name;
    std::string_view words;
    CompressionKey key;
};

// In the order of FaxCoding.
constexpr std::array<Row, 5> kRows = {{
    {"g3", "Group 3 1-D without EOL", TIFF_KEY_CCITT_1D},
    {"g3-eol", "Group 3 1-D", TIFF_KEY_GROUP3_1D},
    {"g3-2d", "Group 3 2-D", TIFF_KEY_GROUP3_2D},
    {"g4", "Group 4", TIFF_KEY_GROUP4},
    {"mmr", "MMR", 0},
}};

const Row& RowOf(FaxCoding coding) {
    return kRows[static_cast<size_t>(coding)];
}

}  // namespace

std::optional<FaxCoding> FindFaxCoding(std::string_view name) {
    const auto* const found =
        std::find_if(kRows.begin(), kRows.end(), [name](const Row& r) { return r.name == name; });
    if (found == kRows.end()) return {};
    return static_cast<FaxCoding>(found - kRows.begin());
}

std::string_view FaxCodingName(FaxCoding coding) {
    return RowOf(coding).name;
}

std::string_view FaxCodingInWords(FaxCoding coding) {
    return RowOf(coding).words;
}

CompressionKey KeyOf(FaxCoding coding) {
    return RowOf(coding).key;
}

}  // namespace vellim::tool
