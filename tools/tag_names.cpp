// The tags of TIFF 6.0 (appendix A), of its common supplements, and private tags that scanners and
// fax software write; the field types of section 2; the values of Compression and
// PhotometricInterpretation.
#include "tag_names.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <iterator>

namespace vellim::tool {
namespace {

struct Name {
    uint32_t number;
    std::string_view name;
};

constexpr auto kTagNames = std::to_array<Name>({
    {254, "NewSubfileType"},
    {255, "SubfileType"},
    {256, "ImageWidth"},
    {257, "ImageLength"},
    {258, "BitsPerSample"},
    {259, "Compression"},
    {262, "PhotometricInterpretation"},
    {263, "Threshholding"},
    {264, "CellWidth"},
    {265, "CellLength"},
    {266, "FillOrder"},
    {269, "DocumentName"},
    {270, "ImageDescription"},
    {271, "Make"},
    {272, "Model"},
    {273, "StripOffsets"},
    {274, "Orientation"},
    {277, "SamplesPerPixel"},
    {278, "RowsPerStrip"},
    {279, "StripByteCounts"},
    {280, "MinSampleValue"},
    {281, "MaxSampleValue"},
    {282, "XResolution"},
    {283, "YResolution"},
    {284, "PlanarConfiguration"},
    {285, "PageName"},
    {286, "XPosition"},
    {287, "YPosition"},
    {288, "FreeOffsets"},
    {289, "FreeByteCounts"},
    {290, "GrayResponseUnit"},
    {291, "GrayResponseCurve"},
    {292, "T4Options"},
    {293, "T6Options"},
    {296, "ResolutionUnit"},
    {297, "PageNumber"},
    {300, "ColorResponseUnit"},
    {301, "TransferFunction"},
    {305, "Software"},
    {306, "DateTime"},
    {315, "Artist"},
    {316, "HostComputer"},
    {317, "Predictor"},
    {318, "WhitePoint"},
    {319, "PrimaryChromaticities"},
    {320, "ColorMap"},
    {321, "HalftoneHints"},
    {322, "TileWidth"},
    {323, "TileLength"},
    {324, "TileOffsets"},
    {325, "TileByteCounts"},
    {326, "BadFaxLines"},
    {327, "CleanFaxData"},
    {328, "ConsecutiveBadFaxLines"},
    {330, "SubIFDs"},
    {332, "InkSet"},
    {333, "InkNames"},
    {334, "NumberOfInks"},
    {336, "DotRange"},
    {337, "TargetPrinter"},
    {338, "ExtraSamples"},
    {339, "SampleFormat"},
    {340, "SMinSampleValue"},
    {341, "SMaxSampleValue"},
    {342, "TransferRange"},
    {343, "ClipPath"},
    {344, "XClipPathUnits"},
    {345, "YClipPathUnits"},
    {346, "Indexed"},
    {347, "JPEGTables"},
    {351, "OPIProxy"},
    {400, "GlobalParametersIFD"},
    {401, "ProfileType"},
    {402, "FaxProfile"},
    {403, "CodingMethods"},
    {404, "VersionYear"},
    {405, "ModeNumber"},
    {433, "Decode"},
    {434, "DefaultImageColor"},
    {512, "JPEGProc"},
    {513, "JPEGInterchangeFormat"},
    {514, "JPEGInterchangeFormatLength"},
    {515, "JPEGRestartInterval"},
    {517, "JPEGLosslessPredictors"},
    {518, "JPEGPointTransforms"},
    {519, "JPEGQTables"},
    {520, "JPEGDCTables"},
    {521, "JPEGACTables"},
    {529, "YCbCrCoefficients"},
    {530, "YCbCrSubSampling"},
    {531, "YCbCrPositioning"},
    {532, "ReferenceBlackWhite"},
    {559, "StripRowCounts"},
    {700, "XMP"},
    {32781, "ImageID"},
    {32932, "WangAnnotation"},
    {32953, "RefPts"},
    {32995, "Matteing"},
    {32996, "DataType"},
    {32997, "ImageDepth"},
    {32998, "TileDepth"},
    {33300, "ImageFullWidth"},
    {33301, "ImageFullLength"},
    {33432, "Copyright"},
    {33550, "ModelPixelScale"},
    {33723, "IPTC"},
    {33922, "ModelTiepoint"},
    {34264, "ModelTransformation"},
    {34377, "PhotoshopResources"},
    {34665, "ExifIFD"},
    {34675, "ICCProfile"},
    {34732, "ImageLayer"},
    {34735, "GeoKeyDirectory"},
    {34736, "GeoDoubleParams"},
    {34737, "GeoAsciiParams"},
    {34853, "GPSIFD"},
    {34908, "FaxRecvParams"},
    {34909, "FaxSubAddress"},
    {34910, "FaxRecvTime"},
    {34911, "FaxDCS"},
    {36867, "DateTimeOriginal"},
    {36868, "DateTimeDigitized"},
    {37439, "SToNits"},
    {37679, "OCRText"},
    {37680, "OLEPropertySet"},
    {37681, "OCRPositions"},
    {37724, "ImageSourceData"},
    {40965, "InteroperabilityIFD"},
    {42016, "ImageUniqueID"},
    {42112, "GDALMetadata"},
    {42113, "GDALNoData"},
    {50215, "OceScanjobDescription"},
    {50216, "OceApplicationSelector"},
    {50217, "OceIdentificationNumber"},
    {50218, "OceImageLogicCharacteristics"},
    {50706, "DNGVersion"},
    {50784, "AliasLayerMetadata"},
});

constexpr auto kTypeNames = std::to_array<Name>({
    {1, "BYTE"},
    {2, "ASCII"},
    {3, "SHORT"},
    {4, "LONG"},
    {5, "RATIONAL"},
    {6, "SBYTE"},
    {7, "UNDEFINED"},
    {8, "SSHORT"},
    {9, "SLONG"},
    {10, "SRATIONAL"},
    {11, "FLOAT"},
    {12, "DOUBLE"},
    {13, "IFD"},
});

constexpr auto kCompressionNames = std::to_array<Name>({
    {1, "uncompressed"},
    {2, "CCITT 1-D"},
    {3, "Group 3"},
    {4, "Group 4"},
    {5, "LZW"},
    {6, "JPEG (1992)"},
    {7, "JPEG"},
    {8, "Deflate"},
    {9, "JBIG"},
    {10, "JBIG colour"},
    {32766, "NeXT run lengths"},
    {32771, "CCITT 1-D, word aligned"},
    {32773, "PackBits"},
    {32809, "ThunderScan"},
    {32946, "Deflate (old number)"},
    {34661, "JBIG (old number)"},
    {34676, "SGI log luminance"},
    {34677, "SGI log 24 bits"},
    {34712, "JPEG 2000"},
    {34925, "LZMA"},
    {50000, "Zstandard"},
    {50001, "WebP"},
});

constexpr auto kPhotometricNames = std::to_array<Name>({
    {0, "white is zero"},
    {1, "black is zero"},
    {2, "RGB"},
    {3, "palette"},
    {4, "transparency mask"},
    {5, "separated (CMYK)"},
    {6, "YCbCr"},
    {8, "CIE L*a*b*"},
    {9, "ICC L*a*b*"},
    {10, "ITU L*a*b*"},
    {32803, "colour filter array"},
    {32844, "log luminance"},
    {32845, "log luminance and chrominance"},
});

template <typename Table>
constexpr bool Ascends(const Table& table) {
    return std::adjacent_find(table.begin(), table.end(), [](const Name& a, const Name& b) {
               return a.number >= b.number;
           }) == table.end();
}

static_assert(Ascends(kTagNames) && Ascends(kTypeNames) && Ascends(kCompressionNames) &&
                  Ascends(kPhotometricNames),
              "the look-up halves the table");

template <typename Table>
std::string_view Find(const Table& table, uint32_t number) {
    const auto found =
        std::lower_bound(table.begin(), table.end(), number,
                         [](const Name& name, uint32_t wanted) { return name.number < wanted; });
    if (found == table.end() || found->number != number) return {};
    return found->name;
}

template <typename Table>
std::string FindOr(const Table& table, uint32_t number, const char* kind) {
    std::string name(Find(table, number));
    if (name.empty()) name.append(kind).append(" ").append(std::to_string(number));
    return name;
}

char LowerCase(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

bool SameButForCase(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return LowerCase(x) == LowerCase(y); });
}

// The number that `text` is or that goes by its name; 0: none.
template <typename Table>
uint32_t FindNumber(const Table& table, std::string_view text) {
    uint32_t number = 0;
    const char* end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    if (error == std::errc() && rest == end) return number;
    const auto found = std::find_if(table.begin(), table.end(), [&](const Name& row) {
        return SameButForCase(row.name, text);
    });
    return found == table.end() ? 0 : found->number;
}

}  // namespace

std::string_view TagName(uint32_t tag) {
    return Find(kTagNames, tag);
}

std::string TagInWords(uint32_t tag) {
    const std::string number = std::to_string(tag);
    const std::string_view name = TagName(tag);
    return name.empty() ? "tag " + number : std::string(name) + " (" + number + ")";
}

uint32_t FindTag(std::string_view numberOrName) {
    const uint32_t tag = FindNumber(kTagNames, numberOrName);
    return tag <= UINT16_MAX ? tag : 0;
}

uint32_t FindType(std::string_view numberOrName) {
    const uint32_t type = FindNumber(kTypeNames, numberOrName);
    return type <= kTypeNames.back().number ? type : 0;
}

std::string TypeName(uint32_t type) {
    return FindOr(kTypeNames, type, "type");
}

std::string CompressionName(uint32_t compression) {
    return FindOr(kCompressionNames, compression, "compression");
}

std::string PhotometricName(uint32_t photometric) {
    return FindOr(kPhotometricNames, photometric, "photometric");
}

}  // namespace vellim::tool
